#include "Services/LoginItem.h"

#include "Helpers/AtomicFile.h"
#include "Helpers/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace
{

// An argument between double quotes. A percent sign would begin a field code.
QString quotedArgument(const QString &argument)
{
    QString quoted = u"\""_s;
    for (const QChar c : argument) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\') {
            quoted += u'\\';
        } else if (c == u'%') {
            quoted += u'%';
        }
        quoted += c;
    }
    return quoted + u'"';
}

// The escapes of every text value, which are undone before the quotes are.
QString stringValue(const QString &text)
{
    return QString(text)
        .replace(u'\\', "\\\\"_L1)
        .replace(u'\n', "\\n"_L1)
        .replace(u'\r', "\\r"_L1)
        .replace(u'\t', "\\t"_L1);
}

} // namespace

LoginItem::LoginItem(const QString &autostartDirectory, const QStringList &command)
    : m_path(autostartDirectory + u"/tarnwell.desktop"_s)
    , m_command(command)
{
}

QString LoginItem::defaultDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/autostart"_s;
}

void LoginItem::setEnabled(bool isEnabled) const
{
    if (!isEnabled) {
        QFile entry(m_path);
        if (!entry.remove() && (entry.exists() || QFileInfo(m_path).isSymLink())) {
            Log::error(u"The login item %1 cannot be removed: %2"_s.arg(m_path, entry.errorString()));
        }
        return;
    }
    const QString text =
        u"[Desktop Entry]\nType=Application\nName=Tarnwell\nExec=%1\nTerminal=false\n"_s.arg(execValue(m_command));
    std::error_code error = makePrivateDirectories(QFileInfo(m_path).path());
    if (!error) {
        error = writeFileAtomically(m_path, text.toUtf8());
    }
    if (error) {
        Log::error(error, u"The login item %1 cannot be written"_s.arg(m_path));
    }
}

bool LoginItem::isEnabled() const
{
    return QFileInfo(m_path).isFile();
}

QString LoginItem::execValue(const QStringList &command)
{
    QStringList quoted;
    for (const QString &argument : command) {
        quoted.append(quotedArgument(argument));
    }
    return stringValue(quoted.join(u' '));
}
