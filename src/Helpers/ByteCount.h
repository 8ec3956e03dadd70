#pragma once

#include <QString>

/// `bytes` as file managers show it, in decimal units (1 KB is 1000 bytes): "Zero KB", "1 byte", "12 bytes", "3 KB",
/// "48.2 MB", "1.25 GB". KB have no decimals, MB one, GB and above two; trailing zeros are dropped.
QString fileByteCount(qint64 bytes);
