#pragma once

#include <QWidget>

/// A section of the selected server: one page of the window. All pages of a server live side by side, and one at most
/// is on show; the window says which. A page does its periodic work only while it is the active one.
class SectionPage : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    bool isActive() const { return m_isActive; }

    /// The window calls it when the page comes on show and when it goes; a page begins as inactive.
    void setActive(bool isActive);

Q_SIGNALS:
    void activeChanged(bool isActive);

private:
    bool m_isActive = false;
};
