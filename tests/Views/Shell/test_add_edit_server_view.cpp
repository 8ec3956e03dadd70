#include "Views/AccessibilityWalk.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/FormRow.h"
#include "Views/Components/InlineNotice.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/FakeTransport.h"
#include "Views/Shell/AddEditServerView.h"
#include "Views/Shell/LabelEditor.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Theme/Theme.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QCompleter>
#include <QCoroTask>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

using Activity = AddEditServerViewModel::Activity;

namespace
{

// All that assistive programs can read of the tree below an object.
void collectTexts(QAccessibleInterface *accessible, QStringList &texts)
{
    if (!accessible) {
        return;
    }
    for (const auto kind : {QAccessible::Name, QAccessible::Description, QAccessible::Value, QAccessible::Help,
                            QAccessible::Accelerator, QAccessible::DebugDescription}) {
        texts.append(accessible->text(kind));
    }
    if (QAccessibleTextInterface *text = accessible->textInterface()) {
        int begin = 0;
        int end = 0;
        texts.append(text->text(0, text->characterCount()));
        texts.append(text->textAtOffset(0, QAccessible::LineBoundary, &begin, &end));
        texts.append(text->textAfterOffset(0, QAccessible::CharBoundary, &begin, &end));
    }
    for (int i = 0; i < accessible->childCount(); ++i) {
        collectTexts(accessible->child(i), texts);
    }
}

} // namespace

class TestAddEditServerView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void addsFromTheKeyboard();
    void opensFromTheList();
    void showsTheRecord();
    void followsTheMethod();
    void tellsWhatIsWrong();
    void labels();
    void savedSecrets();
    void testsTheConnection();
    void asksBeforeItForgets();
    void locksTheFormWhileSudoIsChecked();
    void closedInTheMiddle();
    void choosesAKey();
    void everythingHasAName();
    void secretsAreShownToNobody();

private:
    AddEditServerView &open(const std::optional<Server> &server = std::nullopt)
    {
        if (server) {
            m_list->editServer(server->id);
        } else {
            m_list->addServer();
        }
        return active();
    }

    // The sheet, once it has the keyboard.
    AddEditServerView &active()
    {
        AddEditServerView *sheet = m_list->editor();
        sheet->activateWindow();
        [&] { QTRY_COMPARE(QApplication::activeWindow(), sheet); }();
        return *sheet;
    }

    static QLineEdit &field(const QWidget &sheet, const QString &name)
    {
        for (QLineEdit *field : sheet.findChildren<QLineEdit *>()) {
            if (field->accessibleName() == name) {
                return *field;
            }
        }
        qFatal("no field %s", qPrintable(name));
    }

    static QPushButton &button(const QWidget &sheet, const QString &name)
    {
        for (QPushButton *button : sheet.findChildren<QPushButton *>()) {
            if (button->text() == name || button->accessibleName() == name) {
                return *button;
            }
        }
        qFatal("no button %s", qPrintable(name));
    }

    static AlertDialog *question(const QWidget &sheet)
    {
        for (AlertDialog *dialog : sheet.findChildren<AlertDialog *>()) {
            if (dialog->isVisible()) {
                return dialog;
            }
        }
        return nullptr;
    }

    static InlineNotice &notice(const QWidget &sheet) { return *sheet.findChild<InlineNotice *>(); }

    Server addServer(AuthMethod method)
    {
        Server server = m_transport->add(u"web"_s, method);
        server.labels = {{u"env"_s, u"prod"_s}, {u"role"_s, u"web"_s}};
        m_transport->store.updateServer(server);
        return server;
    }

    Theme m_theme;
    std::unique_ptr<FakeTransport> m_transport;
    std::unique_ptr<QWidget> m_window;
    ServerListView *m_list = nullptr;
};

void TestAddEditServerView::initTestCase()
{
    m_theme.install();
}

