#include "TerminalEmulator/Engine/Emulation.h"

#include <algorithm>
#include <array>

namespace vt
{

/// Erases cells of a row, sparing protected ones while protection is on.
void Emulation::eraseRow(int y, int left, int right)
{
    const Cell empty = blank();
    Row &row = m_grid->row(y);
    if (m_protection == Protection::Off) {
        m_grid->erase(y, left, right, empty);
    } else {
        m_grid->eraseUnprotected(y, left, right, empty,
                                 [this](StyleId style) { return m_styles[style].has(Style::Protected); });
    }
    if (right == columns() - 1) {
        row.set(Row::Wrapped, false);
        row.set(Row::Newline, false);
    }
}

/// Plain erasure spares cells protected by SPA, selective erasure those protected by DECSCA; neither the other's.
void Emulation::eraseDisplay(int what, Erase kind)
{
    const Protection saved = m_protection;
    if (kind == Erase::Selective ? saved != Protection::Dec : saved != Protection::Iso) {
        m_protection = Protection::Off;
    }
    const auto eraseRows = [&](int from, int to) {
        for (int y = from; y <= to; ++y) {
            if (m_protection == Protection::Off) {
                m_grid->clearRow(y, blank());
            } else {
                eraseRow(y, 0, columns() - 1);
            }
        }
    };
    switch (what) {
    case 0:
        eraseRow(m_y, m_x, columns() - 1);
        eraseRows(m_y + 1, rows() - 1);
        m_pendingWrap = false;
        break;
    case 1:
        eraseRows(0, m_y - 1);
        eraseRow(m_y, 0, m_x);
        break;
    case 2:
        eraseRows(0, rows() - 1);
        m_pendingWrap = false;
        break;
    case 3:
        clearHistory();
        break;
    default:
        break;
    }
    m_protection = saved;
}

void Emulation::eraseLine(int what, Erase kind)
{
    const Protection saved = m_protection;
    if (kind == Erase::Selective ? saved != Protection::Dec : saved != Protection::Iso) {
        m_protection = Protection::Off;
    }
    switch (what) {
    case 0:
        eraseRow(m_y, m_x, columns() - 1);
        m_pendingWrap = false;
        break;
    case 1:
        eraseRow(m_y, 0, m_x);
        break;
    case 2:
        eraseRow(m_y, 0, columns() - 1);
        m_pendingWrap = false;
        break;
    default:
        break;
    }
    m_protection = saved;
}

void Emulation::ed(const Sequence &s)
{
    eraseDisplay(s.value(0), Erase::Plain);
}

void Emulation::el(const Sequence &s)
{
    eraseLine(s.value(0), Erase::Plain);
}

void Emulation::decsed(const Sequence &s)
{
    eraseDisplay(s.value(0), Erase::Selective);
}

void Emulation::decsel(const Sequence &s)
{
    eraseLine(s.value(0), Erase::Selective);
}

void Emulation::ech(const Sequence &s)
{
    const Protection saved = m_protection;
    if (saved != Protection::Iso) {
        m_protection = Protection::Off;
    }
    eraseRow(m_y, m_x, std::min(m_x + std::min(s.atLeastOne(0), columns()), columns()) - 1);
    m_protection = saved;
    m_pendingWrap = false;
}

void Emulation::ich(const Sequence &s)
{
    m_pendingWrap = false;
    if (inColumnMargins()) {
        m_grid->insertCells(m_y, m_x, m_right, std::min(s.atLeastOne(0), columns()), blank());
    }
}

void Emulation::dch(const Sequence &s)
{
    m_pendingWrap = false;
    if (inColumnMargins()) {
        m_grid->deleteCells(m_y, m_x, m_right, std::min(s.atLeastOne(0), columns()), blank());
        m_grid->row(m_y).set(Row::Wrapped, false);
    }
}

void Emulation::il(const Sequence &s)
{
    if (inRowMargins() && inColumnMargins()) {
        const Area area{m_y, m_left, m_bottom, m_right};
        const int count = std::min(s.atLeastOne(0), rows());
        m_pendingWrap = false;
        tellMoved(area, count);
        m_grid->scrollDown(area, count, blank());
        m_x = m_left;
        m_allDamaged = true;
    }
}

void Emulation::dl(const Sequence &s)
{
    if (inRowMargins() && inColumnMargins()) {
        const Area area{m_y, m_left, m_bottom, m_right};
        const int count = std::min(s.atLeastOne(0), rows());
        m_pendingWrap = false;
        tellMoved(area, -count);
        m_grid->scrollUp(area, count, blank());
        m_x = m_left;
        m_allDamaged = true;
    }
}

/// Inserts or deletes columns at `x` in every row between the margins.
void Emulation::shiftColumns(int x, int count, bool insert)
{
    const Cell empty = blank();
    count = std::min(count, columns());
    for (int y = m_top; y <= m_bottom; ++y) {
        if (insert) {
            m_grid->insertCells(y, x, m_right, count, empty);
        } else {
            m_grid->deleteCells(y, x, m_right, count, empty);
        }
        m_grid->row(y).set(Row::Wrapped, false);
    }
}

void Emulation::sl(const Sequence &s)
{
    if (inRowMargins() && inColumnMargins()) {
        shiftColumns(m_left, s.atLeastOne(0), false);
    }
}

void Emulation::sr(const Sequence &s)
{
    if (inRowMargins() && inColumnMargins()) {
        shiftColumns(m_left, s.atLeastOne(0), true);
    }
}

void Emulation::decic(const Sequence &s)
{
    if (inRowMargins() && inColumnMargins()) {
        m_pendingWrap = false;
        shiftColumns(m_x, s.atLeastOne(0), true);
    }
}

void Emulation::decdc(const Sequence &s)
{
    if (inRowMargins() && inColumnMargins()) {
        m_pendingWrap = false;
        shiftColumns(m_x, s.atLeastOne(0), false);
    }
}

void Emulation::rep(const Sequence &s)
{
    if (m_lastPrinted == 0) {
        return;
    }
    // More than the screen holds changes nothing that can be seen.
    int left = std::min(s.atLeastOne(0), columns() * rows());
    const uint32_t code = m_lastPrinted;
    if (code < 0x7f && m_plainText) {
        std::array<uint8_t, 256> run;
        run.fill(static_cast<uint8_t>(code));
        for (; left > 0; left -= 256) {
            printAscii(run.data(), std::min(left, 256));
        }
        return;
    }
    const int width = std::max(1, unicode::property(m_clusters.first(code)).columns());
    for (; left > 0; --left) {
        putCharacter(code, width);
    }
}

void Emulation::decaln(const Sequence & /*s*/)
{
    store(Mode::Origin, false);
    resetMargins();
    moveTo(0, 0);
    for (int y = 0; y < rows(); ++y) {
        m_grid->clearRow(y, Cell{'E', 0});
    }
}

void Emulation::lineSize(const Sequence &s)
{
    if (mode(Mode::LeftRightMargins)) {
        return;
    }
    Row &row = m_grid->row(m_y);
    switch (s.final) {
    case '3':
        row.size = LineSize::DoubleTop;
        break;
    case '4':
        row.size = LineSize::DoubleBottom;
        break;
    case '5':
        row.size = LineSize::Normal;
        break;
    default:
        row.size = LineSize::DoubleWidth;
    }
    row.set(Row::Dirty);
    m_x = std::min(m_x, rightLimit(row));
    m_pendingWrap = false;
}

void Emulation::spa(const Sequence & /*s*/)
{
    m_protection = Protection::Iso;
    m_pen.flags |= Style::Protected;
    penChanged();
}

void Emulation::epa(const Sequence & /*s*/)
{
    m_pen.flags = static_cast<uint16_t>(m_pen.flags & ~Style::Protected);
    penChanged();
}

void Emulation::decsca(const Sequence &s)
{
    m_protection = Protection::Dec;
    switch (s.value(0)) {
    case 1:
        m_pen.flags |= Style::Protected;
        break;
    case 0:
    case 2:
        m_pen.flags = static_cast<uint16_t>(m_pen.flags & ~Style::Protected);
        break;
    default:
        return;
    }
    penChanged();
}

} // namespace vt
