#pragma once

#include "Models/RawText.h"
#include "Models/RecordId.h"
#include "Models/SemanticColor.h"

#include <QString>

/// What a port is used for, by its number.
enum class PortCategory { Web, Ssh, Ftp, Database, Email, Dns, Ntp, System, Registered, Dynamic, Other };

/// The raw text is the label.
template<>
struct RawTexts<PortCategory> {
    static constexpr std::array all{std::pair{PortCategory::Web, QStringView(u"Web")},
                                    std::pair{PortCategory::Ssh, QStringView(u"SSH")},
                                    std::pair{PortCategory::Ftp, QStringView(u"FTP")},
                                    std::pair{PortCategory::Database, QStringView(u"Database")},
                                    std::pair{PortCategory::Email, QStringView(u"Email")},
                                    std::pair{PortCategory::Dns, QStringView(u"DNS")},
                                    std::pair{PortCategory::Ntp, QStringView(u"NTP")},
                                    std::pair{PortCategory::System, QStringView(u"System")},
                                    std::pair{PortCategory::Registered, QStringView(u"Registered")},
                                    std::pair{PortCategory::Dynamic, QStringView(u"Dynamic")},
                                    std::pair{PortCategory::Other, QStringView(u"Other")}};
};

/// The symbol that stands for a category, for instance "globe".
QString icon(PortCategory category);

SemanticColor color(PortCategory category);

/// One listening or connected socket.
struct PortInfo {
    QUuid id = RecordId::fresh();
    QString protocolType;
    QString localAddress;
    QString localPort;
    QString foreignAddress;
    QString foreignPort;
    QString state;
    QString processName;
    QString pid;

    qint64 localPortInt() const; ///< 0 for text that is no integer

    /// Well-known ports first, then the ranges of RFC 6335 section 6; Other for text that is no integer.
    PortCategory portCategory() const;

    bool operator==(const PortInfo &) const = default;
};

size_t qHash(const PortInfo &record, size_t seed = 0);