void TestAddEditServerView::init()
{
    m_transport = std::make_unique<FakeTransport>();
    m_window = std::make_unique<QWidget>();
    m_window->resize(900, 800);
    m_list = new ServerListView(m_theme, {m_transport->store, m_transport->manager}, m_window.get());
    m_list->resize(240, 800);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestAddEditServerView::cleanup()
{
    m_window.reset();
    m_transport.reset();
}

void TestAddEditServerView::addsFromTheKeyboard()
{
    QTest::mouseClick(&button(*m_window, u"Add server"_s), Qt::LeftButton);
    AddEditServerView &sheet = active();
    QCOMPARE(sheet.windowTitle(), u"Add Server"_s);
    QCOMPARE(sheet.windowModality(), Qt::WindowModal);
    const auto type = [](const QString &text) {
        QTest::keyClicks(QApplication::focusWidget(), text);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    };
    QCOMPARE(QApplication::focusWidget(), &field(sheet, u"Name"_s));
    type(u"web-01"_s);
    type(u"10.0.4.11"_s);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_A, Qt::ControlModifier);
    type(u"2222"_s);
    type(u"deploy"_s);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); // past the method
    QCOMPARE(QApplication::focusWidget(), &field(sheet, u"Password"_s));
    QTest::keyClicks(QApplication::focusWidget(), u"secret"_s);
    QPointer<AddEditServerView> guard(&sheet);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTRY_VERIFY(!guard);
    const Server server = m_transport->store.servers().constFirst();
    QCOMPARE(server.name, u"web-01"_s);
    QCOMPARE(server.host, u"10.0.4.11"_s);
    QCOMPARE(server.port, 2222);
    QCOMPARE(server.username, u"deploy"_s);
    QCOMPARE(QCoro::waitFor(m_transport->keychain.getPassword(u"deploy@10.0.4.11:2222"_s)), u"secret"_s);
}

void TestAddEditServerView::opensFromTheList()
{
    const Server server = addServer(AuthMethod::Password);
    m_list->list().setFocus();
    m_list->list().setCurrentIndex(m_list->model().index(0));
    QTest::keyClick(&m_list->list(), Qt::Key_F2);
    QVERIFY(m_list->editor() && m_list->editor()->isVisible());
    QCOMPARE(m_list->editor()->windowTitle(), u"Edit Server"_s);
    const QPointer<AddEditServerView> first(m_list->editor());
    m_list->addServer(); // one at a time
    QCOMPARE(m_list->editor(), first);
    QTest::keyClick(first, Qt::Key_Escape); // nothing was typed, nothing is asked
    QTRY_VERIFY(!first);

    m_transport->store.updateServerConnection(server, true);
    m_list->editServer(server.id);
    QVERIFY(!m_list->editor());
}

void TestAddEditServerView::showsTheRecord()
{
    Server server = addServer(AuthMethod::PublicKey);
    server.useSudo = true;
    server.containerRuntime = ContainerRuntime::Podman;
    m_transport->store.updateServer(server);
    AddEditServerView &sheet = open(server);
    QCOMPARE(field(sheet, u"Name"_s).text(), u"web"_s);
    QCOMPARE(field(sheet, u"Host"_s).text(), u"server.example"_s);
    QCOMPARE(field(sheet, u"Port"_s).text(), u"22"_s);
    QCOMPARE(field(sheet, u"Username"_s).text(), u"ops"_s);
    QCOMPARE(field(sheet, u"Private Key"_s).text(), u"/key"_s);
    QList<int> choices;
    for (const auto *control : sheet.findChildren<SegmentedControl *>()) {
        choices.append(control->current());
    }
    QCOMPARE(choices, (QList<int>{1, 1}));
    QList<bool> checks;
    for (const auto *box : sheet.findChildren<QCheckBox *>()) {
        checks.append(box->isChecked());
    }
    QCOMPARE(checks, (QList<bool>{true, false}));
    QCOMPARE(sheet.findChild<LabelEditor *>()->chips().size(), 2);
}

void TestAddEditServerView::followsTheMethod()
{
    qputenv("SSH_AUTH_SOCK", "/nowhere/agent");
    AddEditServerView &sheet = open();
    auto *method = sheet.findChildren<SegmentedControl *>().constFirst();
    QCOMPARE(method->options(), (QStringList{u"Password"_s, u"Private Key"_s, u"SSH Agent"_s}));
    QVERIFY(field(sheet, u"Password"_s).isVisible());
    QVERIFY(!field(sheet, u"Private Key"_s).isVisible());
    method->setCurrent(1);
    QVERIFY(!field(sheet, u"Password"_s).isVisible());
    QVERIFY(field(sheet, u"Private Key"_s).isVisible() && field(sheet, u"Passphrase"_s).isVisible());
    method->setCurrent(2);
    QVERIFY(!field(sheet, u"Passphrase"_s).isVisible());
    bool tells = false;
    for (const QWidget *widget : sheet.findChildren<QWidget *>()) {
        tells = tells || (widget->isVisible() && widget->accessibleName() == "SSH Agent not detected"_L1);
    }
    QVERIFY(tells);
}

