#include "Helpers/Log.h"

#include <QTime>
#include <array>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace Log
{

namespace
{

constexpr std::array kCategoryNames{"General"_L1,  "SSH"_L1,        "Terminal"_L1,   "Files"_L1,    "Network"_L1,
                                    "UI"_L1,       "Auth"_L1,       "Docker"_L1,     "Services"_L1, "Processes"_L1,
                                    "Packages"_L1, "Connection"_L1, "Performance"_L1};
constexpr std::array kLevelNames{"VERBOSE"_L1, "DEBUG"_L1, "INFO"_L1, "WARNING"_L1, "ERROR"_L1};

bool isWanted(Level level, Category category)
{
    const Settings &now = settings();
    return level >= now.minimumLevel && (now.allowedCategories.isEmpty() || now.allowedCategories.contains(category));
}

// A message may quote what a server sent: nothing of it may steer the operator's terminal or forge a line.
QString withoutControls(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        if (c.category() == QChar::Other_Control) {
            out += u"\\x"_s + QString::number(c.unicode(), 16).rightJustified(2, u'0');
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace

Settings &settings()
{
    static Settings current;
    return current;
}

QString categoryName(Category category)
{
    return kCategoryNames.at(static_cast<size_t>(category));
}

QList<Category> allCategories()
{
    QList<Category> all;
    for (size_t i = 0; i < kCategoryNames.size(); ++i) {
        all.append(static_cast<Category>(i));
    }
    return all;
}

QString format(Level level, Category category, const QString &message, const std::source_location &where)
{
    const Settings &now = settings();
    QString line;
    if (now.includeTimestamp) {
        line += QTime::currentTime().toString(u"HH:mm:ss.zzz "_s);
    }
    line += u'[' + kLevelNames.at(static_cast<size_t>(level)) + u"] ["_s + categoryName(category) + u"] "_s;
    if (now.includeSourceLocation) {
        line += QString::fromUtf8(where.file_name()) + u':' + QString::number(where.line()) + u' ';
    }
    return line + withoutControls(message);
}

QString withDescription(const QString &message, const QString &description)
{
    return message.isEmpty() ? description : message + u": "_s + description;
}

QString tookText(const QString &label, double seconds)
{
    return u"%1 - took %2s"_s.arg(label, QString::number(seconds, 'f', 3));
}

void write(Level level, Category category, const QString &message, const std::source_location &where)
{
    if (isWanted(level, category)) {
        const QByteArray line = format(level, category, message, where).toUtf8() + '\n';
        std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
    }
}

} // namespace Log
