#include "Views/LiveSection.h"
#include "Views/Questions.h"
#include "Views/SectionFixture.h"

#include "Views/Components/ButtonProgress.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/Table/RowActions.h"
#include "Views/Theme/Theme.h"
#include "Views/Users/AddUserModal.h"
#include "Views/Users/UsersView.h"
#include "Views/Users/UsersViewModel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QScopeGuard>
#include <QTest>

using namespace Qt::StringLiterals;

class TestUsersView : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void theForm();
    void aFailure();
    void closedInTheMiddle();
    void anAccountFromItsBeginToItsEnd_data();
    void anAccountFromItsBeginToItsEnd();

private:
    // The form that is open, by its labels.
    struct Form {
        explicit Form(const QWidget &view)
            : sheet(view.findChild<AddUserModal *>())
        {
        }

        void type(const QString &field, const QString &text) const
        {
            for (QLineEdit *edit : sheet->findChildren<QLineEdit *>()) {
                if (edit->accessibleName() == field) {
                    edit->setText(text);
                }
            }
        }

        void click(const QString &text) const
        {
            for (QAbstractButton *button : sheet->findChildren<QAbstractButton *>()) {
                if (button->text() == text) {
                    button->click();
                    return;
                }
            }
            QFAIL("no such button");
        }

        AddUserModal *sheet;
    };

    Theme m_theme;
};

void TestUsersView::theForm()
{
    SectionFixture fixture;
    fixture.scripted.setAnswer([](const QString &) { return ScriptedServer::said("SUDO_TEST_OK"); });
    UsersViewModel model(fixture.monitored());
    UsersView view(m_theme, model);
    view.setActive(true);
    view.resize(900, 600);
    view.show();
    view.addButton().click();
    Form form(view);
    QVERIFY(form.sheet && form.sheet->isVisible());
    const auto *shells = form.sheet->findChild<QComboBox *>();
    QCOMPARE(shells->currentText(), u"/bin/bash"_s);
    QVERIFY(shells->isEditable());
    form.click(u"Create User"_s); // not without a name
    QCOMPARE(fixture.scripted.lines().size(), 1);

    form.type(u"Username"_s, u"eve"_s);
    form.type(u"Password"_s, u"secret"_s);
    form.click(u"Create User"_s);
    QVERIFY(answerQuestion(view, u"OK"_s)); // they do not match
    form.type(u"Confirm"_s, u"secret"_s);
    form.click(u"Enable passwordless sudo"_s);
    form.click(u"Create User"_s);
    QVERIFY(answerQuestion(view, u"Cancel"_s));
    QCOMPARE(fixture.scripted.lines().size(), 1);
    QVERIFY(form.sheet->isVisible());
    form.click(u"Create User"_s);
    QVERIFY(answerQuestion(view, u"Create User"_s));
    QCOMPARE(fixture.scripted.lines().filter(u"useradd"_s).size(), 1);
    QTRY_VERIFY(!view.findChild<AddUserModal *>());
    QTRY_COMPARE(fixture.scripted.lines().last(), u"cat /etc/passwd"_s);
    QCOMPARE(fixture.scripted.lines().count(u"cat /etc/passwd"_s), 2);
}

void TestUsersView::aFailure()
{
    SectionFixture fixture;
    fixture.scripted.setAnswer([](const QString &line) {
        return line.contains(u"useradd"_s) ? CommandResult{{}, "useradd: user 'eve' already exists\n", 9, line}
                                           : ScriptedServer::said("SUDO_TEST_OK");
    });
    UsersViewModel model(fixture.monitored());
    UsersView view(m_theme, model);
    view.show();
    view.addButton().click();
    Form form(view);
    form.type(u"Username"_s, u"eve"_s);
    form.click(u"Create User"_s);
    const auto *alert = view.findChild<AlertDialog *>();
    QVERIFY(alert && alert->windowTitle() == u"Error Creating User"_s);
    QCOMPARE(alert->accessibleDescription(), u"useradd: user 'eve' already exists"_s);
    QVERIFY(answerQuestion(view, u"OK"_s));
    QVERIFY(form.sheet->isVisible());
    form.click(u"Cancel"_s);
    QTRY_COMPARE(fixture.scripted.lines().last(), u"cat /etc/passwd"_s);
}

