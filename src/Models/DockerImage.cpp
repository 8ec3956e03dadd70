#include "Models/DockerImage.h"

#include "Helpers/Text.h"
#include "Models/Json/Record.h"

#include <QRegularExpression>
#include <limits>

using namespace Qt::StringLiterals;

template<>
struct Json::Fields<DockerImage> {
    static constexpr auto list = std::tuple{JSON_FIELD(DockerImage, id),      JSON_FIELD(DockerImage, repository),
                                            JSON_FIELD(DockerImage, tag),     JSON_FIELD(DockerImage, imageId),
                                            JSON_FIELD(DockerImage, created), JSON_FIELD(DockerImage, size)};
};

JSON_RECORD(DockerImage)

namespace
{

double unitFactor(QStringView unit)
{
    switch (unit.front().unicode()) {
    case u'K':
        return 1024.0;
    case u'M':
        return 1048576.0;
    case u'G':
        return 1073741824.0;
    case u'T':
        return 1099511627776.0;
    default:
        return 1.0;
    }
}

} // namespace

QString DockerImage::displayName() const
{
    return repository == "<none>"_L1 ? imageId.left(12) : repository + u':' + tag;
}

qint64 DockerImage::sizeInBytes() const
{
    static const QRegularExpression pattern(uR"(\A([0-9.]+)\s*([KMGT]?B)\z)"_s);
    const QString trimmed = size.trimmed();
    const QRegularExpressionMatch match = pattern.match(trimmed);
    const std::optional<double> figure = Text::decimalNumber(match.capturedView(1));
    if (!match.hasMatch() || !figure) {
        return 0;
    }
    const double bytes = *figure * unitFactor(match.capturedView(2));
    return bytes < 0x1p63 ? static_cast<qint64>(bytes) : std::numeric_limits<qint64>::max();
}
