#include "Views/Shell/SectionStrip.h"

#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/Sections.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

namespace
{

constexpr int kPadding = 8;
constexpr int kGap = 9;
constexpr int kHeight = 30;

class SectionButton : public QPushButton
{
public:
    SectionButton(const Theme &theme, MainTab tab, QWidget *parent)
        : QPushButton(parent)
        , m_theme(theme)
        , m_tab(tab)
    {
        setFont(theme.font(TextStyle::Emphasis));
        setCheckable(true);
        setAccessibleName(Sections::title(tab));
        setToolTip(Sections::toolTip(tab));
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }

    void setMark(SectionMark mark)
    {
        m_mark = mark;
        setAccessibleDescription(Sections::described(mark));
        update();
    }

    QSize sizeHint() const override
    {
        const int title = isChecked() ? kGap + fontMetrics().horizontalAdvance(Sections::title(m_tab)) + 1 : 0;
        return {2 * kPadding + Metrics::kIconSize + title, kHeight};
    }

protected:
    // The window says which one is on show, whatever was clicked.
    void nextCheckState() override {}

    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Tokens &t = m_theme.tokens();
        if (isChecked() || underMouse()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(isChecked() ? t.accent.soft : t.soft);
            painter.drawRoundedRect(rect(), Metrics::kControlRadius, Metrics::kControlRadius);
        }
        const QColor color = isChecked() ? t.accent.text : t.dim;
        const QPoint icon(kPadding, (height() - Metrics::kIconSize) / 2);
        painter.drawPixmap(icon,
                           Icons::pixmap(Sections::of(m_tab).icon, color, Metrics::kIconSize, devicePixelRatioF()));
        Sections::paintMark(painter, m_theme, m_mark, icon + QPoint(Metrics::kIconSize, 0));
        if (isChecked()) {
            painter.setPen(color);
            painter.drawText(rect().adjusted(kPadding + Metrics::kIconSize + kGap, 0, 0, 0),
                             Qt::AlignVCenter | Qt::TextSingleLine, Sections::title(m_tab));
        }
        if (hasFocus()) {
            TarnwellStyle::drawFocusRing(painter, QRectF(rect()), Metrics::kControlRadius, t.accent.color);
        }
    }

private:
    const Theme &m_theme;
    MainTab m_tab;
    SectionMark m_mark = SectionMark::None;
};

} // namespace

SectionStrip::SectionStrip(const Theme &theme, ContentViewModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
{
    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(2);
    for (const MainTab tab : allCases<MainTab>()) {
        auto *button = new SectionButton(theme, tab, this);
        connect(button, &QPushButton::clicked, this, [this, tab] { m_model.chooseTab(tab); });
        connect(&model, &ContentViewModel::markChanged, button, [this, tab, button](MainTab marked) {
            if (marked == tab) {
                button->setMark(m_model.mark(tab));
            }
        });
        button->setMark(model.mark(tab));
        line->addWidget(button);
        m_buttons.append(button);
    }
    connect(&model, &ContentViewModel::placeChanged, this, &SectionStrip::follow);
    follow();
}

void SectionStrip::follow()
{
    for (qsizetype i = 0; i < m_buttons.size(); ++i) {
        const bool isSelected = i == static_cast<qsizetype>(m_model.selectedTab());
        if (m_buttons.at(i)->isChecked() != isSelected) {
            m_buttons.at(i)->setChecked(isSelected);
            m_buttons.at(i)->updateGeometry();
        }
    }
}
