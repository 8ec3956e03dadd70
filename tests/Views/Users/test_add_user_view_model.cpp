#include "Helpers/Log.h"
#include "Helpers/WrittenLog.h"
#include "Views/SectionFixture.h"

#include "Views/Users/AddUserViewModel.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestAddUserViewModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_fixture = std::make_unique<SectionFixture>();
        m_fixture->scripted.setAnswer([this](const QString &line) {
            const bool fails = !m_refused.isEmpty() && line.contains(m_refused);
            return CommandResult{"SUDO_TEST_OK", fails ? m_error : QByteArray(), fails ? 1 : 0, line};
        });
        m_refused.clear();
        m_error = "no";
        m_model = std::make_unique<AddUserViewModel>(m_fixture->monitored());
        m_model->username = u"eve"_s;
    }

    void cleanup()
    {
        m_model.reset();
        m_fixture.reset();
    }

    void theFormAtFirst();
    void refusedForms_data();
    void refusedForms();
    void creates();
    void asksBeforeASudoersFile();
    void aFailedStep();
    void onceAtATime();
    void goneInTheMiddle();
    void aFailureBehindAClosedForm();
    void secrets();

private:
    const QStringList &lines() const { return m_fixture->scripted.lines(); }

    std::unique_ptr<SectionFixture> m_fixture;
    std::unique_ptr<AddUserViewModel> m_model;
    QString m_refused;
    QByteArray m_error;
};

void TestAddUserViewModel::theFormAtFirst()
{
    QVERIFY(m_model->createHomeDirectory && !m_model->addToSudoGroup && !m_model->enablePasswordlessSudo);
    QCOMPARE(m_model->selectedShell, u"/bin/bash"_s);
    QCOMPARE(AddUserViewModel::availableShells().first(5),
             (QStringList{u"/bin/bash"_s, u"/bin/sh"_s, u"/bin/zsh"_s, u"/usr/bin/fish"_s, u"/sbin/nologin"_s}));
    QCOMPARE(m_model->sudoGroupLabel(), u"Add to sudo group"_s);
    m_fixture->setSystemInfo(SystemInfo{.osVersion = u"AlmaLinux 9.4"_s});
    QCOMPARE(m_model->sudoGroupLabel(), u"Add to wheel group"_s);
}

void TestAddUserViewModel::refusedForms_data()
{
    using Change = void (*)(AddUserViewModel &);
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, Change change, const QString &message) {
        QTest::newRow(name) << change << message;
    };
    row("passwords", [](AddUserViewModel &m) { m.password = u"a"_s; }, u"Passwords do not match"_s);
    row("name", [](AddUserViewModel &m) { m.username = u"eve;id"_s; }, u"Invalid username"_s);
    row("no name", [](AddUserViewModel &m) { m.username.clear(); }, u"Invalid username"_s);
    row(
        "two entries of chpasswd", [](AddUserViewModel &m) { m.password = m.confirmPassword = u"a\nroot:b"_s; },
        u"Invalid password"_s);
    row("a field of passwd", [](AddUserViewModel &m) { m.fullName = u"a:b"_s; }, u"Invalid full name"_s);
    row("shell", [](AddUserViewModel &m) { m.selectedShell = u"bash"_s; }, u"Invalid shell"_s);
    row(
        "a file that sudo passes over",
        [](AddUserViewModel &m) {
            m.username = u"eve.o"_s;
            m.enablePasswordlessSudo = true;
        },
        u"sudo ignores files with a dot in their name, so passwordless sudo cannot be enabled for 'eve.o'"_s);
}

void TestAddUserViewModel::refusedForms()
{
    using Change = void (*)(AddUserViewModel &);
    QFETCH(Change, change);
    change(*m_model);
    m_model->createUser();
    QVERIFY(m_model->showingError());
    QTEST(m_model->errorMessage(), "message");
    QVERIFY(lines().isEmpty() && !m_model->isCreating());
    m_model->dismissError();
    QVERIFY(!m_model->showingError());
}

void TestAddUserViewModel::creates()
{
    QSignalSpy created(m_model.get(), &AddUserViewModel::created);
    m_model->confirmPassword = u"not compared"_s; // without a password
    m_model->selectedShell = u"/opt/my shell"_s;
    m_model->addToSudoGroup = true;
    m_model->createUser();
    QCOMPARE(lines().sliced(1),
             (QStringList{u"sudo useradd -m -s '/opt/my shell' eve"_s, u"sudo usermod -aG sudo eve"_s}));
    QCOMPARE(created.count(), 1);
    QVERIFY(!m_model->isCreating() && !m_model->showingError());
}

