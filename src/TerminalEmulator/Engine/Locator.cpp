#include "TerminalEmulator/Engine/Locator.h"

namespace vt
{

void Locator::enable(int how, int unit)
{
    m_enabled = how == 1 || how == 2;
    m_once = how == 2;
    m_pixels = unit == 1;
    m_filter.reset();
    m_row = 1;
    m_column = 1;
}

void Locator::select(int events)
{
    switch (events) {
    case 0:
        m_downs = false;
        m_ups = false;
        m_filter.reset();
        break;
    case 1:
    case 2:
        m_downs = events == 1;
        break;
    case 3:
    case 4:
        m_ups = events == 3;
        break;
    default:
        break;
    }
}

void Locator::filter(const Area &area)
{
    const auto side = [](int given, int now) { return given > 0 ? given : now; };
    m_filter =
        Area{side(area.top, m_row), side(area.left, m_column), side(area.bottom, m_row), side(area.right, m_column)};
}

std::string Locator::report(int event)
{
    m_enabled = !m_once;
    return std::to_string(event) + ';' + std::to_string(m_buttons) + ';' + std::to_string(m_row) + ';' +
           std::to_string(m_column) + "&w";
}

std::string Locator::request()
{
    return m_enabled ? report(1) : "0&w";
}

std::string Locator::event(const MouseEvent &event)
{
    if (!m_enabled) {
        return {};
    }
    m_row = (m_pixels ? event.pixelY : event.row) + 1;
    m_column = (m_pixels ? event.pixelX : event.column) + 1;
    if (event.action != MouseEvent::Action::Motion && event.button <= MouseButton::Right) {
        const bool down = event.action == MouseEvent::Action::Press;
        const int number = static_cast<int>(event.button);
        const int bit = 4 >> number;
        m_buttons = down ? m_buttons | bit : m_buttons & ~bit;
        return (down ? m_downs : m_ups) ? report(2 + 2 * number + (down ? 0 : 1)) : std::string();
    }
    if (m_filter && (m_row < m_filter->top || m_row > m_filter->bottom || m_column < m_filter->left ||
                     m_column > m_filter->right)) {
        m_filter.reset();
        return report(10);
    }
    return {};
}

} // namespace vt
