#pragma once

#include "Views/Components/Panel.h"

#include <QPersistentModelIndex>
#include <QPointer>
#include <QTimer>

class AlertDialog;
class ListMessage;
class QLineEdit;
class QListView;
class QMenu;
class QModelIndex;
class QStackedLayout;
class QUuid;
class ServerListModel;
class ServerRowDelegate;
class ServerStore;
class TextLabel;

/// The column of all servers: the search, the list and the counts below it. A click selects at once; the arrow keys
/// select when they rest, so that walking down the list does not connect to every server on the way.
class ServerListView : public Panel
{
    Q_OBJECT

public:
    /// Both outlive the view.
    ServerListView(const Theme &theme, ServerStore &store, QWidget *parent = nullptr);

    QListView &list() const { return *m_list; }

    ServerListModel &model() const { return *m_model; }

    QLineEdit &searchField() const { return *m_search; }

    QString footer() const;

    /// The menu of a row's actions, if one is open.
    QMenu *menu() const;

public Q_SLOTS:
    /// The keyboard goes to the search field, and what stands there is selected.
    void focusSearch();

    /// Asks before the server goes. Does nothing for one that is connected or not there.
    void askToDelete(const QUuid &id);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void layOut(const Theme &theme);
    void connectList();
    bool searchKey(int key);
    bool listKey(int key);
    void openMenu(const QModelIndex &index, const QPoint &place);
    void mark(const QModelIndex &index);
    void selectCurrent();
    void followSelection();
    void dropPendingSelection();
    void showState();
    void showImportError();

    const Theme &m_theme;
    ServerStore &m_store;
    ServerListModel *m_model;
    QLineEdit *m_search;
    QListView *m_list;
    ServerRowDelegate *m_delegate;
    ListMessage *m_message;
    QStackedLayout *m_pages;
    TextLabel *m_total;
    TextLabel *m_connected;
    QTimer m_rest;
    QPointer<QMenu> m_menu;
    QPointer<AlertDialog> m_question; // about the server that is to be deleted
    QPointer<AlertDialog> m_importError;
};
