#include "Views/Shell/AddEditServerView.h"

#include "Views/Components/AlertDialog.h"
#include "Views/Components/FormRow.h"
#include "Views/Components/InlineNotice.h"
#include "Views/Components/Pill.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/Shell/LabelEditor.h"
#include "Views/Theme/Icons.h"

#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QIntValidator>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

using Activity = AddEditServerViewModel::Activity;
using Field = AddEditServerViewModel::Field;

namespace
{

constexpr int kLargestPortTyped = 999'999;
constexpr int kFieldLimit = 1024;

void setTextIfOther(QLineEdit &field, const QString &text)
{
    if (field.text() != text) {
        field.setText(text);
    }
}

QString keyDirectory()
{
    const QDir home = QDir::home();
    return home.exists(u".ssh"_s) ? home.filePath(u".ssh"_s) : home.path();
}

} // namespace

AddEditServerView::AddEditServerView(const Theme &theme, const AddEditServerViewModel::Services &services,
                                     const std::optional<Server> &serverToEdit, QWidget *parent)
    : Sheet(theme, serverToEdit ? tr("Edit Server") : tr("Add Server"), parent)
    , m_theme(theme)
    , m_model(new AddEditServerViewModel(services, serverToEdit, this))
{
    addAddress();
    addAuthentication();
    addPrivateKey();
    addOptions();
    m_notice = new InlineNotice(theme, this);
    body().addWidget(m_notice);
    addButtons();
    connect(m_model, &AddEditServerViewModel::changed, this, &AddEditServerView::showState);
    connect(m_model, &AddEditServerViewModel::saved, this, &QDialog::accept);
    connect(&m_notice->button(), &QPushButton::clicked, m_model, &AddEditServerViewModel::retryKeychainAccess);
    showState();
}

FormRow *AddEditServerView::addRow(const QString &label, QWidget *field)
{
    auto *row = new FormRow(m_theme, label, field, this);
    body().addWidget(row);
    return row;
}

QLineEdit *AddEditServerView::addTextField(const QString &label, const QString &placeholder, const QString &text,
                                           void (AddEditServerViewModel::*setter)(const QString &), Field place)
{
    auto *field = new QLineEdit(text, this);
    field->setPlaceholderText(placeholder);
    field->setMaxLength(kFieldLimit);
    connect(field, &QLineEdit::textChanged, m_model, setter);
    m_rows.insert(place, addRow(label, field));
    return field;
}

void AddEditServerView::addAddress()
{
    const AddEditServerViewModel::Form &form = m_model->form();
    addTextField(tr("Name:"), tr("Server name"), form.name, &AddEditServerViewModel::setName, Field::Name)
        ->setFocus();
    addTextField(tr("Host:"), tr("IP address or hostname"), form.host, &AddEditServerViewModel::setHost, Field::Host);
    auto *port = new QLineEdit(QString::number(form.port), this);
    port->setValidator(new QIntValidator(0, kLargestPortTyped, port));
    connect(port, &QLineEdit::textChanged, m_model,
            [this](const QString &text) { m_model->setPort(text.toInt()); }); // nothing is no port either
    m_rows.insert(Field::Port, addRow(tr("Port:"), port));
    addTextField(tr("Username:"), tr("SSH username"), form.username, &AddEditServerViewModel::setUsername,
                 Field::Username);
}

QLineEdit *AddEditServerView::makeSecretField(void (AddEditServerViewModel::*setter)(const QString &))
{
    auto *field = new QLineEdit(this);
    field->setEchoMode(QLineEdit::Password);
    connect(field, &QLineEdit::textChanged, m_model, setter);
    return field;
}

QPushButton *AddEditServerView::makeKeyButton(const QString &purpose, void (AddEditServerViewModel::*save)())
{
    auto *button = new QPushButton(Icons::icon(IconName::Key, m_theme), {}, this);
    button->setAccessibleName(purpose);
    button->setToolTip(purpose);
    connect(button, &QPushButton::clicked, m_model, save);
    return button;
}

void AddEditServerView::addAuthentication()
{
    m_method = new SegmentedControl(m_theme, tr("Authentication"),
                                    {tr("Password"), tr("Private Key"), tr("SSH Agent")}, this);
    m_method->setCurrent(static_cast<int>(m_model->form().authMethod));
    connect(m_method, &SegmentedControl::currentChanged, m_model,
            [this](int choice) { m_model->setAuthMethod(static_cast<AuthMethod>(choice)); });
    addRow(tr("Authentication:"), m_method);

    m_password = makeSecretField(&AddEditServerViewModel::setPassword);
    m_savePassword = makeKeyButton(tr("Save password to Keychain"), &AddEditServerViewModel::savePasswordToKeychain);
    m_passwordRow = addRow(tr("Password:"), m_password);
    m_passwordRow->addWidget(m_savePassword);
}

