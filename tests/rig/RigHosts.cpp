#include "rig/RigHosts.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace
{
constexpr int kScriptTimeLimitMs = 60'000;

QStringList defaultFiles()
{
    const QString state = qEnvironmentVariable("RIG_STATE", u"/var/lib/tarnwell-rig"_s);
    return {QStringLiteral(TARNWELL_RIG_DIRECTORY "/../hosts.local"), state + "/roles"_L1};
}
} // namespace

QStringList RigHost::sshArguments() const
{
    return {u"-F"_s,
            u"none"_s,
            u"-o"_s,
            u"BatchMode=yes"_s,
            u"-o"_s,
            u"IdentitiesOnly=yes"_s,
            u"-o"_s,
            u"UserKnownHostsFile=/dev/null"_s,
            u"-o"_s,
            u"StrictHostKeyChecking=no"_s,
            u"-o"_s,
            u"LogLevel=ERROR"_s,
            u"-i"_s,
            key,
            u"-p"_s,
            QString::number(port),
            user + u'@' + address};
}

RigHosts::RigHosts()
    : RigHosts(defaultFiles())
{
}

RigHosts::RigHosts(const QStringList &files)
{
    for (const QString &file : files) {
        read(file);
    }
}

void RigHosts::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return;
    }
    for (const QString &raw : QString::fromUtf8(file.readAll()).split(u'\n')) {
        const QString line = raw.simplified();
        if (line.startsWith(u'#')) {
            continue;
        }
        if (line.startsWith("@state "_L1)) {
            m_state = line.section(u' ', 1);
            continue;
        }
        // The key comes last: its path may hold blanks.
        const RigHost host{line.section(u' ', 0, 0), line.section(u' ', 1, 1), line.section(u' ', 2, 2),
                           line.section(u' ', 3, 3).toInt(), line.section(u' ', 4)};
        if (!host.key.isEmpty() && host.port > 0 && !m_hosts.contains(host.role)) {
            m_hosts.insert(host.role, host);
        }
    }
}

std::optional<RigHost> RigHosts::find(const QString &role) const
{
    const auto found = m_hosts.constFind(role);
    if (found == m_hosts.constEnd() || !QFileInfo(found->key).isReadable()) {
        return std::nullopt;
    }
    return *found;
}

QString RigHosts::reason(const QString &role) const
{
    const auto found = m_hosts.constFind(role);
    return found == m_hosts.constEnd()
               ? u"no host with the role \"%1\": './dev test' as root brings one up, or name yours in tests/hosts.local"_s
                     .arg(role)
               : u"the key of the host with the role \"%1\" cannot be read: %2"_s.arg(role, found->key);
}

bool RigHosts::hostile(const QString &what)
{
    return run(u"hostile.sh"_s, {what});
}

bool RigHosts::line(const QStringList &settings)
{
    return run(u"line.sh"_s, QStringList{u"broken"_s} + settings);
}

bool RigHosts::run(const QString &script, const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"RIG_STATE"_s, m_state);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TARNWELL_RIG_DIRECTORY "/hosts/") + script, arguments);
    if (m_state.isEmpty() || !process.waitForFinished(kScriptTimeLimitMs) || process.exitCode() != 0) {
        m_error = script + u' ' + arguments.join(u' ') + ": "_L1 +
                  (m_state.isEmpty() ? u"the rig's hosts are not up"_s
                                     : QString::fromUtf8(process.readAllStandardError()).trimmed());
        return false;
    }
    return true;
}