void TestUsersView::closedInTheMiddle()
{
    SectionFixture fixture;
    fixture.scripted.setAnswer([](const QString &) { return ScriptedServer::said("SUDO_TEST_OK"); });
    UsersViewModel model(fixture.monitored());
    UsersView view(m_theme, model);
    view.show();
    view.addButton().click();
    Form form(view);
    form.type(u"Username"_s, u"eve"_s);
    fixture.scripted.setAnswer([](const QString &line) {
        return line.contains(u"useradd"_s) ? CommandResult{{}, "the disk is full\n", 12, line}
                                           : ScriptedServer::said("SUDO_TEST_OK");
    });
    fixture.scripted.hold();
    form.click(u"Create User"_s);
    const auto *field = form.sheet->findChild<QLineEdit *>();
    const auto *progress = form.sheet->findChild<ButtonProgress *>();
    QVERIFY(!field->isEnabled() && progress->isActive());
    form.click(u"Create User"_s);
    QCOMPARE(fixture.scripted.lines().size(), 1);
    fixture.scripted.release();
    QVERIFY(field->isEnabled() && !progress->isActive());
    QVERIFY(answerQuestion(view, u"OK"_s));

    fixture.scripted.hold();
    form.click(u"Create User"_s);
    form.click(u"Cancel"_s);
    QTRY_VERIFY(!view.findChild<AddUserModal *>());
    QVERIFY(!fixture.scripted.lines().contains(u"cat /etc/passwd"_s));
    fixture.scripted.release();
    const auto *alert = view.findChild<AlertDialog *>(); // what nobody waits for is told all the same
    QVERIFY(alert && alert->accessibleDescription() == u"User 'eve': the disk is full"_s);
    QTRY_COMPARE(fixture.scripted.lines().last(), u"cat /etc/passwd"_s);
}

void TestUsersView::anAccountFromItsBeginToItsEnd_data()
{
    QTest::addColumn<QString>("role");
    QTest::newRow("systemd") << u"systemd"_s;
    QTest::newRow("dnf") << u"dnf"_s;
}

void TestUsersView::anAccountFromItsBeginToItsEnd()
{
    QFETCH(QString, role);
    const RigHosts rig;
    RIG_NEEDS_HOST(host, rig, role);
    LiveSection live(host);
    const QString name = u"tw-screen"_s;
    const auto cleanUp =
        qScopeGuard([&] { live.run(u"sudo userdel -rf tw-screen; sudo rm -f /etc/sudoers.d/tw-screen"_s); });
    UsersViewModel model(live.monitored());
    UsersView view(m_theme, model);
    view.resize(900, 600);
    view.show();
    view.setActive(true);
    QTRY_VERIFY_WITH_TIMEOUT(model.table().rowOf(u"root"_s) >= 0, 20'000);

    view.addButton().click();
    Form form(view);
    form.type(u"Username"_s, name);
    form.type(u"Full Name"_s, u"It's \"$HOME\", é"_s);
    form.type(u"Password"_s, u"it's $(id) \"x\""_s);
    form.type(u"Confirm"_s, u"it's $(id) \"x\""_s);
    form.click(u"Enable passwordless sudo"_s);
    form.click(u"Create User"_s);
    QVERIFY(answerQuestion(view, u"Create User"_s));
    QTRY_VERIFY_WITH_TIMEOUT(model.table().rowOf(name) >= 0, 30'000);
    QVERIFY(!view.findChild<AddUserModal *>());
    QCOMPARE(live.says(u"getent passwd tw-screen | cut -d: -f5,6"_s), u"It's \"$HOME\", é:/home/tw-screen"_s);
    QVERIFY(live.says(u"sudo getent shadow tw-screen"_s).contains(u":$"_s));
    QCOMPARE(live.says(u"sudo cat /etc/sudoers.d/tw-screen"_s), u"tw-screen ALL=(ALL) NOPASSWD:ALL"_s);

    view.table().rowActions().perform(model.table().rowOf(name),
                                      SectionFixture::actionOf(model.table(), u"Delete User"_s));
    QVERIFY(answerQuestion(view, u"Delete"_s));
    QTRY_VERIFY_WITH_TIMEOUT(live.run(u"getent passwd tw-screen"_s).exitCode != 0, 20'000);
    QTRY_VERIFY_WITH_TIMEOUT(model.table().rowOf(name) < 0, 20'000);
    QVERIFY(live.run(u"ls -d /home/tw-screen"_s).exitCode != 0);
}

QTEST_MAIN(TestUsersView)
#include "test_users_view.moc"
