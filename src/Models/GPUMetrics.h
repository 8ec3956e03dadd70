#pragma once

#include "Models/RawText.h"
#include "Models/RecordId.h"

#include <QList>
#include <QString>
#include <optional>

enum class GPUVendor { Nvidia, Amd, Intel };

template<>
struct RawTexts<GPUVendor> {
    static constexpr std::array all{std::pair{GPUVendor::Nvidia, QStringView(u"NVIDIA")},
                                    std::pair{GPUVendor::Amd, QStringView(u"AMD")},
                                    std::pair{GPUVendor::Intel, QStringView(u"Intel")}};
};

/// One graphics processor. What a vendor's tool does not tell is absent.
struct GPUDevice {
    QUuid id = RecordId::fresh();
    int index = 0;
    QString name;
    GPUVendor vendor = GPUVendor::Nvidia;
    double utilization = 0; ///< percent
    qint64 memoryTotal = 0; ///< bytes, as the next two
    qint64 memoryUsed = 0;
    qint64 memoryFree = 0;
    std::optional<double> temperature;
    std::optional<double> powerDraw;
    std::optional<double> powerLimit;
    std::optional<double> coreFrequency;
    std::optional<double> memoryFrequency;
    std::optional<double> fanSpeed;

    bool operator==(const GPUDevice &) const = default;
};

/// The graphics processors of a server. What is read from JSON is in ascending order of `index`, devices of one index
/// in the order in which they stood.
struct GPUMetrics {
    QList<GPUDevice> gpus;

    bool operator==(const GPUMetrics &) const = default;
};

size_t qHash(const GPUDevice &record, size_t seed = 0);
size_t qHash(const GPUMetrics &record, size_t seed = 0);