void TestAddUserViewModel::asksBeforeASudoersFile()
{
    m_model->enablePasswordlessSudo = true;
    m_model->createUser();
    QVERIFY(m_model->showingSudoersQuestion() && lines().isEmpty());
    QVERIFY(m_model->sudoersQuestion().contains(u"'eve'"_s) &&
            m_model->sudoersQuestion().contains(u"/etc/sudoers.d/eve"_s));
    m_model->answerSudoersQuestion(false);
    QVERIFY(!m_model->showingSudoersQuestion() && !m_model->isCreating() && lines().isEmpty());
    m_model->createUser();
    m_model->answerSudoersQuestion(true);
    m_model->answerSudoersQuestion(true); // once
    QCOMPARE(lines().size(), 3);
    QVERIFY(lines().last().endsWith(u"tee /etc/sudoers.d/eve"_s));
}

void TestAddUserViewModel::aFailedStep()
{
    QSignalSpy created(m_model.get(), &AddUserViewModel::created);
    m_model->password = m_model->confirmPassword = u"secret"_s;
    m_refused = u"chpasswd"_s;
    m_error = "BAD PASSWORD\n";
    m_model->createUser();
    QCOMPARE(m_model->errorMessage(), u"BAD PASSWORD"_s);
    QCOMPARE(lines().size(), 3); // the account is there; nothing is undone
    QCOMPARE(created.count(), 0);
    QCOMPARE(m_model->password, u"secret"_s); // for the next try
    m_error = " ";
    m_model->createUser();
    QCOMPARE(m_model->errorMessage(), u"Unknown error occurred"_s);

    m_fixture->setConnected(false);
    m_model->createUser();
    QCOMPARE(m_model->errorMessage(), u"Could not connect to server. Please check your connection settings."_s);
}

void TestAddUserViewModel::onceAtATime()
{
    m_fixture->scripted.hold();
    m_model->createUser();
    m_model->createUser();
    QVERIFY(m_model->isCreating());
    QCOMPARE(lines().size(), 1);
    m_fixture->scripted.release();
    QVERIFY(!m_model->isCreating());
    QCOMPARE(lines().size(), 2);
}

void TestAddUserViewModel::goneInTheMiddle()
{
    m_model->addToSudoGroup = true;
    m_fixture->scripted.hold();
    m_model->createUser();
    m_model.reset();
    m_fixture->scripted.release();
    QCOMPARE(lines().size(), 3); // what was begun is done to its end
}

void TestAddUserViewModel::aFailureBehindAClosedForm()
{
    auto *form = m_model.release();
    QSignalSpy failed(form, &AddUserViewModel::failedUnseen);
    QSignalSpy gone(form, &QObject::destroyed);
    form->password = form->confirmPassword = u"secret"_s;
    m_refused = u"chpasswd"_s;
    m_fixture->scripted.hold();
    form->createUser();
    form->leave();
    QVERIFY(form->password.isEmpty() && failed.isEmpty());
    m_fixture->scripted.release();
    QVERIFY(lines().last().contains(u"secret"_s)); // what the task holds is its own
    QCOMPARE(failed.value(0), (QVariantList{u"eve"_s, u"no"_s}));
    QTRY_COMPARE(gone.count(), 1);
}

void TestAddUserViewModel::secrets()
{
    Log::settings() = {.minimumLevel = Log::Level::Verbose, .allowedCategories = {}};
    const QString log = written([this] {
        m_model->password = m_model->confirmPassword = u"Geheim'nis"_s;
        m_model->createUser();
    });
    QVERIFY(lines().last().contains(u"Geheim'\\''nis"_s));
    QVERIFY2(!log.contains(u"Geheim"_s), qPrintable(log));
    QCOMPARE(log.contains(u"Set password for user 'eve'"_s), Log::kEnabled);
    QVERIFY(m_model->password.isEmpty() && m_model->confirmPassword.isEmpty());
}

QTEST_GUILESS_MAIN(TestAddUserViewModel)
#include "test_add_user_view_model.moc"
