#pragma once

#include "Models/MainTab.h"
#include "Models/Server.h"

#include <QHash>
#include <QTimer>
#include <QWidget>
#include <functional>

class SectionPage;

/// The pages of one server, all of them alive, one of them on show. The one on show is made at once; the others
/// follow when it has been painted, one in each turn of the event loop, so that a change of server costs one page.
/// Another server replaces them all.
class SectionPages : public QWidget
{
    Q_OBJECT

public:
    using Make = std::function<SectionPage *(MainTab tab, const Server &server, QWidget *parent)>;

    explicit SectionPages(Make make, QWidget *parent = nullptr);
    ~SectionPages() override;

    /// Without a server there are no pages.
    void showPage(const std::optional<Server> &server, MainTab tab);

    /// Null until it is made.
    SectionPage *page(MainTab tab) const { return m_pages.value(tab); }

    qsizetype count() const { return m_pages.size(); }

    /// What a page needs at least is its own matter.
    QSize minimumSizeHint() const override { return {360, 240}; }

Q_SIGNALS:
    void pageMade(MainTab tab, SectionPage *page);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    SectionPage &made(MainTab tab);
    void makeNext();
    void clear();

    Make m_make;
    std::optional<Server> m_server;
    QHash<MainTab, SectionPage *> m_pages;
    SectionPage *m_current = nullptr;
    QTimer m_idle;
};
