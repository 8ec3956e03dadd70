#include "Views/Theme/Icons.h"

#include "Views/Theme/Theme.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

static void initIconResources()
{
    Q_INIT_RESOURCE(icons); // a static library's resources register themselves only when asked to
}

namespace
{

using ColorOf = const QColor &(*)(const Theme &);

QString fileOf(IconName name)
{
    switch (name) {
    case IconName::Check:
        return u"check2"_s;
    case IconName::House:
        return u"house"_s;
    case IconName::Terminal:
        return u"terminal"_s;
    case IconName::BarChart:
        return u"bar-chart"_s;
    case IconName::Gear:
        return u"gear"_s;
    case IconName::Box:
        return u"box"_s;
    case IconName::Globe:
        return u"globe"_s;
    case IconName::People:
        return u"people"_s;
    case IconName::Parcel:
        return u"box-seam"_s;
    case IconName::Folder:
        return u"folder"_s;
    case IconName::Clock:
        return u"clock"_s;
    case IconName::Document:
        return u"file-text"_s;
    case IconName::Back:
        return u"chevron-left"_s;
    case IconName::Forward:
        return u"chevron-right"_s;
    case IconName::Sidebar:
        return u"layout-sidebar"_s;
    case IconName::Plug:
        return u"plug"_s;
    case IconName::Refresh:
        return u"arrow-clockwise"_s;
    case IconName::Close:
        return u"x-lg"_s;
    case IconName::Info:
        return u"info-circle"_s;
    case IconName::Warning:
        return u"exclamation-triangle"_s;
    case IconName::Key:
        return u"key"_s;
    case IconName::Lock:
        return u"lock"_s;
    case IconName::Servers:
        return u"hdd-stack"_s;
    case IconName::Server:
        return u"hdd"_s;
    case IconName::Search:
        return u"search"_s;
    case IconName::Add:
        return u"plus-lg"_s;
    case IconName::Edit:
        return u"pencil"_s;
    case IconName::Delete:
        return u"trash"_s;
    case IconName::ChevronUp:
        return u"chevron-up"_s;
    case IconName::ChevronDown:
        return u"chevron-down"_s;
    case IconName::Clear:
        return u"x-circle-fill"_s;
    case IconName::Pin:
        return u"pin-angle"_s;
    case IconName::CaretUp:
        return u"caret-up-fill"_s;
    case IconName::CaretDown:
        return u"caret-down-fill"_s;
    case IconName::More:
        return u"three-dots"_s;
    case IconName::Play:
        return u"play"_s;
    case IconName::Stop:
        return u"stop"_s;
    case IconName::File:
        return u"file-earmark-text"_s;
    case IconName::Clipboard:
        break;
    }
    return u"clipboard"_s;
}

QByteArray outline(IconName name, const QColor &color)
{
    static const bool isInitialised = (initIconResources(), true);
    Q_UNUSED(isInitialised);
    QFile file(u":/icons/"_s + fileOf(name) + u".svg"_s);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return file.readAll().replace("currentColor", color.name().toLatin1());
}

QString keyOf(IconName name, const QColor &color, int size, qreal pixelRatio)
{
    return u"tarnwell %1 %2 %3 %4"_s.arg(static_cast<int>(name)).arg(color.rgba(), 8, 16).arg(size).arg(pixelRatio);
}

const QColor &textColor(const Theme &theme)
{
    return theme.tokens().text;
}

class ThemeIconEngine : public QIconEngine
{
public:
    ThemeIconEngine(IconName name, const Theme &theme, ColorOf color)
        : m_name(name)
        , m_theme(theme)
        , m_color(color)
    {
    }

    QIconEngine *clone() const override { return new ThemeIconEngine(m_name, m_theme, m_color); }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const int size = std::min(rect.width(), rect.height());
        const QPoint topLeft = rect.topLeft() + QPoint((rect.width() - size) / 2, (rect.height() - size) / 2);
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1;
        painter->drawPixmap(topLeft, Icons::pixmap(m_name, colorFor(mode), size, ratio));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
    {
        return Icons::pixmap(m_name, colorFor(mode), std::min(size.width(), size.height()), 1);
    }

    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State, qreal scale) override
    {
        const int side = qRound(std::min(size.width(), size.height()) / scale);
        return Icons::pixmap(m_name, colorFor(mode), side, scale);
    }

private:
    QColor colorFor(QIcon::Mode mode) const
    {
        return mode == QIcon::Disabled ? m_theme.tokens().faint : m_color(m_theme);
    }

    IconName m_name;
    const Theme &m_theme;
    ColorOf m_color;
};

} // namespace

QIcon Icons::icon(IconName name, const Theme &theme)
{
    return icon(name, theme, &textColor);
}

QIcon Icons::icon(IconName name, const Theme &theme, const QColor &(*color)(const Theme &))
{
    return QIcon(new ThemeIconEngine(name, theme, color));
}

QPixmap Icons::pixmap(IconName name, const QColor &color, int size, qreal pixelRatio)
{
    const QString key = keyOf(name, color, size, pixelRatio);
    QPixmap found;
    if (!QPixmapCache::find(key, &found)) {
        found = QPixmap::fromImage(picture(name, color, size, pixelRatio));
        QPixmapCache::insert(key, found);
    }
    return found;
}

QImage Icons::picture(IconName name, const QColor &color, int size, qreal pixelRatio)
{
    const int side = qCeil(size * pixelRatio);
    QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    QSvgRenderer(outline(name, color)).render(&painter, QRectF(0, 0, side, side));
    painter.end();
    picture.setDevicePixelRatio(pixelRatio);
    return picture;
}

void Icons::keep(IconName name, const QColor &color, int size, const QImage &picture)
{
    QPixmapCache::insert(keyOf(name, color, size, picture.devicePixelRatio()), QPixmap::fromImage(picture));
}
