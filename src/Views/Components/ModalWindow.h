#pragma once

#include <QDialog>
#include <QPointer>

class Theme;

/// A rounded, frameless window above its parent's window, which is dimmed and takes no input meanwhile: the base of
/// sheets and questions. It stands in the middle of that window, can be dragged by its free ground, closes on Escape
/// and deletes itself when it is closed. It is shown with open(); nothing here nests an event loop.
///
/// Return presses the button that has the keyboard, or the default button when no button has.
class ModalWindow : public QDialog
{
    Q_OBJECT

public:
    ModalWindow(const Theme &theme, const QString &title, QWidget *parent);
    ~ModalWindow() override;

    /// Gives the window the size that its content wants, and moves it to the middle again.
    void fitToContent();

    void setVisible(bool isVisible) override;

protected:
    /// How high the window may be, for content that can scroll.
    int heightLimit() const;

    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

    const Theme &theme() const { return m_theme; }

private:
    void moveToMiddle();

    const Theme &m_theme;
    QPointer<QWidget> m_scrim;
};
