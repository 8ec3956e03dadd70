#include "Services/SSH/RuntimeDirectory.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

using namespace Qt::StringLiterals;

namespace
{

bool put(const QString &path, qint64 ageInSeconds = 0)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    file.close();
    const std::time_t then = std::time(nullptr) - ageInSeconds;
    const utimbuf times{then, then};
    return utime(QFile::encodeName(path).constData(), &times) == 0;
}

int modeOf(const QString &path)
{
    struct stat s;
    return lstat(QFile::encodeName(path).constData(), &s) == 0 ? static_cast<int>(s.st_mode & ALLPERMS) : -1;
}

} // namespace

class TestRuntimeDirectory : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_base = std::make_unique<QTemporaryDir>();
        QVERIFY(m_base->isValid());
        m_path = m_base->filePath(u"tarnwell"_s);
    }

    void standardPlaceFollowsTheEnvironment();
    void isMadePrivateWhateverTheUmask();
    void refusesWhatIsNotOursAlone_data();
    void refusesWhatIsNotOursAlone();
    void closesADirectoryThatWasOpen();
    void theFirstProgramRemovesAllLeftovers();
    void aSecondProgramLeavesWhatIsInUse();
    void isMadeAnewAfterACleaner();
    void socketsDirectoryIsSharedAndChecked();

private:
    std::unique_ptr<QTemporaryDir> m_base;
    QString m_path;
};

void TestRuntimeDirectory::standardPlaceFollowsTheEnvironment()
{
    const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
    const bool wasSet = qEnvironmentVariableIsSet("XDG_RUNTIME_DIR");
    const QString fallback = u"/tmp/tarnwell-%1"_s.arg(geteuid());
    const QByteArray base = QFile::encodeName(m_base->path());

    qputenv("XDG_RUNTIME_DIR", base + "/");
    QCOMPARE(RuntimeDirectory::standardPath(), m_path);
    QVERIFY(chmod(base.constData(), 0770) == 0);
    QCOMPARE(RuntimeDirectory::standardPath(), fallback);
    for (const QByteArray &useless : {QByteArray("relative"), QByteArray("/nonexistent"), QByteArray("")}) {
        qputenv("XDG_RUNTIME_DIR", useless);
        QCOMPARE(RuntimeDirectory::standardPath(), fallback);
    }
    qunsetenv("XDG_RUNTIME_DIR");
    QCOMPARE(RuntimeDirectory::standardPath(), fallback);

    if (wasSet) {
        qputenv("XDG_RUNTIME_DIR", before);
    }
}

void TestRuntimeDirectory::isMadePrivateWhateverTheUmask()
{
    for (const mode_t mask : {0000U, 0777U}) {
        const QString path = m_base->filePath(QString::number(mask));
        const mode_t before = umask(mask);
        RuntimeDirectory directory(path);
        const bool sockets = directory.ensureControlPathDirectory();
        umask(before);
        // Without privileges a directory that may not be read cannot be opened to mend it.
        if (mask == 0777U && geteuid() != 0) {
            QVERIFY(!directory.available());
            continue;
        }
        QVERIFY2(directory.available(), qPrintable(directory.refusal()));
        QCOMPARE(modeOf(path), 0700);
        QVERIFY(sockets);
        QCOMPARE(modeOf(directory.controlPathDirectory()), 0700);
    }
}

void TestRuntimeDirectory::refusesWhatIsNotOursAlone_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("reason");
    QTest::newRow("link") << u"link"_s << u"symbolic link"_s;
    QTest::newRow("dangling link") << u"dangling"_s << u"symbolic link"_s;
    QTest::newRow("file") << u"file"_s << u"not a directory"_s;
    QTest::newRow("fifo") << u"fifo"_s << u"not a directory"_s;
    QTest::newRow("foreign") << u"foreign"_s << u"another user"_s;
    QTest::newRow("open parent") << u"parent"_s << u"others could replace it"_s;
    QTest::newRow("no parent") << u"orphan"_s << u"others could replace it"_s;
    QTest::newRow("linked lock") << u"lock"_s << u"takes no lock"_s;
}

void TestRuntimeDirectory::refusesWhatIsNotOursAlone()
{
    QFETCH(QString, kind);
    QFETCH(QString, reason);
    const QString elsewhere = m_base->filePath(u"elsewhere"_s);
    const QByteArray name = QFile::encodeName(m_path);
    QVERIFY(QDir().mkdir(elsewhere));
    if (kind == "link"_L1) {
        QVERIFY(QFile::link(elsewhere, m_path));
    } else if (kind == "dangling"_L1) {
        QVERIFY(QFile::link(elsewhere + u"/none"_s, m_path));
    } else if (kind == "file"_L1) {
        QVERIFY(put(m_path));
    } else if (kind == "fifo"_L1) {
        QVERIFY(mkfifo(name.constData(), 0600) == 0);
    } else if (kind == "foreign"_L1) {
        if (geteuid() != 0) {
            QSKIP("Needs root, to give a directory to another user.");
        }
        QVERIFY(QDir().mkdir(m_path));
        QVERIFY(chown(name.constData(), 65534, 65534) == 0);
    } else if (kind == "parent"_L1) {
        QVERIFY(chmod(QFile::encodeName(m_base->path()).constData(), 0777) == 0);
    } else if (kind == "orphan"_L1) {
        m_path = m_base->filePath(u"none/tarnwell"_s);
    } else {
        QVERIFY(QDir().mkdir(m_path));
        QVERIFY(QFile::link(elsewhere + u"/lock"_s, m_path + u"/lock"_s));
    }

    RuntimeDirectory directory(m_path);
    QVERIFY(!directory.available());
    QVERIFY(!directory.ensureControlPathDirectory());
    QVERIFY2(directory.refusal().contains(reason), qPrintable(directory.refusal()));
    QVERIFY(QDir(elsewhere).isEmpty());
}