void AddEditServerView::addPrivateKey()
{
    m_key = addTextField(tr("Private Key:"), tr("Path to private key"), m_model->form().privateKeyPath,
                         &AddEditServerViewModel::setPrivateKeyPath, Field::PrivateKeyPath);
    m_key->setFont(m_theme.font(TextStyle::Mono));
    auto *choose = new QPushButton(tr("Choose..."), this);
    choose->setAccessibleName(tr("Choose private key"));
    connect(choose, &QPushButton::clicked, this, &AddEditServerView::selectPrivateKeyFile);
    m_keyRow = m_rows.value(Field::PrivateKeyPath);
    m_keyRow->addWidget(choose);

    m_passphrase = makeSecretField(&AddEditServerViewModel::setPassphrase);
    m_savePassphrase =
        makeKeyButton(tr("Save passphrase to Keychain"), &AddEditServerViewModel::savePassphraseToKeychain);
    m_passphraseRow = addRow(tr("Passphrase:"), m_passphrase);
    m_passphraseRow->addWidget(m_savePassphrase);

    m_agent = new Pill(m_theme, Pill::Dot::With, this);
    m_agentRow = addRow(tr("Agent Status:"), m_agent);
    m_agentRow->setHint(tr("Uses keys loaded in SSH agent (ssh-add)"));
    m_rows.insert(Field::Agent, m_agentRow);
}

void AddEditServerView::addOptions()
{
    const AddEditServerViewModel::Form &form = m_model->form();
    m_labels = new LabelEditor(m_theme, *m_model, this);
    m_labelsRow = addRow(tr("Labels"), m_labels);

    auto *sudo = new QCheckBox(tr("Enable passwordless sudo for privileged operations"), this);
    sudo->setChecked(form.useSudo);
    connect(sudo, &QCheckBox::toggled, m_model, &AddEditServerViewModel::setUseSudo);
    addRow(tr("Use Sudo:"), sudo)->setHint(tr("Requires passwordless sudo configured on the server"));

    auto *runtime = new SegmentedControl(m_theme, tr("Containers"), {u"Docker"_s, u"Podman"_s}, this);
    runtime->setCurrent(static_cast<int>(form.containerRuntime));
    connect(runtime, &SegmentedControl::currentChanged, m_model,
            [this](int choice) { m_model->setContainerRuntime(static_cast<ContainerRuntime>(choice)); });
    addRow(tr("Containers:"), runtime);

    auto *forward = new QCheckBox(tr("Enable SSH agent forwarding"), this);
    forward->setChecked(form.forwardAgent);
    connect(forward, &QCheckBox::toggled, m_model, &AddEditServerViewModel::setForwardAgent);
    addRow(tr("Forward Agent:"), forward)
        ->setHint(tr("Allows SSH connections from this server to other servers using your local SSH keys"));
}

void AddEditServerView::addButtons()
{
    m_test = addButton(tr("Test Connection"), Side::Left);
    QPushButton *cancel = addButton(tr("Cancel"), Side::Right);
    m_save = addButton(tr("Save"), Side::Right, ButtonKind::Primary);
    setDefaultButton(m_save);
    connect(m_test, &QPushButton::clicked, m_model, &AddEditServerViewModel::testConnection);
    connect(cancel, &QPushButton::clicked, this, &AddEditServerView::reject);
    connect(m_save, &QPushButton::clicked, m_model, &AddEditServerViewModel::validateAndSaveServer);
}

void AddEditServerView::showState()
{
    setTextIfOther(*m_key, m_model->form().privateKeyPath);
    setTextIfOther(*m_password, m_model->password());
    setTextIfOther(*m_passphrase, m_model->passphrase());
    showAuthentication();
    showActivity();
    showNotices();
    showErrors();
}

void AddEditServerView::showAuthentication()
{
    const AuthMethod method = m_model->form().authMethod;
    m_passwordRow->setVisible(method == AuthMethod::Password);
    m_keyRow->setVisible(method == AuthMethod::PublicKey);
    m_passphraseRow->setVisible(method == AuthMethod::PublicKey);
    m_agentRow->setVisible(method == AuthMethod::SshAgent);

    const bool hasPassphrase = m_model->passphraseSaved();
    m_password->setPlaceholderText(m_model->passwordSaved() ? tr("Using saved password") : tr("Enter password"));
    m_passphrase->setPlaceholderText(hasPassphrase ? tr("Using saved passphrase")
                                                   : tr("Enter passphrase (if encrypted)"));
    m_passphraseRow->setHint(hasPassphrase ? QString() : tr("Leave blank if key is not encrypted"));
    m_savePassword->setEnabled(m_model->canSavePassword());
    m_savePassphrase->setEnabled(m_model->canSavePassphrase());
    const bool hasAgent = m_model->isSSHAgentAvailable();
    m_agent->setState(hasAgent ? tr("SSH Agent is running") : tr("SSH Agent not detected"),
                      hasAgent ? ToneName::Green : ToneName::Orange);
}

