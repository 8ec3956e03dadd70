#include "Models/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <fcntl.h>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

mode_t modeOf(const QString &path)
{
    struct stat status{};
    ::stat(QFile::encodeName(path).constData(), &status);
    return status.st_mode & ALLPERMS;
}

// Root passes over modes; as root the tests of unreadable and unwritable places act as somebody else.
class WithoutRoot
{
public:
    WithoutRoot()
    {
        constexpr uid_t kNobody = 65534;
        m_wasRoot = ::geteuid() == 0 && ::seteuid(kNobody) == 0;
    }

    WithoutRoot(const WithoutRoot &) = delete;
    WithoutRoot &operator=(const WithoutRoot &) = delete;

    ~WithoutRoot()
    {
        if (m_wasRoot && ::seteuid(0) != 0) {
            std::abort();
        }
    }

private:
    bool m_wasRoot;
};

void chmodAsOwner(const QString &path, mode_t mode)
{
    const uid_t acting = ::geteuid();
    const bool wasRoot = ::getuid() == 0 && ::seteuid(0) == 0;
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode), 0);
    QVERIFY(!wasRoot || ::seteuid(acting) == 0);
}

// Files of this process end at `bytes`: to a writer the same as a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }

    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

} // namespace

class TestUserDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void valuesOutliveTheStore();
    void aValueOfAnotherTypeIsAbsent();
    void theFileIsPrivateAndReadable();
    void theOrderOfFirstWritingStays();
    void whatElseStandsInTheFileSurvives();
    void longBytesAreReadTheSame_data();
    void longBytesAreReadTheSame();
    void anotherProgramsKeysSurvive();
    void aDamagedFileIsSetAside_data();
    void aDamagedFileIsSetAside();
    void damagedFilesNeverReplaceEachOther();
    void anUnreadableFileIsNeverWrittenOver();
    void whatIsNoFileIsNotTouched();
    void aFullDiskCostsNothing();
    void aClosedDirectoryCostsNothing();
    void aLinkedFileStaysALink();
    void aVanishedFileIsWrittenAgain();
    void damagedValuesAreKept();

private:
    QString path() const { return m_directory->filePath(u"defaults.json"_s); }

    QByteArray content(const QString &name = u"defaults.json"_s) const
    {
        QFile file(m_directory->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }

    void write(const QByteArray &bytes) const
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    std::unique_ptr<QTemporaryDir> m_directory;
};

void TestUserDefaults::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    QVERIFY(m_directory->isValid());
}

void TestUserDefaults::valuesOutliveTheStore()
{
    QByteArray everyByte(256, '\0');
    std::iota(everyByte.begin(), everyByte.end(), '\0');
    {
        UserDefaults defaults(m_directory->path());
        QVERIFY(defaults.setInteger(u"largest"_s, std::numeric_limits<qint64>::max()));
        QVERIFY(defaults.setInteger(u"smallest"_s, std::numeric_limits<qint64>::min()));
        QVERIFY(defaults.setBoolean(u"on"_s, true));
        QVERIFY(defaults.setText(u"text \"\n"_s, u"é\0\U0001F600"_s));
        QVERIFY(defaults.setData(u"data"_s, everyByte));
        QVERIFY(defaults.setData(u"nothing"_s, QByteArray()));
        QVERIFY(defaults.setBoolean(u"gone"_s, true));
        QVERIFY(defaults.remove(u"gone"_s));
    }
    UserDefaults defaults(m_directory->path());
    QCOMPARE(defaults.integer(u"largest"_s), std::numeric_limits<qint64>::max());
    QCOMPARE(defaults.integer(u"smallest"_s), std::numeric_limits<qint64>::min());
    QCOMPARE(defaults.boolean(u"on"_s), true);
    QCOMPARE(defaults.text(u"text \"\n"_s), u"é\0\U0001F600"_s);
    QCOMPARE(defaults.data(u"data"_s), everyByte);
    QCOMPARE(defaults.data(u"nothing"_s), QByteArray());
    QVERIFY(!defaults.contains(u"gone"_s));
    QCOMPARE(defaults.notice(), QString());
}

