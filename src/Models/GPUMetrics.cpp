#include "Models/GPUMetrics.h"

#include "Models/Json/GPUMetricsFields.h"
#include "Models/Json/Record.h"

JSON_RECORD(GPUDevice)
JSON_RECORD(GPUMetrics)
