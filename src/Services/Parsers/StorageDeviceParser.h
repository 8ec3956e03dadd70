#pragma once

#include "Models/SystemInfo.h"

#include <QByteArrayView>

/// Reads what StorageDevicesCommand prints: the JSON of `lsblk --json`.
struct StorageDeviceParser {
    /// The devices that `output` lists; lines before the first that begins with a brace are passed over. Output that
    /// does not decode gives an empty list and one line with the reason on standard output: util-linux before 2.37,
    /// for instance, prints "mountpoint" instead of "mountpoints".
    static QList<StorageDevice> parse(QByteArrayView output);
};
