#pragma once

#include "Views/Components/Panel.h"

#include <QTimer>

class QListView;
class ServerListModel;
class ServerStore;
class TextLabel;

/// The list of servers with the counts below it. A click selects at once; the arrow keys select when they rest, so
/// that walking down the list does not connect to every server on the way.
class ServerListView : public Panel
{
    Q_OBJECT

public:
    /// Both outlive the view.
    ServerListView(const Theme &theme, ServerStore &store, QWidget *parent = nullptr);

    QListView &list() const { return *m_list; }

    ServerListModel &model() const { return *m_model; }

    QString footer() const;

private:
    void selectCurrent();
    void followSelection();
    void updateCounts();

    ServerStore &m_store;
    ServerListModel *m_model;
    QListView *m_list;
    TextLabel *m_total;
    TextLabel *m_connected;
    QTimer m_rest;
};