void TestAddEditServerView::tellsWhatIsWrong()
{
    AddEditServerView &sheet = open();
    QTest::keyClicks(&field(sheet, u"Name"_s), u"web"_s);
    QTest::keyClicks(&field(sheet, u"Host"_s), u"under_score"_s);
    field(sheet, u"Port"_s).setText(u"0"_s);
    QTest::keyClick(&field(sheet, u"Host"_s), Qt::Key_Return);
    AlertDialog *alert = question(sheet);
    QVERIFY(alert);
    QCOMPARE(alert->windowTitle(), u"Validation Errors"_s);
    QCOMPARE(alert->accessibleDescription(),
             u"Invalid host address format\nUsername is required\nPort must be between 1 and 65535"_s);
    QTest::keyClick(alert, Qt::Key_Return);
    QVERIFY(!question(sheet));
    QVERIFY(field(sheet, u"Host"_s).hasFocus() || sheet.focusWidget() == &field(sheet, u"Host"_s));

    const auto errorOf = [&](const QString &name) {
        return static_cast<FormRow *>(field(sheet, name).parentWidget())->error();
    };
    QCOMPARE(errorOf(u"Host"_s), u"Invalid host address format"_s);
    QCOMPARE(errorOf(u"Name"_s), QString());
    field(sheet, u"Host"_s).setText(u"host"_s);
    QCOMPARE(errorOf(u"Host"_s), QString()); // until it is tried again
    QCOMPARE(errorOf(u"Username"_s), u"Username is required"_s);
    QVERIFY(m_transport->store.servers().isEmpty());
}

void TestAddEditServerView::labels()
{
    AddEditServerView &sheet = open(addServer(AuthMethod::Password));
    auto &labels = *sheet.findChild<LabelEditor *>();
    const auto texts = [&] {
        QStringList found;
        for (const QAbstractButton *chip : labels.chips()) {
            found.append(chip->text());
        }
        return found;
    };
    QCOMPARE(texts(), (QStringList{u"env:prod"_s, u"role:web"_s}));
    // Only the cross removes, not a click on the words.
    QAbstractButton *chip = labels.chips().constFirst();
    QTest::mouseClick(chip, Qt::LeftButton, {}, QPoint(10, chip->height() / 2));
    QCOMPARE(texts().size(), 2);
    QTest::mouseClick(chip, Qt::LeftButton, {}, QPoint(chip->width() - 8, chip->height() / 2));
    QCOMPARE(texts(), QStringList{u"role:web"_s});

    labels.startAdding();
    QCOMPARE(labels.keyField().completer()->completionCount(), 6);
    QTest::keyClicks(&labels.keyField(), u"role"_s);
    QTest::keyClick(&labels.keyField(), Qt::Key_Return); // on to the value
    QVERIFY(labels.valueField().hasFocus());
    QTest::keyClicks(&labels.valueField(), u"db"_s);
    QTest::keyClick(&labels.valueField(), Qt::Key_Return); // adds, and saves nothing
    QCOMPARE(texts(), QStringList{u"role:db"_s});
    QVERIFY(sheet.isVisible() && labels.keyField().text().isEmpty());

    labels.chips().constFirst()->setFocus();
    QTest::keyClick(labels.chips().constFirst(), Qt::Key_Delete);
    QVERIFY(texts().isEmpty());

    // Half a label is not dropped silently.
    QTest::keyClicks(&labels.keyField(), u"env"_s);
    QTest::keyClick(&field(sheet, u"Name"_s), Qt::Key_Return);
    auto *alert = sheet.findChild<AlertDialog *>();
    QVERIFY(alert);
    QCOMPARE(alert->accessibleDescription(), u"The new label has no value"_s);
    alert->buttons().constFirst()->click();
    QTRY_VERIFY(labels.valueField().hasFocus());
    QVERIFY(m_list->editor());
    labels.keyField().clear();
    QTest::keyClick(&field(sheet, u"Name"_s), Qt::Key_Return);
    QTRY_VERIFY(!m_list->editor());
    QVERIFY(m_transport->store.servers().constFirst().labels.isEmpty());
}

