#include "Models/FileInfo.h"

#include "Helpers/ByteCount.h"
#include "Helpers/Text.h"
#include "Models/Json/Record.h"

using namespace Qt::StringLiterals;

template<>
struct Json::Fields<FileInfo> {
    static constexpr auto list =
        std::tuple{JSON_FIELD(FileInfo, id),    JSON_FIELD(FileInfo, name),        JSON_FIELD(FileInfo, path),
                   JSON_FIELD(FileInfo, size),  JSON_FIELD(FileInfo, permissions), JSON_FIELD(FileInfo, lastModified),
                   JSON_FIELD(FileInfo, owner), JSON_FIELD(FileInfo, group),       JSON_FIELD(FileInfo, isDirectory)};
};

JSON_RECORD(FileInfo)

QString FileInfo::displaySize() const
{
    if (isDirectory) {
        return u"--"_s;
    }
    const std::optional<qint64> bytes = Text::decimalInteger(size);
    return bytes ? fileByteCount(*bytes) : size;
}

QString FileInfo::icon() const
{
    if (isDirectory) {
        return u"folder.fill"_s;
    }
    if (name.endsWith(".txt"_L1) || name.endsWith(".log"_L1)) {
        return u"doc.text.fill"_s;
    }
    if (name.endsWith(".sh"_L1)) {
        return u"terminal.fill"_s;
    }
    if (name.endsWith(".conf"_L1) || name.endsWith(".config"_L1)) {
        return u"gear"_s;
    }
    return u"doc.fill"_s;
}
