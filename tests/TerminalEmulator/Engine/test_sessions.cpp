#include "Scene.h"

#include <QDir>
#include <QFile>

// Recordings of real programs at 80x24 (sessions/record.py), each with the grid another terminal shows for it as
// well; and that it makes no difference how the bytes are cut.
class TestSessions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhatWasExpected_data();
    void showsWhatWasExpected();

    void everySplitGivesTheSame_data() { showsWhatWasExpected_data(); }

    void everySplitGivesTheSame();

private:
    static QByteArray read(const QString &name)
    {
        QFile file(QStringLiteral(TARNWELL_SESSIONS "/") + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Everything there is: text, styles, cursor, history size and answers.
    static QByteArray state(Scene &scene)
    {
        QByteArray out = scene.screen() + scene.cursor() + scene.replies();
        out += QByteArray::number(scene.terminal.historySize());
        for (int row = 0; row < scene.terminal.rows(); ++row) {
            for (int column = 0; column < scene.terminal.columns(); ++column) {
                const vt::Style &style = scene.terminal.style(scene.terminal.cell(row, column).style);
                out += static_cast<char>(style.flags);
                out += static_cast<char>(style.foreground.red);
                out += static_cast<char>(style.background.red);
            }
        }
        return out;
    }
};

void TestSessions::showsWhatWasExpected_data()
{
    QTest::addColumn<QString>("name");
    const QStringList names = QDir(QStringLiteral(TARNWELL_SESSIONS)).entryList({QStringLiteral("*.raw")});
    QVERIFY(names.size() >= 9);
    for (const QString &name : names) {
        QTest::newRow(name.toUtf8().constData()) << name.chopped(4);
    }
}

void TestSessions::showsWhatWasExpected()
{
    QFETCH(QString, name);
    const QByteArray raw = read(name + QStringLiteral(".raw"));
    QVERIFY(!raw.isEmpty());
    Scene scene(80, 24);
    scene.feed(raw.toStdString());
    const QList<QByteArray> expected = read(name + QStringLiteral(".txt")).split('\n');
    for (int row = 1; row <= 24; ++row) {
        QCOMPARE(scene.row(row), expected.value(row - 1));
    }
}

void TestSessions::everySplitGivesTheSame()
{
    QFETCH(QString, name);
    const std::string raw = read(name + QStringLiteral(".raw")).toStdString();
    Scene whole(80, 24);
    whole.feed(raw);
    const QByteArray expected = state(whole);
    for (const size_t block : {1, 3, 16, 61}) {
        Scene scene(80, 24);
        for (size_t at = 0; at < raw.size(); at += block) {
            scene.feed(std::string_view(raw).substr(at, block));
        }
        QVERIFY2(state(scene) == expected, qPrintable(QString::number(block)));
    }
    // In two parts, at each place of the first kilobytes: the rest is reached by the blocks above.
    for (size_t at = 1; at < std::min<size_t>(raw.size(), 160); ++at) {
        Scene scene(80, 24);
        scene.feed(raw.substr(0, at)).feed(raw.substr(at));
        QVERIFY2(state(scene) == expected, qPrintable(QString::number(at)));
    }
}

QTEST_GUILESS_MAIN(TestSessions)
#include "test_sessions.moc"