void TestUserDefaults::aValueOfAnotherTypeIsAbsent()
{
    write(R"({"i":1,"b":true,"t":"1","d":{"data":"MQ=="},"f":1.0,"huge":9223372036854775808,"n":null,"l":[1],)"
          R"("d2":{"data":"*"},"d3":{"data":"MQ==","more":1},"d4":{"data":1},"d5":{}})");
    const UserDefaults defaults(m_directory->path());
    for (const QString &key : defaults.keys()) {
        QCOMPARE(defaults.integer(key).has_value(), key == "i"_L1);
        QCOMPARE(defaults.boolean(key).has_value(), key == "b"_L1);
        QCOMPARE(defaults.text(key).has_value(), key == "t"_L1);
        QCOMPARE(defaults.data(key).has_value(), key == "d"_L1);
    }
    QCOMPARE(defaults.keys().size(), 12);
}

void TestUserDefaults::theFileIsPrivateAndReadable()
{
    const mode_t before = ::umask(0);
    const QString directory = m_directory->filePath(u"a/b"_s);
    UserDefaults defaults(directory);
    QVERIFY(!QFileInfo::exists(directory));
    QVERIFY(defaults.setInteger(u"sshTimeout"_s, 30));
    QVERIFY(defaults.setData(u"SavedServers"_s, "[]"));
    ::umask(before);
    QCOMPARE(modeOf(m_directory->filePath(u"a"_s)), mode_t{0700});
    QCOMPARE(modeOf(directory), mode_t{0700});
    QCOMPARE(modeOf(directory + u"/defaults.json"_s), mode_t{0600});
    QCOMPARE(QDir(directory).entryList(QDir::Files | QDir::Hidden), QStringList{u"defaults.json"_s});
    QCOMPARE(content(u"a/b/defaults.json"_s),
             QByteArray("{\n\"sshTimeout\": 30,\n\"SavedServers\": {\"data\":\"W10=\"}\n}\n"));
}

void TestUserDefaults::theOrderOfFirstWritingStays()
{
    UserDefaults defaults(m_directory->path());
    for (const auto &key : {u"z"_s, u"a"_s, u"m"_s, u"a"_s, u"z"_s}) {
        defaults.setText(key, key);
        defaults.setBoolean(key, true);
    }
    QCOMPARE(defaults.keys(), (QStringList{u"z"_s, u"a"_s, u"m"_s}));
    QCOMPARE(UserDefaults(m_directory->path()).keys(), defaults.keys());
}

void TestUserDefaults::whatElseStandsInTheFileSurvives()
{
    const QByteArray deep = QByteArray(200'000, '[') + QByteArray(200'000, ']');
    const QByteArray entries = R"("big": 123456789012345678901234567890,
"exact": 1.10,
"null": null,
"tree": {"data":"MQ==","a":[1,-2,{"b":[]},"\"",18446744073709551615,true],"c":{}},
"list": ["x",[],{"data":"MQ=="}],
"deep": )" + deep;
    write("{\n" + entries + "\n}");
    UserDefaults defaults(m_directory->path());
    QVERIFY(defaults.setBoolean(u"mine"_s, true));
    QVERIFY(defaults.remove(u"absent"_s));
    QCOMPARE(content(), "{\n" + entries + ",\n\"mine\": true\n}\n");
    QVERIFY(defaults.setInteger(u"tree"_s, 7));
    QVERIFY(content().contains("\"tree\": 7,\n"));
}