void AddEditServerView::showActivity()
{
    const Activity activity = m_model->activity();
    const bool isLocked = activity == Activity::CheckingSudo || activity == Activity::Saving;
    setBusy(activity != Activity::None);
    m_test->setText(activity == Activity::TestingConnection ? tr("Testing...") : tr("Test Connection"));
    m_test->setEnabled(activity == Activity::None);
    m_save->setText(activity == Activity::CheckingSudo ? tr("Checking sudo...")
                    : activity == Activity::Saving     ? tr("Saving...")
                                                       : tr("Save"));
    m_save->setEnabled(!isLocked);
    setLocked(isLocked);
}

void AddEditServerView::showNotices()
{
    const QString before = m_notice->text();
    if (const auto error = m_model->sudoCheckError()) {
        m_notice->setNotice(ToneName::Red, *error);
    } else if (const auto &result = m_model->testResult()) {
        m_notice->setNotice(result->succeeded ? ToneName::Green : ToneName::Red, result->text, result->reason);
    } else if (m_model->showingPasswordAlert()) {
        const bool isRefused = m_model->canRetryKeychainAccess();
        m_notice->setNotice(isRefused ? ToneName::Red : ToneName::Green, m_model->keychainNotice(), {},
                            isRefused ? tr("Try Again") : QString());
    } else {
        m_notice->setNotice(ToneName::Gray, {});
    }
    if (!m_notice->text().isEmpty() && m_notice->text() != before) {
        // Once the body has made room for it.
        QMetaObject::invokeMethod(m_notice, [this] { reveal(m_notice); }, Qt::QueuedConnection);
    }
}

void AddEditServerView::showErrors()
{
    for (const auto &[field, row] : m_rows.asKeyValueRange()) {
        row->setError(m_model->invalidFields().value(field));
    }
    const auto &invalid = m_model->invalidFields();
    m_labelsRow->setError(invalid.value(Field::NewLabelKey, invalid.value(Field::NewLabelValue)));
    if (m_model->showingValidationErrors() && !m_errors) {
        tellErrors();
    }
}

void AddEditServerView::tellErrors()
{
    AlertDialog::Content content;
    content.title = tr("Validation Errors");
    content.text = m_model->validationErrors().join(u'\n');
    content.buttons = {{tr("OK")}};
    m_errors = new AlertDialog(m_theme, content, this);
    connect(m_errors, &AlertDialog::answered, this, [this] {
        m_errors.clear();
        focusFirstError();
    });
    m_model->dismissValidationErrors();
    m_errors->open();
}

void AddEditServerView::focusFirstError()
{
    for (const Field field : {Field::Name, Field::Host, Field::Username, Field::Port, Field::PrivateKeyPath}) {
        if (m_model->invalidFields().contains(field)) {
            m_rows.value(field)->field()->setFocus(Qt::OtherFocusReason);
            reveal(m_rows.value(field));
            return;
        }
    }
    for (const auto &[field, entry] :
         {std::pair{Field::NewLabelKey, &m_labels->keyField()}, {Field::NewLabelValue, &m_labels->valueField()}}) {
        if (m_model->invalidFields().contains(field)) {
            entry->setFocus(Qt::OtherFocusReason);
            reveal(m_labelsRow);
        }
    }
}

void AddEditServerView::selectPrivateKeyFile()
{
    if (m_chooser) {
        return;
    }
    m_chooser = new QFileDialog(this, tr("Choose Private Key"), keyDirectory());
    m_chooser->setAttribute(Qt::WA_DeleteOnClose);
    m_chooser->setWindowModality(Qt::WindowModal);
    m_chooser->setFileMode(QFileDialog::ExistingFile);
    m_chooser->setFilter(QDir::AllEntries | QDir::AllDirs | QDir::NoDotAndDotDot | QDir::Hidden);
    connect(m_chooser, &QFileDialog::fileSelected, m_model, &AddEditServerViewModel::setPrivateKeyPath);
    m_chooser->QDialog::open();
}

void AddEditServerView::reject()
{
    if (!m_model->hasChanges()) {
        Sheet::reject();
        return;
    }
    if (m_question) {
        return;
    }
    AlertDialog::Content content;
    content.title = m_model->isEditing() ? tr("Discard Changes?") : tr("Discard New Server?");
    content.text = tr("What you typed has not been saved.");
    content.buttons = {{tr("Keep Editing")}, {tr("Discard"), ButtonKind::Danger}};
    m_question = new AlertDialog(m_theme, content, this);
    connect(m_question, &AlertDialog::answered, this, [this](qsizetype button) {
        m_question.clear();
        if (button == 1) {
            Sheet::reject();
        }
    });
    m_question->open();
}

void AddEditServerView::done(int result)
{
    for (QLineEdit *secret : {m_password, m_passphrase}) {
        secret->setText({}); // unlike clear(), which keeps the text for an undo
    }
    Sheet::done(result);
}
