#pragma once

#include "Views/Components/TableSectionView.h"

class QPushButton;
class UsersViewModel;

/// The accounts of a server: the table, and the button that opens the form for another one.
class UsersView : public TableSectionView
{
    Q_OBJECT

public:
    /// Both outlive the view.
    UsersView(const Theme &theme, UsersViewModel &model, QWidget *parent = nullptr);

    QPushButton &addButton() const { return *m_addUser; }

private:
    void addUser();

    const Theme &m_theme;
    UsersViewModel &m_model;
    QPushButton *m_addUser;
};
