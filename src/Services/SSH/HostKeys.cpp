#include "Services/SSH/HostKeys.h"

#include "Helpers/ShellQuote.h"

#include <QCoreApplication>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace
{

QString tr(const char *text)
{
    return QCoreApplication::translate("HostKeys", text);
}

std::optional<QString> firstMatch(const QString &pattern, const QString &text, int group)
{
    const QRegularExpressionMatch match = QRegularExpression(pattern).match(text);
    return match.hasMatch() ? std::optional(match.captured(group)) : std::nullopt;
}

} // namespace

HostKeyInfo extractHostKeyInfo(const QString &error)
{
    HostKeyInfo info;
    if (const auto line = firstMatch(u"known_hosts:(\\d+)"_s, error, 1)) {
        bool isNumber = false;
        const int number = line->toInt(&isNumber);
        info.knownHostsLine = isNumber ? std::optional(number) : std::nullopt;
    }
    info.keyType = firstMatch(u"(RSA|DSA|ECDSA|ED25519)\\s+key"_s, error, 1);
    info.fingerprint = firstMatch(u"SHA256:[A-Za-z0-9+/]+"_s, error, 0);
    return info;
}

bool tellsNewHostKey(const QString &error)
{
    return error.contains("No"_L1) && error.contains("host key is known"_L1);
}

bool tellsChangedHostKey(const QString &error)
{
    return error.contains("REMOTE HOST IDENTIFICATION HAS CHANGED"_L1);
}

HostKeyConflict describeHostKeyConflict(const Server &server, const QString &error)
{
    const HostKeyInfo info = extractHostKeyInfo(error);
    const QString serverLine =
        tr("Server: ") + server.name + u" ("_s + server.host + u':' + QString::number(server.port) + u')';
    const QString lead = tr("To resolve this, run the following command in Terminal:");

    HostKeyConflict conflict;
    conflict.title = tr("SSH Host Key Verification Failed");
    if (tellsNewHostKey(error)) {
        conflict.body =
            tr("This is the first time connecting to this server, or the host key was previously removed.") +
            u"\n\n"_s + serverLine + u'\n';
        if (info.fingerprint) {
            conflict.body += tr("Fingerprint: ") + *info.fingerprint;
        }
        conflict.body += u"\n\n"_s + lead;
    } else if (tellsChangedHostKey(error)) {
        conflict.body = tr("The server's host key has changed since your last connection. This could indicate:") +
                        u"\n\n"_s + tr("• The server was reinstalled or reconfigured") + u'\n' +
                        tr("• A security issue (man-in-the-middle attack)") + u"\n\n"_s + serverLine + u"\n\n"_s +
                        lead;
    } else {
        conflict.body = tr("SSH host key verification failed.") + u"\n\n"_s + serverLine + u"\n\n"_s + lead;
    }
    conflict.command = u"ssh-keygen -R "_s + shellQuoted(server.host);
    conflict.hint = tr("After running this command, click \"Retry Connection\".");
    if (info.knownHostsLine) {
        conflict.hint += u'\n' + tr("Or manually edit ~/.ssh/known_hosts and remove line ") +
                         QString::number(*info.knownHostsLine) + u'.';
    }
    return conflict;
}
