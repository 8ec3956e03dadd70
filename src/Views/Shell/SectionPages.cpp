#include "Views/Shell/SectionPages.h"

#include "Views/Components/SectionPage.h"

SectionPages::SectionPages(Make make, QWidget *parent)
    : QWidget(parent)
    , m_make(std::move(make))
{
    m_idle.setSingleShot(true);
    m_idle.setInterval(0); // fires when nothing else is waiting, a painting included
    connect(&m_idle, &QTimer::timeout, this, &SectionPages::makeNext);
}

SectionPages::~SectionPages()
{
    clear();
}

void SectionPages::showPage(const std::optional<Server> &server, MainTab tab)
{
    if (!server || !m_server || server->id != m_server->id) {
        clear();
        m_server = server;
    }
    if (!m_server) {
        return;
    }
    SectionPage &page = made(tab);
    if (&page != m_current) {
        SectionPage *const before = std::exchange(m_current, &page);
        page.setGeometry(rect());
        page.raise();
        page.show();
        if (before) {
            before->setActive(false);
            before->hide();
        }
        page.setActive(true);
    }
    m_idle.start();
}

SectionPage &SectionPages::made(MainTab tab)
{
    SectionPage *&page = m_pages[tab];
    if (!page) {
        page = m_make(tab, *m_server, this);
        page->hide();
        SectionPage *const made = page; // whoever is told may cause more pages
        Q_EMIT pageMade(tab, made);
        return *made;
    }
    return *page;
}

void SectionPages::makeNext()
{
    for (const MainTab tab : allCases<MainTab>()) {
        if (!m_pages.contains(tab)) {
            made(tab);
            m_idle.start();
            return;
        }
    }
}

void SectionPages::clear()
{
    m_idle.stop();
    if (m_current) {
        m_current->setActive(false);
    }
    m_current = nullptr;
    m_server.reset();
    qDeleteAll(std::exchange(m_pages, {}));
}

void SectionPages::resizeEvent(QResizeEvent *)
{
    if (m_current) {
        m_current->setGeometry(rect());
    }
}
