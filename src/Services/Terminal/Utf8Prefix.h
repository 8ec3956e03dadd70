#pragma once

#include <QByteArrayView>

/// How far bytes are UTF-8 (RFC 3629).
struct Utf8Prefix {
    qsizetype length = 0; ///< bytes from the front that are whole characters
    bool isCut = false;   ///< what follows them, up to the end, is the beginning of one more

    /// Of a text that may have been split anywhere.
    static Utf8Prefix of(QByteArrayView bytes);
};