void TestRuntimeDirectory::closesADirectoryThatWasOpen()
{
    QVERIFY(QDir().mkdir(m_path));
    QVERIFY(chmod(QFile::encodeName(m_path).constData(), 0777) == 0);
    const RuntimeDirectory directory(m_path);
    QVERIFY(directory.available());
    QCOMPARE(modeOf(m_path), 0700);
}

void TestRuntimeDirectory::theFirstProgramRemovesAllLeftovers()
{
    QVERIFY(QDir().mkpath(m_path + u"/tw_ssh"_s));
    const QStringList stale{u"/tarnwell_askpass_A.sh"_s, u"/tw_ssh/ssh_0000CAFE"_s, u"/tw_ssh/ssh_0000CAFE.x"_s};
    const QStringList others{u"/notes.sh"_s, u"/tw_ssh/other"_s};
    for (const QString &name : stale + others) {
        QVERIFY(put(m_path + name));
    }
    // A link in the place of the sockets' directory is not followed by the removal.
    const QString foreign = m_base->filePath(u"foreign"_s);
    const QString second = m_base->filePath(u"second"_s);
    QVERIFY(QDir().mkdir(foreign) && QDir().mkdir(second) && put(foreign + u"/ssh_00000001"_s));
    QVERIFY(QFile::link(foreign, second + u"/tw_ssh"_s));

    RuntimeDirectory directory(m_path);
    RuntimeDirectory linked(second);
    QVERIFY(directory.isAlone());
    for (const QString &name : stale) {
        QVERIFY2(!QFile::exists(m_path + name), qPrintable(name));
    }
    for (const QString &name : others) {
        QVERIFY2(QFile::exists(m_path + name), qPrintable(name));
    }
    QVERIFY(QFile::exists(foreign + u"/ssh_00000001"_s));
    QVERIFY(!linked.ensureControlPathDirectory());
}

void TestRuntimeDirectory::aSecondProgramLeavesWhatIsInUse()
{
    auto first = std::make_unique<RuntimeDirectory>(m_path);
    QVERIFY(first->isAlone());
    QVERIFY(first->ensureControlPathDirectory());
    const QString young = m_path + u"/tarnwell_askpass_YOUNG.sh"_s;
    const QString old = m_path + u"/tarnwell_askpass_OLD.sh"_s;
    const QString socket = first->controlPathDirectory() + u"ssh_0BADF00D"_s;
    QVERIFY(put(young, 20) && put(old, 40) && put(socket, 4000));
    {
        RuntimeDirectory second(m_path);
        QVERIFY(second.available());
        QVERIFY(!second.isAlone());
        QVERIFY(QFile::exists(young));
        QVERIFY(!QFile::exists(old));
        QVERIFY(QFile::exists(socket));

        // The first one's end doesn't leave the second without a lock.
        first.reset();
        const RuntimeDirectory third(m_path);
        QVERIFY(!third.isAlone());
        QVERIFY(QFile::exists(socket));
    }
    const RuntimeDirectory last(m_path);
    QVERIFY(last.isAlone());
    QVERIFY(!QFile::exists(socket));
}

void TestRuntimeDirectory::isMadeAnewAfterACleaner()
{
    RuntimeDirectory directory(m_path);
    QVERIFY(QDir(m_path).removeRecursively());
    QVERIFY(directory.ensureControlPathDirectory());
    QCOMPARE(modeOf(m_path), 0700);
    QVERIFY(!RuntimeDirectory(m_path).isAlone());

    QVERIFY(QDir(m_path).removeRecursively());
    QVERIFY(put(m_path));
    QVERIFY(!directory.ensure());
    QVERIFY(QFile::remove(m_path));
    QVERIFY(directory.ensure());
}

void TestRuntimeDirectory::socketsDirectoryIsSharedAndChecked()
{
    RuntimeDirectory directory(m_path);
    QCOMPARE(directory.controlPathDirectory(), m_path + u"/tw_ssh/"_s);
    QVERIFY(directory.ensureControlPathDirectory());
    const QString socket = directory.controlPathDirectory() + u"ssh_12345678"_s;
    QVERIFY(put(socket));
    directory.removeControlPathDirectory();
    QVERIFY(QFile::exists(socket));
    QVERIFY(QFile::remove(socket));
    directory.removeControlPathDirectory();
    QVERIFY(!QFile::exists(directory.controlPathDirectory()));
}

QTEST_GUILESS_MAIN(TestRuntimeDirectory)
#include "test_runtime_directory.moc"
