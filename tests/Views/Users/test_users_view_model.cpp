#include "Views/SectionFixture.h"

#include "Views/Users/UsersViewModel.h"

#include <QTest>

using namespace Qt::StringLiterals;

using Display = TableSectionViewModel::Display;

namespace
{

const QByteArray kFile = "eve:x:1001:1001:Eve O'Neil, Ops,,:/home/eve:/bin/bash\n"
                         "ada:x:1000:1000:Ada:/home/ada:/bin/zsh\n"
                         "nobody:x:65534:65534:nobody:/nonexistent:/usr/sbin/nologin\n"
                         "edge:x:999:999::/:/bin/false\n"
                         "odd:x:::::\n"
                         "root:x:0:0:root:/root:/bin/bash\n";

} // namespace

class TestUsersViewModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_fixture = std::make_unique<SectionFixture>();
        m_file = ScriptedServer::said(kFile);
        m_delete = ScriptedServer::said({});
        m_fixture->scripted.setAnswer(
            [this](const QString &line) { return line.startsWith(u"cat "_s) ? m_file : m_delete; });
        m_model = std::make_unique<UsersViewModel>(m_fixture->monitored());
    }

    void cleanup()
    {
        m_model.reset();
        m_fixture.reset();
    }

    void displays();
    void rows();
    void search();
    void whoCanBeDeleted();
    void deleting();
    void aRefusedDelete();

private:
    QString shown() const
    {
        QStringList names;
        for (const UserInfo &user : m_model->filteredUsers()) {
            names.append(user.username);
        }
        return names.join(u' ');
    }

    const QStringList &lines() const { return m_fixture->scripted.lines(); }

    std::unique_ptr<SectionFixture> m_fixture;
    std::unique_ptr<UsersViewModel> m_model;
    CommandResult m_file;
    CommandResult m_delete;
};

void TestUsersViewModel::displays()
{
    QVERIFY(!m_model->autoRefreshTimer());
    QCOMPARE(m_model->message().title, u"Loading users..."_s);
    m_file = ScriptedServer::said(kFile, 1);
    m_model->updateViewVisibility(true);
    QCOMPARE(lines(), QStringList{u"cat /etc/passwd"_s});
    QCOMPARE(m_model->display(), Display::Empty); // the failure itself is not named
    QCOMPARE(m_model->message().title, u"No System Users Found"_s);
    QCOMPARE(m_model->message().text, u"No system users found in /etc/passwd"_s);
    m_model->setSearchText(u"x"_s);
    QCOMPARE(m_model->message().title, u"No Matching Users"_s);
}

void TestUsersViewModel::rows()
{
    m_model->updateViewVisibility(true);
    QCOMPARE(shown(), u"odd root edge ada eve nobody"_s);
    TableModel &table = m_model->table();
    QStringList titles;
    for (int column = 0; column < table.columnCount(); ++column) {
        titles.append(table.headerData(column, Qt::Horizontal).toString());
    }
    QCOMPARE(titles.join(u'|'), u"User|UID|GID|Full Name|Home Directory|Shell|Actions"_s);
    QCOMPARE(SectionFixture::row(table, 4), u"eve|1001|1001|Eve O'Neil, Ops,,|/home/eve|/bin/bash"_s);
    QCOMPARE(m_model->stats().last(), (Stat{u"Total"_s, u"6"_s}));
    QCOMPARE(table.index(4, 0).data(TableModel::RowIdentifierRole), u"deleteUser_eve"_s);
}

void TestUsersViewModel::search()
{
    m_model->updateViewVisibility(true);
    for (const auto &[text, kept] : {std::pair{u"OPS"_s, u"eve"_s},
                                     {u"/HOME"_s, u"ada eve"_s},
                                     {u"nologin"_s, u"nobody"_s},
                                     {u"1000"_s, u""_s}}) {
        m_model->setSearchText(text);
        QCOMPARE(shown(), kept);
    }
}

void TestUsersViewModel::whoCanBeDeleted()
{
    m_model->updateViewVisibility(true); // the connection's account is ada
    QStringList deletable;
    TableModel &table = m_model->table();
    for (int row = 0; row < table.rowCount(); ++row) {
        if (table.isOffered(row, SectionFixture::actionOf(table, u"Delete User"_s))) {
            deletable.append(table.identityAt(row));
        }
    }
    QCOMPARE(deletable.join(u' '), u"odd eve nobody"_s);
    const auto question = SectionFixture::question(table, table.rowOf(u"eve"_s), u"Delete User"_s);
    QCOMPARE(question->title, u"Delete User"_s);
    QCOMPARE(question->text, u"Are you sure you want to delete user 'eve'?\n\nThis action cannot be undone."_s);
    QCOMPARE(question->confirm, u"Delete"_s);
    m_model->deleteUser({.username = u"ada"_s, .uid = u"1000"_s});
    QCOMPARE(lines().size(), 1);
}

void TestUsersViewModel::deleting()
{
    m_model->updateViewVisibility(true);
    TableModel &table = m_model->table();
    m_fixture->scripted.hold();
    SectionFixture::run(table, table.rowOf(u"eve"_s), u"Delete User"_s);
    QVERIFY(table.isBusy(table.rowOf(u"eve"_s)));
    QCOMPARE(lines().last(), u"sudo userdel -r eve"_s);
    m_file = ScriptedServer::said("root:x:0:0:root:/root:/bin/bash\n");
    m_fixture->scripted.release();
    QCOMPARE(lines().last(), u"cat /etc/passwd"_s);
    QCOMPARE(shown(), u"root"_s);
}

void TestUsersViewModel::aRefusedDelete()
{
    m_model->updateViewVisibility(true);
    m_delete = {{}, "userdel: user eve is currently used by process 7\n", 8, {}};
    TableModel &table = m_model->table();
    SectionFixture::run(table, table.rowOf(u"eve"_s), u"Delete User"_s);
    QCOMPARE(lines().last(), u"cat /etc/passwd"_s);
    QCOMPARE(table.errorAt(table.rowOf(u"eve"_s)), u"userdel: user eve is currently used by process 7"_s);
    QVERIFY(!table.isBusy(table.rowOf(u"eve"_s)));
}

QTEST_GUILESS_MAIN(TestUsersViewModel)
#include "test_users_view_model.moc"