void TestUserDefaults::longBytesAreReadTheSame_data()
{
    QTest::addColumn<QByteArray>("others");
    QTest::newRow("nothing else") << QByteArray();
    QTest::newRow("more of them") << R"(, "b": {"data":")" + QByteArray(5000, 'A') + R"("}, "c": {"data":"QQ=="})";
    QTest::newRow("one in a tree") << R"(, "b": [{"data":")" + QByteArray(5000, 'A') + R"("},{"data":"QQ=="}])";
    QTest::newRow("one with company") << R"(, "b": {"data":")" + QByteArray(5000, 'A') + R"(","more":1})";
    QTest::newRow("none after all") << R"(, "b": {"data":")" + QByteArray(5000, '*') + R"("})";
    QTest::newRow("one behind text") << R"(, "b": "{\"data\":\")" + QByteArray(5000, 'A') + R"(")";
    QTest::newRow("a text like an inner mark") << QByteArray(R"(, "b": "*cut 0", "c": {"data":"*cut 0"})");
    QTest::newRow("an escaped one") << QByteArray(R"(, "b": "\u002acut 0")");
}

void TestUserDefaults::longBytesAreReadTheSame()
{
    QFETCH(QByteArray, others);
    const QByteArray bytes = QByteArray("\x00\xff\x7f", 3).repeated(5000);
    write("{\n\"a\": {\"data\":\"" + bytes.toBase64() + "\"}" + others + "}");
    const auto expected = readDefaults("{\"a\":1" + others + "}");
    QVERIFY(expected);
    UserDefaults defaults(m_directory->path());
    QCOMPARE(defaults.notice(), QString());
    QCOMPARE(defaults.data(u"a"_s), bytes);
    QVERIFY(defaults.setInteger(u"a"_s, 1));
    const auto rewritten = readDefaults(content());
    QCOMPARE(rewritten, expected);
    write("{\"a\": {\"data\":\"" + bytes.toBase64() + "\"}" + others); // and what is damaged stays damaged
    QVERIFY(UserDefaults(m_directory->path()).keys().isEmpty());
}

void TestUserDefaults::anotherProgramsKeysSurvive()
{
    UserDefaults mine(m_directory->path());
    UserDefaults theirs(m_directory->path());
    QVERIFY(mine.setInteger(u"shared"_s, 1));
    QVERIFY(mine.setInteger(u"dropped"_s, 1));
    QVERIFY(theirs.setInteger(u"theirs"_s, 2));
    QVERIFY(theirs.setInteger(u"shared"_s, 2));
    QVERIFY(theirs.remove(u"dropped"_s));
    QVERIFY(mine.setInteger(u"mine"_s, 3));
    const UserDefaults after(m_directory->path());
    QCOMPARE(after.keys(), (QStringList{u"shared"_s, u"theirs"_s, u"mine"_s}));
    QCOMPARE(after.integer(u"shared"_s), 2);
    QCOMPARE(mine.integer(u"shared"_s), 2);
}

