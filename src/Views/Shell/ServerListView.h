#pragma once

#include "Views/Components/Panel.h"
#include "Views/Shell/AddEditServerViewModel.h"

#include <QPersistentModelIndex>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QUuid>

class AddEditServerView;
class AlertDialog;
class QListView;
class QMenu;
class QModelIndex;
class QPushButton;
class SearchField;
class ServerBrowser;
class ServerListModel;
class ServerStore;
class TextLabel;

/// The column of all servers: the search, the list and the counts below it. A click selects at once; the arrow keys
/// select when they rest, so that walking down the list does not connect to every server on the way.
class ServerListView : public Panel
{
    Q_OBJECT

public:
    /// `theme` and what the services are outlive the view.
    ServerListView(const Theme &theme, const AddEditServerViewModel::Services &services, QWidget *parent = nullptr);

    QListView &list() const { return *m_list; }

    ServerListModel &model() const { return *m_model; }

    SearchField &searchField() const;

    QString footer() const;

    /// The sheet in which a server is added or changed, if it is open.
    AddEditServerView *editor() const;

    /// The menu of a row's actions, if one is open.
    QMenu *menu() const;

public Q_SLOTS:
    /// The keyboard goes to the search field, and what stands there is selected.
    void focusSearch();

    /// Opens the sheet for a new server. Works also while this view itself is not on show.
    void addServer();

    /// Opens the sheet for a server. Does nothing for one that is connected or not there.
    void editServer(const QUuid &id);

    /// What can be done with a server, at a place on the screen.
    void openMenu(const QUuid &id, const QPoint &place);

    /// Asks before the server goes. Does nothing for one that is connected or not there.
    void askToDelete(const QUuid &id);

    /// A row that was reached by a key and not selected yet is not going to be.
    void dropPendingSelection();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void layOut(const Theme &theme);
    void connectList();
    bool listKey(int key);
    void openEditor(const std::optional<Server> &server);
    void refuse(const QModelIndex &index, const QString &reason);
    void mark(const QModelIndex &index);
    void selectCurrent();
    void followSelection();
    void showSelection();
    void showState();
    void storeChanged();
    void importErrorChanged();
    void showImportError(const QString &error);

    const Theme &m_theme;
    AddEditServerViewModel::Services m_services;
    ServerStore &m_store;
    ServerBrowser *m_browser;
    ServerListModel *m_model; // the browser's, as is the list
    QListView *m_list;
    QPushButton *m_add;
    TextLabel *m_total;
    TextLabel *m_connected;
    QTimer m_rest;
    QUuid m_followed; // the selected server that the list has shown
    QPointer<AddEditServerView> m_editor;
    QPointer<QMenu> m_menu;
    QPointer<AlertDialog> m_question; // about the server that is to be deleted
    QPointer<AlertDialog> m_importError;
    QStringList m_furtherImportErrors; // to be told after that one
};