void TestAddEditServerView::savedSecrets()
{
    const Server server = addServer(AuthMethod::Password);
    QVERIFY(QCoro::waitFor(m_transport->keychain.savePassword(server, u"old"_s)));
    AddEditServerView &sheet = open(server);
    QLineEdit &password = field(sheet, u"Password"_s);
    QPushButton &key = button(sheet, u"Save password to Keychain"_s);
    QTRY_COMPARE(password.placeholderText(), u"Using saved password"_s);
    QVERIFY(password.text().isEmpty() && !key.isEnabled());
    QTest::keyClicks(&password, u"new"_s);
    key.click();
    QTRY_COMPARE(notice(sheet).text(), u"Password saved to Keychain"_s);
    QVERIFY(notice(sheet).isVisible());
    QVERIFY(password.text().isEmpty());
    QCOMPARE(QCoro::waitFor(m_transport->keychain.getPassword(server)), u"new"_s);
    field(sheet, u"Username"_s).setText(u"other"_s);
    QCOMPARE(password.placeholderText(), u"Enter password"_s);
}

void TestAddEditServerView::testsTheConnection()
{
    AddEditServerView &sheet = open(addServer(AuthMethod::Password));
    m_transport->setLogin(false, "ops@server.example: Permission denied (password).");
    QTest::keyClicks(&field(sheet, u"Password"_s), u"word"_s);
    button(sheet, u"Test Connection"_s).click();
    QVERIFY(!button(sheet, u"Testing..."_s).isEnabled());
    QTRY_VERIFY(notice(sheet).isVisible());
    QCOMPARE(notice(sheet).text(), u"Failed to connect. Please check your password and try again."_s);
    QCOMPARE(notice(sheet).tone(), ToneName::Red);
    m_transport->setLogin(true);
    button(sheet, u"Test Connection"_s).click();
    QTRY_COMPARE(notice(sheet).text(), u"Connection successful."_s);
    QCOMPARE(notice(sheet).tone(), ToneName::Green);
    QVERIFY(!QCoro::waitFor(m_transport->keychain.getPassword(m_transport->store.servers().constFirst())));
}

void TestAddEditServerView::asksBeforeItForgets()
{
    AddEditServerView &sheet = open();
    const QPointer<AddEditServerView> guard(&sheet);
    QTest::keyClicks(&field(sheet, u"Password"_s), u"word"_s);
    QTest::keyClick(&sheet, Qt::Key_Escape);
    QVERIFY(question(sheet));
    QTest::keyClick(question(sheet), Qt::Key_Escape); // is no answer to forget
    QVERIFY(guard && sheet.isVisible());
    QCOMPARE(field(sheet, u"Password"_s).text(), u"word"_s);
    button(sheet, u"Cancel"_s).click();
    question(sheet)->buttons().at(1)->click();
    QVERIFY(!sheet.isVisible());
    QVERIFY(field(sheet, u"Password"_s).text().isEmpty());
    QVERIFY(sheet.model().password().isEmpty());
    QTRY_VERIFY(!guard);
    QVERIFY(m_transport->store.servers().isEmpty());
}

void TestAddEditServerView::locksTheFormWhileSudoIsChecked()
{
    m_transport->setReply("echo 'sudo: a password is required'; exit 1");
    m_transport->holdLogins();
    AddEditServerView &sheet = open(addServer(AuthMethod::Password));
    field(sheet, u"Password"_s).setFocus();
    QTest::keyClicks(&field(sheet, u"Password"_s), u"word"_s);
    sheet.findChildren<QCheckBox *>().constFirst()->setChecked(true);
    QTest::keyClick(&field(sheet, u"Password"_s), Qt::Key_Return);
    QTRY_COMPARE(m_transport->logins(), 1);
    QVERIFY(!field(sheet, u"Host"_s).isEnabled());
    QVERIFY(!button(sheet, u"Checking sudo..."_s).isEnabled());
    QVERIFY(button(sheet, u"Cancel"_s).isEnabled());
    m_transport->letLoginsEnd();
    QTRY_VERIFY(field(sheet, u"Host"_s).isEnabled());
    QCOMPARE(notice(sheet).text(),
             u"Passwordless sudo is not configured on this server. Please configure it using: sudo visudo"_s);
    QVERIFY(sheet.isVisible());
    QCOMPARE(QApplication::focusWidget(), &field(sheet, u"Password"_s));
}

