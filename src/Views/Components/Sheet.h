#pragma once

#include "Views/Components/ModalWindow.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QPointer>

class ProgressLine;
class QHBoxLayout;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

/// A form or a detail view above the window: a title, a body that scrolls when it is higher than the window, and a
/// line of buttons. Like every modal window it is made with new, shown with open(), and deletes itself.
///
/// No button closes the sheet by itself: connect what may close it to accept() or reject().
class Sheet : public ModalWindow
{
    Q_OBJECT

public:
    enum class Side { Left, Right };

    static constexpr int kWidth = 560;

    Sheet(const Theme &theme, const QString &title, QWidget *parent, int width = kWidth);

    /// Where the content goes. The sheet grows and shrinks with it.
    QVBoxLayout &body() { return *m_body; }

    /// A button of the footer; those of one side stand in the order of the calls.
    QPushButton *addButton(const QString &text, Side side, ButtonKind kind = ButtonKind::Normal);

    /// What Return means in a field. Without one it means nothing.
    void setDefaultButton(QPushButton *button);

    /// Something that the sheet asked for is under way: a line moves below the title.
    void setBusy(bool isBusy);

    /// While what the body says is carried out it takes no input; the keyboard goes to the default button meanwhile.
    void setLocked(bool isLocked);

    /// Scrolls so far that `widget`, a part of the body, can be seen.
    void reveal(QWidget *widget);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    int heightAround() const; // of everything but the body

    int m_width;
    QPushButton *m_default = nullptr;
    QPointer<QWidget> m_focusBefore; // while the body is locked
    QWidget *m_title;
    ProgressLine *m_progress;
    QScrollArea *m_area;
    QVBoxLayout *m_body;
    QWidget *m_footerLine;
    QWidget *m_footer;
    QHBoxLayout *m_left;
    QHBoxLayout *m_right;
};
