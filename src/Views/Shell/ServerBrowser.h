#pragma once

#include <QWidget>

class ListMessage;
class QHBoxLayout;
class QListView;
class QStackedLayout;
class SearchField;
class ServerListModel;
class ServerRowDelegate;
class ServerStore;
class Theme;

/// All servers with a search above them, and words in the place of an empty list. From the search the list is reached
/// by Down; Return takes what is current there.
class ServerBrowser : public QWidget
{
    Q_OBJECT

public:
    /// Both outlive the browser.
    ServerBrowser(const Theme &theme, ServerStore &store, QWidget *parent = nullptr);

    QListView &list() const { return *m_list; }

    ServerListModel &model() const { return *m_model; }

    ServerRowDelegate &delegate() const { return *m_delegate; }

    SearchField &searchField() const { return *m_search; }

    /// At the right of the search.
    void addBesideSearch(QWidget *widget);

    /// Whether the list is on show, and not words in its place.
    bool showsRows() const;

Q_SIGNALS:
    /// The current row was clicked, or taken by the keyboard.
    void chosen();

    /// The menu of a server is wanted, at a place on the screen. Its row is not current by that.
    void menuRequested(const QUuid &server, const QPoint &place);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void takeFirst(int key);
    void showState();

    ServerStore &m_store;
    ServerListModel *m_model;
    SearchField *m_search;
    QHBoxLayout *m_bar;
    QListView *m_list;
    ServerRowDelegate *m_delegate;
    ListMessage *m_message;
    QStackedLayout *m_pages;
};
