#pragma once

#include "Views/Theme/IconName.h"

#include <QIcon>
#include <QPixmap>

class Theme;

namespace Icons
{

/// An icon that is drawn from its outline at the size and pixel ratio of the moment, in the theme's colours of the
/// moment: without `color` that of body text. Nothing is read before the first painting. `theme` outlives
/// the icon.
QIcon icon(IconName name, const Theme &theme);
QIcon icon(IconName name, const Theme &theme, const QColor &(*color)(const Theme &));

/// As `pixmap`, without a cache; to be called in any thread.
QImage picture(IconName name, const QColor &color, int size, qreal pixelRatio);

/// Puts a picture where `pixmap` finds it.
void keep(IconName name, const QColor &color, int size, const QImage &picture);

/// The same as a picture of `size` device-independent pixels in `color`; from a cache after the first time.
QPixmap pixmap(IconName name, const QColor &color, int size, qreal pixelRatio);

} // namespace Icons
