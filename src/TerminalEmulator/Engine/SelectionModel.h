#pragma once

#include "TerminalEmulator/Engine/Emulation.h"
#include "TerminalEmulator/Engine/Terminal.h"

namespace vt
{

/// What the user has selected. Positions follow their text into the history, through reflows and where a part of the
/// screen scrolls; what scrolls away there is selected no more.
class SelectionModel final : private LineObserver
{
public:
    explicit SelectionModel(Emulation &emulation);

    void start(Position at, SelectionKind kind);
    void extend(Position to);

    void clear();

    void selectAll();
    std::optional<Selection> selection() const;
    std::string text(Position first, Position last, bool block) const;
    void setWordCharacters(std::string_view utf8);

private:
    void linesMoved(int64_t first, int64_t last, int by) override;
    Selection unit(Position at) const;
    int wordClass(char32_t character) const;
    void appendRow(const Line &row, int left, int right, std::string &out) const;

    Emulation &m_emulation;
    bool m_active = false;
    bool m_extended = false;
    bool m_alternate = false;
    SelectionKind m_kind = SelectionKind::Character;
    Position m_anchorFirst; ///< the unit the selection began with
    Position m_anchorLast;
    Position m_headFirst; ///< and the one it goes to
    Position m_headLast;
    std::u32string m_wordCharacters = U"-./_~:@%&=?#+";
};

} // namespace vt
