#include "Views/Shell/AboutView.h"

#include "Views/Components/Labels.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kWidth = 380;
constexpr int kEmblem = 72;
constexpr int kEmblemIcon = 36;

class Emblem : public QWidget
{
public:
    Emblem(const Theme &theme, QWidget *parent)
        : QWidget(parent)
        , m_theme(theme)
    {
        setFixedSize(kEmblem, kEmblem);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_theme.tokens().accent.color);
        painter.drawRoundedRect(rect(), 16, 16);
        constexpr int kOffset = (kEmblem - kEmblemIcon) / 2;
        painter.drawPixmap(
            kOffset, kOffset,
            Icons::pixmap(IconName::Servers, m_theme.tokens().onAccent, kEmblemIcon, devicePixelRatioF()));
    }

private:
    const Theme &m_theme;
};

} // namespace

AboutView::AboutView(const Theme &theme, const QList<Link> &links, QWidget *parent)
    : QDialog(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("About %1").arg(QCoreApplication::applicationName()));

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(32, 32, 32, 24);
    column->setSpacing(0);
    column->addWidget(new Emblem(theme, this), 0, Qt::AlignHCenter);
    column->addSpacing(16);
    const auto add = [&](const QString &text, TextStyle style, TextLabel::Shade shade, int below) {
        auto *label = new TextLabel(theme, style, text, shade, this);
        label->setAlignment(Qt::AlignHCenter);
        label->setWordWrap(true);
        column->addWidget(label);
        column->addSpacing(below);
    };
    add(QCoreApplication::applicationName(), TextStyle::Title, TextLabel::Shade::Text, 4);
    add(tr("Version %1").arg(QCoreApplication::applicationVersion()), TextStyle::Detail, TextLabel::Shade::Dim, 12);
    add(tr("A comprehensive GUI tool for managing Linux servers via SSH"), TextStyle::Body, TextLabel::Shade::Text,
        12);
    add(tr("Free software under the GNU General Public License, version 3"), TextStyle::Small, TextLabel::Shade::Dim,
        20);
    add(tr("Support & Resources"), TextStyle::Emphasis, TextLabel::Shade::Text, 8);

    auto *line = new QHBoxLayout;
    line->setSpacing(8);
    line->addStretch();
    for (const Link &link : links) {
        auto *button = new QPushButton(link.text, this);
        button->setAutoDefault(false);
        button->setToolTip(link.target.toDisplayString());
        connect(button, &QPushButton::clicked, this, [target = link.target] { QDesktopServices::openUrl(target); });
        line->addWidget(button);
    }
    line->addStretch();
    column->addLayout(line);
    setFixedWidth(kWidth);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}
