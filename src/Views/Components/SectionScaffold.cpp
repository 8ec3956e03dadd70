#include "Views/Components/SectionScaffold.h"

#include "Views/Components/ProgressLine.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/StatusLine.h"

#include <QEvent>
#include <QVBoxLayout>

SectionScaffold::SectionScaffold(const Theme &theme, const QString &title, QWidget *content, QWidget *parent)
    : SectionPage(parent)
    , m_column(new QVBoxLayout(this))
    , m_header(new SectionHeader(theme, title, this))
    , m_progress(new ProgressLine(theme, this))
    , m_page(new StatePage(theme, content, this))
    , m_status(new StatusLine(theme, this))
{
    setAccessibleName(title);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    m_column->addWidget(m_header);
    m_column->addWidget(m_page, 1);
    m_column->addWidget(m_status);
    m_header->installEventFilter(this);
}

bool SectionScaffold::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_header && event->type() == QEvent::Resize) {
        m_progress->setGeometry(0, m_header->height() - m_progress->height(), width(), m_progress->height());
        m_progress->raise();
    }
    return SectionPage::eventFilter(watched, event);
}

void SectionScaffold::addBar(QWidget *bar)
{
    m_column->insertWidget(m_column->indexOf(m_page), bar);
}

void SectionScaffold::setRefreshing(bool isRefreshing)
{
    m_progress->setActive(isRefreshing);
}
