#include "Views/Users/UsersView.h"

#include "Views/Components/AlertDialog.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"
#include "Views/Users/AddUserModal.h"
#include "Views/Users/AddUserViewModel.h"
#include "Views/Users/UsersViewModel.h"

#include <QPushButton>

namespace
{

const QColor &onAccentColor(const Theme &theme)
{
    return theme.tokens().onAccent;
}

} // namespace

UsersView::UsersView(const Theme &theme, UsersViewModel &model, QWidget *parent)
    : TableSectionView(theme, model, parent)
    , m_theme(theme)
    , m_model(model)
    , m_addUser(new QPushButton(tr("Add User"), this))
{
    setButtonKind(*m_addUser, ButtonKind::Primary);
    m_addUser->setIcon(Icons::icon(IconName::Add, theme, &onAccentColor));
    header().addControl(m_addUser);
    connect(m_addUser, &QPushButton::clicked, this, &UsersView::addUser);
    connect(&model, &UsersViewModel::creationFailed, this, [this](const QString &account, const QString &message) {
        auto *alert = new AlertDialog(m_theme,
                                      {.title = AddUserModal::tr("Error Creating User"),
                                       .text = tr("User '%1': %2").arg(account, message),
                                       .buttons = {{AddUserModal::tr("OK")}}},
                                      this);
        alert->open();
    });
}

void UsersView::addUser()
{
    AddUserViewModel *form = m_model.addUserForm();
    auto *modal = new AddUserModal(m_theme, *form, this);
    connect(modal, &QDialog::finished, form, &AddUserViewModel::leave);
    modal->open();
}
