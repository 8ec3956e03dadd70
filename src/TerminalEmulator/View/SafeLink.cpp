#include "TerminalEmulator/View/SafeLink.h"

#include <QString>
#include <QStringList>

namespace vt
{

std::optional<QUrl> safeLink(const std::string &uri)
{
    constexpr size_t MaxLength = 4096;
    if (uri.empty() || uri.size() > MaxLength) {
        return std::nullopt;
    }
    QUrl url(QString::fromUtf8(uri.data(), static_cast<qsizetype>(uri.size())), QUrl::StrictMode);
    if (!url.isValid()) {
        return std::nullopt;
    }
    if (url.scheme() == QLatin1String("mailto")) {
        // The rest of such an address may name files to attach.
        url.setQuery(QString());
        return url.path().contains(QLatin1Char('@')) ? std::optional(url) : std::nullopt;
    }
    static const QStringList schemes{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("ftp")};
    return schemes.contains(url.scheme()) && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

} // namespace vt
