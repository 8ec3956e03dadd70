#pragma once

#include "Models/GPUMetrics.h"
#include "Models/Json/Fields.h"

#include <algorithm>

// Shared by the records that hold these.

template<>
struct Json::Fields<GPUDevice> {
    static constexpr auto list = std::tuple{JSON_FIELD(GPUDevice, id),
                                            JSON_FIELD(GPUDevice, index),
                                            JSON_FIELD(GPUDevice, name),
                                            JSON_FIELD(GPUDevice, vendor),
                                            JSON_FIELD(GPUDevice, utilization),
                                            JSON_FIELD(GPUDevice, memoryTotal),
                                            JSON_FIELD(GPUDevice, memoryUsed),
                                            JSON_FIELD(GPUDevice, memoryFree),
                                            JSON_FIELD(GPUDevice, temperature),
                                            JSON_FIELD(GPUDevice, powerDraw),
                                            JSON_FIELD(GPUDevice, powerLimit),
                                            JSON_FIELD(GPUDevice, coreFrequency),
                                            JSON_FIELD(GPUDevice, memoryFrequency),
                                            JSON_FIELD(GPUDevice, fanSpeed)};
};

template<>
struct Json::Fields<GPUMetrics> {
    static constexpr auto list = std::tuple{JSON_FIELD(GPUMetrics, gpus)};

    static void finish(GPUMetrics &metrics)
    {
        std::stable_sort(metrics.gpus.begin(), metrics.gpus.end(),
                         [](const GPUDevice &a, const GPUDevice &b) { return a.index < b.index; });
    }
};
