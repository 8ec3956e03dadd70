#pragma once

#include "TerminalEmulator/Engine/Clusters.h"
#include "TerminalEmulator/Engine/Grid.h"
#include "TerminalEmulator/Engine/Styles.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

namespace vt
{

/// A row outside a grid, with storage of its own.
struct RowCopy {
    std::vector<Cell> cells;
    uint8_t flags = 0; ///< Row::Flag
    LineSize size = LineSize::Normal;

    bool isWrapped() const { return (flags & Row::Wrapped) != 0; }
};

/// The rows that scrolled off the main screen, oldest first. A row costs its characters (one byte each for Latin
/// text, two in the BMP, four otherwise) and four bytes for each run of one style. Rows stand in chunks that carry
/// the styles they use, so that dropping the oldest drops everything that belonged to it.
class History
{
public:
    /// `limit`: rows kept. The tables are those of the screen the rows come from and go back to.
    History(size_t limit, Styles &styles, Clusters &clusters);

    size_t size() const { return m_size; }

    size_t limit() const { return m_limit; }

    void setLimit(size_t limit);

    /// Appends a row; returns whether the oldest one (with a limit of 0: this one) had to go.
    bool push(const Row &row);
    /// Appends a row even beyond the limit; setLimit() later brings the size down.
    void pushUnlimited(const RowCopy &row);
    /// Exchanges the rows with those of another history on the same tables.
    void swapRows(History &other);

    /// Row number `index`, 0 being the oldest, into `out`. Its styles and clusters are interned anew.
    void read(size_t index, RowCopy &out) const;

    void popNewest();
    void clear();

    /// The numbers of the styles changed: what is remembered about them is void.
    void stylesRenamed();

    /// Calls `visit` with the link number of each style in use.
    template<class Visit>
    void forEachLink(Visit visit) const
    {
        for (const Chunk &chunk : m_chunks) {
            for (const Style &style : chunk.styles) {
                if (style.link != 0) {
                    visit(style.link);
                }
            }
        }
    }

    /// Bytes held, for the memory report.
    size_t bytes() const;

private:
    /// Bytes that grow without being cleared first.
    struct Buffer {
        std::unique_ptr<uint8_t[]> data;
        size_t used = 0;
        size_t capacity = 0;

        void ensure(size_t room);
    };

    struct Chunk {
        size_t firstIndex = 0; ///< of its first row, counted from the beginning of time
        std::vector<uint32_t> offsets;
        Buffer bytes;
        std::vector<Style> styles;
    };

    struct LocalStyle {
        uint32_t serial = 0;
        uint16_t number = 0;
    };

    void append(const Cell *cells, size_t length, uint8_t flags, LineSize size);
    uint16_t localStyle(Chunk &chunk, StyleId id);
    void openChunk();
    void sealChunk();
    const Chunk &chunkOf(size_t absolute) const;
    template<int Bytes>
    uint32_t encode(const Cell *cells, size_t length, uint8_t *out, size_t &runs);
    void appendClusters(Buffer &bytes, const Cell *cells, size_t length) const;

    size_t m_limit;
    Styles &m_styles;
    Clusters &m_clusters;
    size_t m_size = 0;
    size_t m_dropped = 0; ///< rows that went at the old end: absolute number of the oldest kept
    std::deque<Chunk> m_chunks;
    uint8_t m_layout = 0;            ///< of the last row
    bool m_isOpen = false;           ///< the last chunk may take more rows
    std::vector<LocalStyle> m_local; ///< by style number: its number in the open chunk
    uint32_t m_serial = 1;
    std::vector<uint32_t> m_runs; ///< scratch: style and length of each run
    Buffer m_staging;             ///< a spare buffer, so that a new chunk starts without growing
};

} // namespace vt
