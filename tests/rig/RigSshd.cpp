#include "rig/RigSshd.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QUuid>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{
constexpr int kScriptTimeLimitMs = 60'000;

QString contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

RigSshd::~RigSshd()
{
    down();
}

bool RigSshd::isRoot()
{
    return ::geteuid() == 0;
}

QString RigSshd::script()
{
    return QStringLiteral(TARNWELL_RIG_DIRECTORY "/sshd.sh");
}

bool RigSshd::up(Accounts accounts)
{
    down();
    m_directory = QDir::tempPath() + "/tarnwell-rig-"_L1 + QUuid::createUuid().toString(QUuid::Id128).left(12);
    QStringList arguments{u"up"_s, m_directory, u"--owner"_s, QString::number(QCoreApplication::applicationPid())};
    if (accounts == Accounts::Created) {
        arguments << u"--accounts"_s;
    }
    if (!run(arguments)) {
        m_directory.clear();
        return false;
    }
    m_password = accounts == Accounts::Created ? contents(value("PASSWORD_FILE")) : QString();
    return true;
}

void RigSshd::down()
{
    if (!m_directory.isEmpty()) {
        run({u"down"_s, m_directory});
    }
    m_directory.clear();
    m_values.clear();
}

QString RigSshd::passphrase() const
{
    return contents(value("PASSPHRASE_FILE"));
}

bool RigSshd::setPassword(const QString &password)
{
    if (!run({u"password"_s, m_directory}, password.toUtf8())) {
        return false;
    }
    m_password = password;
    return true;
}

bool RigSshd::rekey()
{
    return run({u"rekey"_s, m_directory});
}

bool RigSshd::trust()
{
    return run({u"trust"_s, m_directory});
}

bool RigSshd::hang(bool sessionsToo)
{
    return run(sessionsToo ? QStringList{u"hang"_s, m_directory, u"all"_s} : QStringList{u"hang"_s, m_directory});
}

bool RigSshd::resume()
{
    return run({u"resume"_s, m_directory});
}

bool RigSshd::drop()
{
    return run({u"drop"_s, m_directory});
}

int RigSshd::logins()
{
    return run({u"logins"_s, m_directory}) ? m_output.trimmed().toInt() : -1;
}

QString RigSshd::agentSocket()
{
    return run({u"agent"_s, m_directory}) ? value("AGENT") : QString();
}

QString RigSshd::log() const
{
    return contents(value("LOG"));
}

QStringList RigSshd::sshArguments(const QString &key, const QString &account) const
{
    QStringList arguments{
        u"-F"_s, u"none"_s,
        u"-o"_s, u"UserKnownHostsFile="_s + knownHosts(),
        u"-o"_s, u"GlobalKnownHostsFile=/dev/null"_s,
        u"-o"_s, u"StrictHostKeyChecking=yes"_s,
    };
    if (!key.isEmpty()) {
        arguments << u"-i"_s << key << u"-o"_s << u"IdentitiesOnly=yes"_s;
    }
    return arguments << u"-p"_s << QString::number(port()) << (account.isEmpty() ? user() : account) + u'@' + host();
}

bool RigSshd::run(const QStringList &arguments, const QByteArray &input)
{
    QProcess process;
    process.start(script(), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(kScriptTimeLimitMs) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        m_error = "sshd.sh "_L1 + arguments.join(u' ') + ": "_L1 + process.errorString() + u' ' +
                  QString::fromUtf8(process.readAllStandardError()).trimmed();
        return false;
    }
    m_output = process.readAllStandardOutput();
    for (const QString &line : QString::fromUtf8(m_output).split(u'\n', Qt::SkipEmptyParts)) {
        if (const qsizetype equals = line.indexOf(u'='); equals > 0) {
            m_values.insert(line.left(equals), line.mid(equals + 1));
        }
    }
    return true;
}
