#pragma once

#include <QFont>
#include <QStringView>

/// Which texts are shaped. The interface font makes an arrow of "->" and a cross of the x in "0x1F", which falsifies
/// a command line or a name: text is drawn sign by sign, without that and without kerning. Scripts that cannot be
/// read so, and emoji of several characters, are shaped.
namespace Shaping
{

bool isNeeded(QStringView text);

/// `font` as it suits this text.
QFont fit(QFont font, QStringView text);

} // namespace Shaping
