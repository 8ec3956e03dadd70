#pragma once

#include "Models/RawText.h"

#include <QString>

/// Ordered as listed: active units sort first.
enum class ServiceStatus { Active, Inactive, Failed, Unknown };

template<>
struct RawTexts<ServiceStatus> {
    static constexpr std::array all{std::pair{ServiceStatus::Active, QStringView(u"active")},
                                    std::pair{ServiceStatus::Inactive, QStringView(u"inactive")},
                                    std::pair{ServiceStatus::Failed, QStringView(u"failed")},
                                    std::pair{ServiceStatus::Unknown, QStringView(u"unknown")}};
};

/// One systemd service. Identified by `name`.
struct ServiceInfo {
    QString name; ///< without ".service"
    ServiceStatus status = ServiceStatus::Unknown;
    bool enabled = false;
    QString description;

    bool operator==(const ServiceInfo &) const = default;
};

size_t qHash(const ServiceInfo &record, size_t seed = 0);
