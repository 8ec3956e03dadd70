#include "Views/Components/NoticeBar.h"

#include "Views/Components/Labels.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

namespace
{

constexpr int kMargin = 14;

} // namespace

NoticeBar::NoticeBar(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_text(new ElidedLabel(theme, TextStyle::Detail, TextLabel::Shade::Text, Qt::ElideRight, this))
{
    auto *dismiss = new QPushButton(this);
    setButtonKind(*dismiss, ButtonKind::Quiet);
    dismiss->setIcon(Icons::icon(IconName::Close, theme));
    dismiss->setIconSize({10, 10});
    dismiss->setFixedSize(26, 26);
    dismiss->setAccessibleName(tr("Dismiss"));
    dismiss->setToolTip(tr("Dismiss"));
    connect(dismiss, &QPushButton::clicked, this, &NoticeBar::dismiss);

    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(kMargin + Metrics::kIconSize + 8, 3, 8, 4);
    line->addWidget(m_text, 1);
    line->addWidget(dismiss);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    hide();
}

void NoticeBar::add(const QString &notice)
{
    if (!notice.isEmpty() && !m_notices.contains(notice)) {
        m_notices.append(notice);
        showFirst();
    }
}

void NoticeBar::dismiss()
{
    m_notices.removeFirst();
    showFirst();
}

void NoticeBar::showFirst()
{
    m_text->setFullText(m_notices.value(0));
    setAccessibleName(m_text->text());
    setVisible(!m_notices.isEmpty());
}

void NoticeBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const Tone &tone = m_theme.tokens().orange;
    painter.fillRect(rect(), tone.soft);
    painter.fillRect(QRect(0, height() - 1, width(), 1), m_theme.tokens().line);
    painter.drawPixmap(kMargin, (height() - 1 - Metrics::kIconSize) / 2,
                       Icons::pixmap(IconName::Info, tone.text, Metrics::kIconSize, devicePixelRatioF()));
}
