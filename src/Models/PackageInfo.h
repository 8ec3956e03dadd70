#pragma once

#include "Models/RawText.h"
#include "Models/RecordId.h"

#include <QString>
#include <optional>

/// One package of apt or dnf.
struct PackageInfo {
    QUuid id = RecordId::fresh();
    QString name;
    QString version;
    QString description;
    bool isInstalled = false;
    std::optional<QString> size;

    bool operator==(const PackageInfo &) const = default;
};

size_t qHash(const PackageInfo &record, size_t seed = 0);

enum class PackageAction { Install, Remove, Update, Upgrade, Search };

template<>
struct RawTexts<PackageAction> {
    static constexpr std::array all{std::pair{PackageAction::Install, QStringView(u"install")},
                                    std::pair{PackageAction::Remove, QStringView(u"remove")},
                                    std::pair{PackageAction::Update, QStringView(u"update")},
                                    std::pair{PackageAction::Upgrade, QStringView(u"upgrade")},
                                    std::pair{PackageAction::Search, QStringView(u"search")}};
};
