#include "Views/Components/SearchField.h"

#include "Views/Theme/Icons.h"
#include "Views/Theme/Theme.h"

#include <QAction>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

namespace
{

constexpr int kLongest = 500;
constexpr int kIconLeft = 9;
constexpr int kIconGap = 6;

const QColor &dimColor(const Theme &theme)
{
    return theme.tokens().dim;
}

} // namespace

SearchField::SearchField(const Theme &theme, const QString &prompt, QWidget *parent)
    : QLineEdit(parent)
    , m_theme(theme)
    , m_clear(new QAction(Icons::icon(IconName::Clear, theme, &dimColor), tr("Clear"), this))
{
    setPlaceholderText(prompt);
    setAccessibleName(prompt);
    setFont(theme.font(TextStyle::Detail));
    setMaxLength(kLongest);
    setTextMargins(Metrics::kIconSize + kIconGap, 0, 0, 0);
    m_clear->setToolTip(tr("Clear"));
    connect(m_clear, &QAction::triggered, this, &QLineEdit::clear);
    connect(this, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (text.isEmpty()) {
            removeAction(m_clear);
        } else if (!actions().contains(m_clear)) {
            addAction(m_clear, TrailingPosition);
        }
    });
}

void SearchField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) {
        clear();
        return;
    }
    if (event->key() == Qt::Key_Down || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Q_EMIT left();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void SearchField::paintEvent(QPaintEvent *event)
{
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    const QRect place(kIconLeft, (height() - Metrics::kIconSize) / 2, Metrics::kIconSize, Metrics::kIconSize);
    painter.drawPixmap(
        QStyle::visualRect(layoutDirection(), rect(), place),
        Icons::pixmap(IconName::Search, m_theme.tokens().dim, Metrics::kIconSize, devicePixelRatioF()));
}
