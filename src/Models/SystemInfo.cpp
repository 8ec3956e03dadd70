#include "Models/SystemInfo.h"

#include "Models/Json/Record.h"
#include "Models/Json/SystemInfoFields.h"

JSON_RECORD(DiskInfo)
JSON_RECORD(StorageDevice)
JSON_RECORD(StorageDeviceList)
JSON_RECORD(SystemInfo)
