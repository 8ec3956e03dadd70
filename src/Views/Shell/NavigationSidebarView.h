#pragma once

#include "Views/Components/Panel.h"

#include <QTimer>

class ContentViewModel;
class HistoryButtons;
class QListView;

/// The list of sections, below the steps of the history. A click shows a section at once; the arrow keys when they
/// rest, so that walking down the list opens nothing on the way.
class NavigationSidebarView : public Panel
{
    Q_OBJECT

public:
    /// Both outlive the view.
    NavigationSidebarView(const Theme &theme, ContentViewModel &model, QWidget *parent = nullptr);

    QListView &list() const { return *m_list; }

    HistoryButtons &historyButtons() const { return *m_historyButtons; }

private:
    void chooseCurrent();
    void follow();

    ContentViewModel &m_model;
    HistoryButtons *m_historyButtons;
    QListView *m_list;
    QTimer m_rest;
};
