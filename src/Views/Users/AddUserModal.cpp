#include "Views/Users/AddUserModal.h"

#include "Views/Components/AlertDialog.h"
#include "Views/Components/ButtonProgress.h"
#include "Views/Components/FormRow.h"
#include "Views/Components/Labels.h"
#include "Views/Users/AddUserViewModel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

AddUserModal::AddUserModal(const Theme &theme, AddUserViewModel &model, QWidget *parent)
    : Sheet(theme, tr("Add New User"), parent)
    , m_model(model)
{
    addUserInformation();
    addOptions();
    addButtons();
    connect(&model, &AddUserViewModel::changed, this, &AddUserModal::update);
    connect(&model, &AddUserViewModel::created, this, &QDialog::accept);
    m_username->setFocus();
    update();
}

void AddUserModal::addHeading(const QString &text)
{
    body().addWidget(new TextLabel(theme(), TextStyle::Emphasis, text, TextLabel::Shade::Dim, this));
}

QLineEdit *AddUserModal::addField(const QString &label, const QString &hint, QString AddUserViewModel::*value)
{
    auto *field = new QLineEdit(m_model.*value);
    field->setPlaceholderText(hint);
    body().addWidget(new FormRow(theme(), label, field, this));
    connect(field, &QLineEdit::textChanged, this, [this, value](const QString &text) {
        m_model.*value = text;
        update();
    });
    return field;
}

void AddUserModal::addUserInformation()
{
    addHeading(tr("User Information"));
    m_username = addField(tr("Username:"), {}, &AddUserViewModel::username);
    addField(tr("Full Name:"), tr("Optional"), &AddUserViewModel::fullName);
    for (QLineEdit *secret : {addField(tr("Password:"), tr("Enter password"), &AddUserViewModel::password),
                              addField(tr("Confirm:"), tr("Confirm password"), &AddUserViewModel::confirmPassword)}) {
        secret->setEchoMode(QLineEdit::Password);
        connect(this, &QDialog::finished, secret, [secret] { secret->setText({}); }); // clear() keeps it for an undo
    }
}

QCheckBox *AddUserModal::addOption(const QString &label, bool AddUserViewModel::*value)
{
    auto *option = new QCheckBox(label);
    option->setChecked(m_model.*value);
    body().addWidget(new FormRow(theme(), {}, option, this));
    connect(option, &QCheckBox::toggled, this, [this, value](bool isOn) { m_model.*value = isOn; });
    return option;
}

void AddUserModal::addOptions()
{
    addHeading(tr("Options"));
    auto *shell = new QComboBox;
    shell->setEditable(true);
    shell->addItems(AddUserViewModel::availableShells());
    shell->setCurrentText(m_model.selectedShell);
    body().addWidget(new FormRow(theme(), tr("Shell:"), shell, this));
    connect(shell, &QComboBox::currentTextChanged, this,
            [this](const QString &text) { m_model.selectedShell = text; });
    addOption(tr("Create home directory"), &AddUserViewModel::createHomeDirectory);
    addOption(m_model.sudoGroupLabel(), &AddUserViewModel::addToSudoGroup);
    addOption(tr("Enable passwordless sudo"), &AddUserViewModel::enablePasswordlessSudo);
}

void AddUserModal::addButtons()
{
    connect(addButton(tr("Cancel"), Side::Right), &QPushButton::clicked, this, &QDialog::reject);
    m_create = addButton(tr("Create User"), Side::Right, ButtonKind::Primary);
    m_progress = new ButtonProgress(theme(), *m_create);
    setDefaultButton(m_create);
    connect(m_create, &QPushButton::clicked, &m_model, &AddUserViewModel::createUser);
}

void AddUserModal::update()
{
    m_create->setEnabled(!m_model.username.isEmpty());
    m_progress->setActive(m_model.isCreating());
    setLocked(m_model.isCreating());
    if (m_question) {
        return;
    }
    if (m_model.showingError()) {
        showError();
    } else if (m_model.showingSudoersQuestion()) {
        askAboutSudoers();
    }
}

void AddUserModal::showError()
{
    auto *alert = new AlertDialog(
        theme(), {.title = tr("Error Creating User"), .text = m_model.errorMessage(), .buttons = {{tr("OK")}}}, this);
    m_question = alert;
    connect(alert, &AlertDialog::answered, this, [this] {
        m_question = nullptr;
        m_model.dismissError();
    });
    alert->open();
}

void AddUserModal::askAboutSudoers()
{
    auto *alert = new AlertDialog(theme(),
                                  {.title = tr("Enable Passwordless Sudo"),
                                   .text = m_model.sudoersQuestion(),
                                   .buttons = {{tr("Cancel")}, {tr("Create User"), ButtonKind::Danger}}},
                                  this);
    m_question = alert;
    connect(alert, &AlertDialog::answered, this, [this](qsizetype button) {
        m_question = nullptr;
        m_model.answerSudoersQuestion(button == 1);
    });
    alert->open();
}
