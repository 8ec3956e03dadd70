#pragma once

#include <QByteArray>

#include <sys/types.h>

/// Bytes that arrive in pieces and are checked for being UTF-8 (RFC 3629) while they do, so that a long text needs no
/// second pass over all of it once it is complete.
class Utf8Buffer
{
public:
    void append(QByteArrayView piece);

    /// Reads at most `most` bytes from a descriptor, without a buffer between. Returns what read(2) returns.
    ssize_t readFrom(int descriptor, qsizetype most);

    qsizetype size() const { return m_bytes.size(); }

    /// Whether the text so far, which is now complete, is valid. A character that was cut off makes it invalid.
    bool isValid();

    /// Takes the bytes out and leaves an empty buffer.
    QByteArray take();

private:
    void check();

    QByteArray m_bytes;
    qsizetype m_checked = 0; // before this, all characters are complete and valid
    bool m_isValid = true;
};
