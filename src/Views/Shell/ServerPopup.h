#pragma once

#include "Views/Components/Panel.h"

class QPushButton;
class ServerBrowser;
class ServerStore;

/// The servers with a search, in a window that lies over the others until one is chosen or something else is clicked.
/// It deletes itself when it closes.
class ServerPopup : public Panel
{
    Q_OBJECT

public:
    /// `theme` and `store` outlive the popup.
    ServerPopup(const Theme &theme, ServerStore &store, QWidget *parent = nullptr);

    ServerBrowser &browser() const { return *m_browser; }

    QPushButton &addButton() const { return *m_add; }

    /// Shows it below `anchor`, or where the screen has room for it. The search has the keyboard.
    void openBelow(const QWidget &anchor);

Q_SIGNALS:
    void addServerRequested();

    /// A row's menu is wanted; the popup has closed.
    void menuRequested(const QUuid &server, const QPoint &place);

private:
    void choose();
    void fit();

    ServerStore &m_store;
    ServerBrowser *m_browser;
    QPushButton *m_add;
};
