#pragma once

#include "Views/Components/Sheet.h"
#include "Views/Shell/AddEditServerViewModel.h"

#include <QPointer>

class AlertDialog;
class FormRow;
class InlineNotice;
class LabelEditor;
class Pill;
class QCheckBox;
class QFileDialog;
class QLineEdit;
class SegmentedControl;

/// The sheet in which a server is added or changed. What is typed as a secret leaves the fields when it closes.
class AddEditServerView : public Sheet
{
    Q_OBJECT

public:
    /// Without `serverToEdit` a new server is added. `services` outlive the sheet.
    AddEditServerView(const Theme &theme, const AddEditServerViewModel::Services &services,
                      const std::optional<Server> &serverToEdit, QWidget *parent);

    AddEditServerViewModel &model() const { return *m_model; }

    /// Asks first if something typed would be lost.
    void reject() override;

    void done(int result) override;

public Q_SLOTS:
    /// Opens the chooser for the private key.
    void selectPrivateKeyFile();

private:
    FormRow *addRow(const QString &label, QWidget *field);
    QLineEdit *addTextField(const QString &label, const QString &placeholder, const QString &text,
                            void (AddEditServerViewModel::*setter)(const QString &),
                            AddEditServerViewModel::Field place);
    QLineEdit *makeSecretField(void (AddEditServerViewModel::*setter)(const QString &));
    QPushButton *makeKeyButton(const QString &purpose, void (AddEditServerViewModel::*save)());
    void addAddress();
    void addAuthentication();
    void addPrivateKey();
    void addOptions();
    void addButtons();
    void showState();
    void showAuthentication();
    void showActivity();
    void showNotices();
    void showErrors();
    void tellErrors();
    void focusFirstError();

    const Theme &m_theme;
    AddEditServerViewModel *m_model;
    QMap<AddEditServerViewModel::Field, FormRow *> m_rows;
    LabelEditor *m_labels = nullptr;
    FormRow *m_labelsRow = nullptr;
    SegmentedControl *m_method = nullptr;
    FormRow *m_passwordRow = nullptr;
    QLineEdit *m_password = nullptr;
    QPushButton *m_savePassword = nullptr;
    FormRow *m_keyRow = nullptr;
    QLineEdit *m_key = nullptr;
    FormRow *m_passphraseRow = nullptr;
    QLineEdit *m_passphrase = nullptr;
    QPushButton *m_savePassphrase = nullptr;
    FormRow *m_agentRow = nullptr;
    Pill *m_agent = nullptr;
    InlineNotice *m_notice = nullptr;
    QPushButton *m_test = nullptr;
    QPushButton *m_save = nullptr;
    QPointer<AlertDialog> m_errors;
    QPointer<AlertDialog> m_question;
    QPointer<QFileDialog> m_chooser;
};