void TestUserDefaults::aDamagedFileIsSetAside_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray whole = R"({"sshTimeout": 30, "SavedServers": {"data":"W10="}})";
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("truncated") << whole.chopped(1);
    QTest::newRow("cut in a text") << whole.chopped(5);
    QTest::newRow("zeros, as after a power cut") << QByteArray(64, '\0');
    QTest::newRow("zeros behind") << whole + QByteArray(8, '\0');
    QTest::newRow("an array") << "[" + whole + "]";
    QTest::newRow("a text") << QByteArray("\"a\"");
    QTest::newRow("invalid UTF-8") << QByteArray(whole).replace("30", "\"\xff\"");
    QTest::newRow("deep and unfinished") << "{\"a\":" + QByteArray(300'000, '[');
}

void TestUserDefaults::aDamagedFileIsSetAside()
{
    QFETCH(QByteArray, bytes);
    write(bytes);
    UserDefaults defaults(m_directory->path());
    QCOMPARE(defaults.keys(), QStringList());
    QCOMPARE(content(u"defaults.json.damaged"_s), bytes);
    QVERIFY(!QFileInfo::exists(path()));
    const QString notice = defaults.notice();
    QVERIFY2(notice.contains(u"damaged"_s) && notice.contains(path() + u".damaged"_s), qPrintable(notice));
    QCOMPARE(defaults.notice(), QString());
    QVERIFY(defaults.setBoolean(u"a"_s, true));
    QCOMPARE(content(u"defaults.json.damaged"_s), bytes);
    QCOMPARE(UserDefaults(m_directory->path()).boolean(u"a"_s), true);
}

void TestUserDefaults::damagedFilesNeverReplaceEachOther()
{
    for (const char *bytes : {"one", "two", "three"}) {
        write(bytes);
        QVERIFY(!UserDefaults(m_directory->path()).notice().isEmpty());
    }
    QCOMPARE(content(u"defaults.json.damaged"_s), QByteArray("one"));
    QCOMPARE(content(u"defaults.json.damaged-2"_s), QByteArray("two"));
    QCOMPARE(content(u"defaults.json.damaged-3"_s), QByteArray("three"));

    UserDefaults defaults(m_directory->path());
    QVERIFY(defaults.setBoolean(u"a"_s, true));
    QSignalSpy told(&defaults, &UserDefaults::noticeAvailable);
    write("broken while we run");
    QVERIFY(defaults.setBoolean(u"b"_s, true));
    QCOMPARE(told.size(), 1);
    QCOMPARE(content(u"defaults.json.damaged-4"_s), QByteArray("broken while we run"));
    QCOMPARE(UserDefaults(m_directory->path()).keys(), (QStringList{u"a"_s, u"b"_s}));
}

void TestUserDefaults::anUnreadableFileIsNeverWrittenOver()
{
    const QByteArray good = R"({"SavedServers": {"data":"W10="}})";
    write(good);
    QVERIFY(QFile::setPermissions(m_directory->path(), QFile::Permissions(0x7777)));
    QCOMPARE(::chmod(QFile::encodeName(path()).constData(), 0), 0);
    {
        const WithoutRoot somebodyElse;
        UserDefaults defaults(m_directory->path());
        QSignalSpy told(&defaults, &UserDefaults::noticeAvailable);
        QVERIFY(defaults.notice().contains(u"cannot be read"_s));
        QVERIFY(!defaults.setBoolean(u"a"_s, true));
        QCOMPARE(defaults.boolean(u"a"_s), true);
        QVERIFY(!defaults.setData(u"SavedServers"_s, "mine"));
        QCOMPARE(told.size(), 0); // it was said once
        // Once it can be read it is still not replaced: what was set was decided without knowing it.
        chmodAsOwner(path(), 0644);
        QVERIFY(!defaults.setData(u"SavedServers"_s, "mine"));
    }
    QCOMPARE(content(), good);
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files), QStringList{u"defaults.json"_s});
}

void TestUserDefaults::whatIsNoFileIsNotTouched()
{
    QVERIFY(QDir(m_directory->path()).mkpath(u"defaults.json/inside"_s));
    {
        UserDefaults defaults(m_directory->path());
        QVERIFY(!defaults.notice().isEmpty());
        QVERIFY(!defaults.setBoolean(u"a"_s, true));
        QVERIFY(QFileInfo::exists(m_directory->filePath(u"defaults.json/inside"_s)));
    }
    QVERIFY(QDir(path()).removeRecursively());
    QCOMPARE(::mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    UserDefaults defaults(m_directory->path()); // must not wait for a writer
    QVERIFY(!defaults.notice().isEmpty());
    QVERIFY(!defaults.setBoolean(u"a"_s, true));
}

void TestUserDefaults::aFullDiskCostsNothing()
{
    UserDefaults defaults(m_directory->path());
    QVERIFY(defaults.setText(u"a"_s, u"one"_s));
    const QByteArray before = content();
    QSignalSpy told(&defaults, &UserDefaults::noticeAvailable);
    {
        const FileSizeLimit limit(512);
        QVERIFY(!defaults.setData(u"large"_s, QByteArray(4096, 'x')));
        QVERIFY(!defaults.setText(u"a"_s, u"two"_s));
    }
    QCOMPARE(told.size(), 1);
    QVERIFY(defaults.notice().contains(u"cannot be saved"_s));
    QCOMPARE(content(), before);
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"defaults.json"_s});
    QCOMPARE(defaults.text(u"a"_s), u"two"_s);
    QVERIFY(defaults.setText(u"a"_s, u"two"_s)); // the next change writes what is waiting, though it changes nothing
    const UserDefaults after(m_directory->path());
    QCOMPARE(after.text(u"a"_s), u"two"_s);
    QCOMPARE(after.data(u"large"_s), QByteArray(4096, 'x'));
}

