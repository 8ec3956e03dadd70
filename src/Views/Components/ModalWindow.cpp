#include "Views/Components/ModalWindow.h"

#include "Views/Theme/Theme.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kFreeAround = 32; // of the window below

/// Dims a window while something stands above it.
class Scrim : public QWidget
{
public:
    Scrim(const Theme &theme, QWidget *window)
        : QWidget(window)
        , m_theme(theme)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setGeometry(window->rect());
        show();
        raise();
    }

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), m_theme.tokens().scrim); }

private:
    const Theme &m_theme;
};

} // namespace

ModalWindow::ModalWindow(const Theme &theme, const QString &title, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
    , m_theme(theme)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    setWindowTitle(title);
    setAccessibleName(title);
    if (parent) {
        parent->window()->installEventFilter(this);
    }
}

ModalWindow::~ModalWindow()
{
    delete m_scrim;
}

int ModalWindow::heightLimit() const
{
    const int room = parentWidget() ? parentWidget()->window()->height() : screen()->availableGeometry().height();
    return room - 2 * kFreeAround;
}

void ModalWindow::fitToContent()
{
    QSize wanted = sizeHint().expandedTo(minimumSize()).boundedTo(maximumSize());
    if (layout() && layout()->hasHeightForWidth()) {
        wanted.setHeight(layout()->totalHeightForWidth(wanted.width()));
    }
    resize(wanted);
    moveToMiddle();
}

void ModalWindow::moveToMiddle()
{
    if (parentWidget()) {
        const QWidget *below = parentWidget()->window();
        move(below->mapToGlobal(below->rect().center()) - QPoint(width() / 2, height() / 2));
    }
}

void ModalWindow::setVisible(bool isVisible)
{
    // Else a dialog without a default button takes its first one for it.
    for (QPushButton *button : findChildren<QPushButton *>()) {
        button->setAutoDefault(false);
    }
    QDialog::setVisible(isVisible);
}

bool ModalWindow::eventFilter(QObject *watched, QEvent *event)
{
    const bool isOfWindow = parentWidget() && watched == parentWidget()->window();
    if (isOfWindow && isVisible() && (event->type() == QEvent::Resize || event->type() == QEvent::Move)) {
        if (m_scrim) {
            m_scrim->setGeometry(m_scrim->parentWidget()->rect());
        }
        fitToContent();
    }
    return QDialog::eventFilter(watched, event);
}

void ModalWindow::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto *button = isReturn ? qobject_cast<QPushButton *>(focusWidget()) : nullptr;
    if (button) {
        button->click();
        return;
    }
    if (isReturn && event->modifiers() == Qt::ControlModifier) { // out of a text of several lines
        QKeyEvent plain(QEvent::KeyPress, event->key(), Qt::NoModifier);
        QDialog::keyPressEvent(&plain);
        return;
    }
    QDialog::keyPressEvent(event);
}

void ModalWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && windowHandle()) {
        windowHandle()->startSystemMove();
    }
}

void ModalWindow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(m_theme.tokens().line);
    painter.setBrush(m_theme.tokens().surface);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Metrics::kSheetRadius,
                            Metrics::kSheetRadius);
}

void ModalWindow::resizeEvent(QResizeEvent *)
{
    if (QGuiApplication::platformName() != "xcb"_L1) {
        return;
    }
    // Where nothing blends windows the corners would be black. The mask lies a little outside of the painted edge, so
    // that it cuts nothing of it where they are blended.
    QBitmap mask(size());
    mask.clear();
    QPainter painter(&mask);
    painter.setPen(QPen(Qt::color1, 2));
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), Metrics::kSheetRadius, Metrics::kSheetRadius);
    painter.end();
    setMask(mask);
}

void ModalWindow::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (parentWidget() && !m_scrim) {
        m_scrim = new Scrim(m_theme, parentWidget()->window());
    }
    fitToContent();
}

void ModalWindow::hideEvent(QHideEvent *event)
{
    QDialog::hideEvent(event);
    if (!event->spontaneous()) {
        delete m_scrim;
    }
}
