#pragma once

#include "Views/Components/Sheet.h"

class AddUserViewModel;
class ButtonProgress;
class QCheckBox;
class QComboBox;
class QLineEdit;

/// The form for another account.
class AddUserModal : public Sheet
{
    Q_OBJECT

public:
    /// Both outlive the sheet.
    AddUserModal(const Theme &theme, AddUserViewModel &model, QWidget *parent);

private:
    void addUserInformation();
    void addOptions();
    void addButtons();
    void update();
    QLineEdit *addField(const QString &label, const QString &hint, QString AddUserViewModel::*value);
    QCheckBox *addOption(const QString &label, bool AddUserViewModel::*value);
    void addHeading(const QString &text);
    void showError();
    void askAboutSudoers();

    AddUserViewModel &m_model;
    QPushButton *m_create = nullptr;
    ButtonProgress *m_progress = nullptr;
    QLineEdit *m_username = nullptr;
    QWidget *m_question = nullptr;
};
