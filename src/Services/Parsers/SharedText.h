#pragma once

#include "Helpers/Text.h"

/// One column of a table that repeats itself from line to line: a text that the line before had as well is shared
/// with it. The bytes must live as long as this object.
class SharedText
{
public:
    QString of(QByteArrayView bytes)
    {
        if (bytes != m_bytes) {
            m_bytes = bytes;
            m_text = Text::fromUtf8(bytes);
        }
        return m_text;
    }

private:
    QByteArrayView m_bytes;
    QString m_text;
};