void TestUserDefaults::aClosedDirectoryCostsNothing()
{
    UserDefaults defaults(m_directory->path());
    QVERIFY(defaults.setText(u"a"_s, u"one"_s));
    QVERIFY(defaults.setText(u"b"_s, u"one"_s));
    const QByteArray before = content();
    QCOMPARE(::chmod(QFile::encodeName(path()).constData(), 0644), 0);
    QCOMPARE(::chmod(QFile::encodeName(m_directory->path()).constData(), 0555), 0);
    {
        const WithoutRoot somebodyElse;
        QVERIFY(!defaults.setText(u"a"_s, u"two"_s));
        QVERIFY(!defaults.remove(u"b"_s));
        QVERIFY(!defaults.notice().isEmpty());
    }
    QCOMPARE(content(), before);
    QCOMPARE(::chmod(QFile::encodeName(m_directory->path()).constData(), 0700), 0);
    QVERIFY(defaults.remove(u"b"_s));
    const UserDefaults after(m_directory->path());
    QCOMPARE(after.text(u"a"_s), u"two"_s);
    QVERIFY(!after.contains(u"b"_s));
    QCOMPARE(modeOf(path()), mode_t{0600});
}

void TestUserDefaults::aLinkedFileStaysALink()
{
    QVERIFY(QDir(m_directory->path()).mkpath(u"dotfiles"_s));
    QVERIFY(QFile::link(u"dotfiles/mine.json"_s, path()));
    {
        UserDefaults defaults(m_directory->path()); // the link points nowhere yet
        QVERIFY(defaults.setInteger(u"a"_s, 1));
        QVERIFY(defaults.setInteger(u"a"_s, 2));
    }
    QVERIFY(QFileInfo(path()).isSymLink());
    QVERIFY(content(u"dotfiles/mine.json"_s).contains("\"a\": 2"));
    write("broken");
    UserDefaults defaults(m_directory->path());
    QCOMPARE(content(u"dotfiles/mine.json.damaged"_s), QByteArray("broken"));
    QVERIFY(defaults.setInteger(u"a"_s, 3));
    QVERIFY(QFileInfo(path()).isSymLink());
    QVERIFY(content(u"dotfiles/mine.json"_s).contains("\"a\": 3"));
}

void TestUserDefaults::aVanishedFileIsWrittenAgain()
{
    UserDefaults defaults(m_directory->path());
    QVERIFY(defaults.setInteger(u"a"_s, 1));
    QVERIFY(QFile::remove(path()));
    QVERIFY(defaults.setInteger(u"b"_s, 2));
    QCOMPARE(UserDefaults(m_directory->path()).keys(), (QStringList{u"a"_s, u"b"_s}));
}

void TestUserDefaults::damagedValuesAreKept()
{
    UserDefaults defaults(m_directory->path());
    QVERIFY(defaults.keepDamagedCopy(u"absent"_s));
    for (const char *value : {"one", "two", "one"}) {
        QVERIFY(defaults.setData(u"list"_s, value));
        QVERIFY(defaults.keepDamagedCopy(u"list"_s));
    }
    QVERIFY(defaults.setText(u"list"_s, u"a text"_s));
    QVERIFY(defaults.keepDamagedCopy(u"list"_s));
    QCOMPARE(defaults.keys(), (QStringList{u"list"_s, u"list.damaged"_s, u"list.damaged-2"_s, u"list.damaged-3"_s}));
    QCOMPARE(defaults.data(u"list.damaged"_s), QByteArray("one"));
    QCOMPARE(defaults.data(u"list.damaged-2"_s), QByteArray("two"));
    QCOMPARE(defaults.text(u"list.damaged-3"_s), u"a text"_s);
}

QTEST_GUILESS_MAIN(TestUserDefaults)
#include "test_user_defaults.moc"
