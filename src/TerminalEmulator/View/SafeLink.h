#pragma once

#include <QUrl>

#include <optional>
#include <string>

namespace vt
{

/// An address from a terminal as one that may be handed to the desktop, or nothing. Only web, ftp and mail addresses:
/// the files a terminal speaks of lie on another machine, and other schemes start programs.
std::optional<QUrl> safeLink(const std::string &uri);

} // namespace vt
