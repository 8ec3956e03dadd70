#include "Services/Children/Utf8Buffer.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>
#include <utility>

namespace
{

constexpr qsizetype kLongestCharacter = 4;

// Where the last character of `bytes` begins if it is not ASCII, for it may be incomplete; else their end. Bytes that
// no character ends with are left to the check.
qsizetype completeEnd(QByteArrayView bytes)
{
    const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    for (qsizetype back = 1; back <= kLongestCharacter && back <= bytes.size(); ++back) {
        const char c = bytes[bytes.size() - back];
        if (!isContinuation(c)) {
            const bool isAscii = static_cast<unsigned char>(c) < 0x80U;
            return isAscii ? bytes.size() : bytes.size() - back;
        }
    }
    return bytes.size();
}

} // namespace

void Utf8Buffer::append(QByteArrayView piece)
{
    m_bytes += piece;
    check();
}

ssize_t Utf8Buffer::readFrom(int descriptor, qsizetype most)
{
    const qsizetype before = m_bytes.size();
    m_bytes.resize(before + most);
    const ssize_t taken = ::read(descriptor, m_bytes.data() + before, static_cast<size_t>(most));
    const int error = errno;
    m_bytes.resize(before + std::max<ssize_t>(taken, 0));
    check();
    errno = error;
    return taken;
}

void Utf8Buffer::check()
{
    const QByteArrayView rest = QByteArrayView(m_bytes).sliced(m_checked);
    const qsizetype end = completeEnd(rest);
    m_isValid = m_isValid && rest.first(end).isValidUtf8();
    m_checked += end;
}

bool Utf8Buffer::isValid()
{
    return m_isValid && QByteArrayView(m_bytes).sliced(m_checked).isValidUtf8();
}

QByteArray Utf8Buffer::take()
{
    m_checked = 0;
    m_isValid = true;
    return std::exchange(m_bytes, {});
}