void TestAddEditServerView::closedInTheMiddle()
{
    m_transport->holdLogins();
    AddEditServerView &sheet = open(addServer(AuthMethod::PublicKey));
    const QPointer<AddEditServerView> guard(&sheet);
    sheet.findChildren<SegmentedControl *>().constFirst()->setCurrent(0);
    sheet.model().testConnection();
    QTRY_COMPARE(m_transport->logins(), 0); // no password, nothing to try
    QTRY_VERIFY(notice(sheet).isVisible());
    QTest::keyClicks(&field(sheet, u"Password"_s), u"word"_s);
    sheet.model().testConnection();
    QTRY_COMPARE(m_transport->logins(), 1);
    button(sheet, u"Cancel"_s).click();
    question(sheet)->buttons().at(1)->click();
    QTRY_VERIFY(!guard);
    QCOMPARE(m_transport->children.count(), 0);
    m_transport->letLoginsEnd();
}

void TestAddEditServerView::choosesAKey()
{
    QTemporaryDir home;
    QDir(home.path()).mkpath(u".ssh"_s);
    QFile key(home.filePath(u".ssh/id_ed25519"_s));
    QVERIFY(key.open(QIODevice::WriteOnly));
    const QByteArray before = qgetenv("HOME");
    qputenv("HOME", home.path().toUtf8());
    AddEditServerView &sheet = open();
    sheet.findChildren<SegmentedControl *>().constFirst()->setCurrent(1);
    button(sheet, u"Choose private key"_s).click();
    auto *chooser = sheet.findChild<QFileDialog *>();
    qputenv("HOME", before);
    QVERIFY(chooser && chooser->isVisible());
    QCOMPARE(chooser->windowModality(), Qt::WindowModal);
    QCOMPARE(chooser->directory().canonicalPath(), QDir(home.filePath(u".ssh"_s)).canonicalPath());
    QVERIFY(chooser->filter() & QDir::Hidden);
    QCOMPARE(chooser->fileMode(), QFileDialog::ExistingFile);
    Q_EMIT chooser->fileSelected(key.fileName());
    QCOMPARE(field(sheet, u"Private Key"_s).text(), key.fileName());
    chooser->close();
}

void TestAddEditServerView::everythingHasAName()
{
    AddEditServerView &sheet = open(addServer(AuthMethod::Password));
    sheet.findChild<LabelEditor *>()->startAdding();
    for (int choice = 0; choice < 3; ++choice) {
        sheet.findChildren<SegmentedControl *>().constFirst()->setCurrent(choice);
        QVERIFY(AccessibilityWalk::controls(sheet) > 15);
        QCOMPARE(AccessibilityWalk::faults(sheet), QString());
    }
}

void TestAddEditServerView::secretsAreShownToNobody()
{
    const QString secret = u"Zq7-typed-secret"_s;
    AddEditServerView &sheet = open();
    auto *method = sheet.findChildren<SegmentedControl *>().constFirst();
    QStringList told;
    const auto look = [&] {
        collectTexts(QAccessible::queryAccessibleInterface(&sheet), told);
        for (const QWidget *widget : sheet.findChildren<QWidget *>()) {
            told << widget->toolTip() << widget->statusTip() << widget->whatsThis() << widget->windowTitle()
                 << widget->objectName();
        }
        told << sheet.windowTitle() << m_window->windowTitle();
    };
    for (int choice = 0; choice < 2; ++choice) {
        method->setCurrent(choice);
        QLineEdit &field = this->field(sheet, choice == 0 ? u"Password"_s : u"Passphrase"_s);
        field.setFocus();
        QTest::keyClicks(&field, secret);
        QCOMPARE(field.text(), secret);
        look();
        field.selectAll();
        field.copy();
        look();
    }
    QVERIFY(told.join(u'|').contains(u"SSH username"_s)); // the walk does see fields
    for (const QString &text : std::as_const(told)) {
        QVERIFY2(!text.contains(secret), qPrintable(text));
    }
}

QTEST_MAIN(TestAddEditServerView)
#include "test_add_edit_server_view.moc"
