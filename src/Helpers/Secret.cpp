#include "Helpers/Secret.h"

#include <QStringDecoder>
#include <QStringEncoder>

#include <string.h>

std::optional<QByteArray> strictUtf8(const QString &text)
{
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    const QByteArray bytes = encoder(text);
    return encoder.hasError() ? std::nullopt : std::optional(bytes);
}

std::optional<QString> strictText(const QByteArray &bytes)
{
    // Stateless also means: an unfinished sequence at the end is an error. A byte order mark is part of the secret.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

namespace
{

template<typename Buffer>
void overwrite(Buffer &secret)
{
    if (!secret.isEmpty() && secret.isDetached()) {
        explicit_bzero(secret.data(), static_cast<size_t>(secret.size()) * sizeof(*secret.data()));
    }
    secret.clear();
}

} // namespace

void wipe(QByteArray &secret)
{
    overwrite(secret);
}

void wipe(QString &secret)
{
    overwrite(secret);
}
