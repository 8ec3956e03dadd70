#include "Helpers/Tasks.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/Labels.h"
#include "Views/Shell/HostKeyDialog.h"
#include "Views/Theme/Theme.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

class TestHostKeyDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_answer.reset();
        whenDone(m_prompt.askToRetry({u"SSH Host Key Verification Failed"_s, u"Server: <b>web</b>"_s,
                                      u"ssh-keygen -R 'web'"_s, u"After running this command"_s}),
                 this, [this](bool retries) { m_answer = retries; });
    }

    void showsTheConflictAsItStands();
    void retries();
    void escapeCancels();
    void copiesAndAsksAgain_data();
    void copiesAndAsksAgain();
    void isAnsweredWhenTheWindowGoes_data();
    void isAnsweredWhenTheWindowGoes();

private:
    AlertDialog *dialog(const QString &title) const
    {
        for (AlertDialog *dialog : m_window->findChildren<AlertDialog *>()) {
            if (dialog->windowTitle() == title && dialog->isVisible()) {
                return dialog;
            }
        }
        return nullptr;
    }

    AlertDialog *conflict() const { return dialog(u"SSH Host Key Verification Failed"_s); }

    AlertDialog *copied() const { return dialog(u"Command Copied"_s); }

    Theme m_theme;
    HostKeyDialog m_prompt{m_theme};
    std::unique_ptr<QWidget> m_window;
    std::optional<bool> m_answer;
};

void TestHostKeyDialog::showsTheConflictAsItStands()
{
    QVERIFY(conflict());
    QCOMPARE(conflict()->windowModality(), Qt::WindowModal);
    QStringList buttons;
    for (const QPushButton *button : conflict()->buttons()) {
        buttons.append(button->text());
    }
    QCOMPARE(buttons, (QStringList{u"Copy Command"_s, u"Retry Connection"_s, u"Cancel"_s}));
    QVERIFY(conflict()->buttons().constLast()->isDefault());
    QCOMPARE(conflict()->focusWidget(), conflict()->buttons().constLast());
    const auto *command = conflict()->findChild<QLineEdit *>(u"command"_s);
    QCOMPARE(command->text(), u"ssh-keygen -R 'web'"_s);
    QVERIFY(command->isReadOnly());
    for (const QLabel *label : conflict()->findChildren<QLabel *>()) {
        QCOMPARE(label->textFormat(), Qt::PlainText);
    }
    QVERIFY(!m_answer);
}

void TestHostKeyDialog::retries()
{
    conflict()->buttons().at(1)->click();
    QCOMPARE(m_answer, true);
    QVERIFY(!conflict());
}

void TestHostKeyDialog::escapeCancels()
{
    QTest::keyClick(conflict(), Qt::Key_Escape);
    QCOMPARE(m_answer, false);
}

void TestHostKeyDialog::copiesAndAsksAgain_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("answer");
    QTest::newRow("Retry Connection") << 0 << true;
    QTest::newRow("Cancel") << 1 << false;
}

void TestHostKeyDialog::copiesAndAsksAgain()
{
    QFETCH(int, button);
    QApplication::clipboard()->setText(u"before"_s);
    conflict()->buttons().at(0)->click();
    QCOMPARE(QApplication::clipboard()->text(), u"ssh-keygen -R 'web'"_s);
    QVERIFY(!m_answer);
    QVERIFY(!conflict());
    QVERIFY(copied());
    copied()->buttons().at(button)->click();
    QTEST(m_answer.value(), "answer");
}

void TestHostKeyDialog::isAnsweredWhenTheWindowGoes_data()
{
    QTest::addColumn<bool>("isCopied");
    QTest::newRow("first question") << false;
    QTest::newRow("second question") << true;
}

void TestHostKeyDialog::isAnsweredWhenTheWindowGoes()
{
    QFETCH(bool, isCopied);
    if (isCopied) {
        conflict()->buttons().at(0)->click();
    }
    m_window.reset();
    QCOMPARE(m_answer, false);
}

QTEST_MAIN(TestHostKeyDialog)
#include "test_host_key_dialog.moc"
