#include "Views/Components/SectionHeader.h"

#include "Views/Components/AutoRefreshToggle.h"
#include "Views/Components/HeaderLayout.h"
#include "Views/Components/Labels.h"
#include "Views/Components/RefreshButton.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SegmentedControl.h"

#include <QVBoxLayout>

SectionHeader::SectionHeader(const Theme &theme, const QString &title, QWidget *parent)
    : Panel(theme, &Tokens::surface, Qt::BottomEdge, parent)
    , m_theme(theme)
    , m_titles(new QWidget(this))
    , m_layout(new HeaderLayout(this))
{
    m_layout->setContentsMargins(Metrics::kPageMargin, 13, Metrics::kPageMargin, 13);
    auto *column = new QVBoxLayout(m_titles);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    auto *words = new ElidedLabel(theme, TextStyle::Title, TextLabel::Shade::Text, Qt::ElideRight, m_titles);
    words->setFullText(title);
    column->addWidget(words);
    m_layout->add(m_titles, HeaderLayout::Role::Title);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

SearchField &SectionHeader::addSearch(const QString &prompt)
{
    m_search = new SearchField(m_theme, prompt, this);
    m_layout->add(m_search, HeaderLayout::Role::Search);
    return *m_search;
}

SegmentedControl &SectionHeader::addFilter(const QString &name, const QStringList &options)
{
    auto *filter = new SegmentedControl(m_theme, name, options, this);
    m_layout->add(filter, HeaderLayout::Role::Filter);
    return *filter;
}

AutoRefreshToggle &SectionHeader::addAutoRefresh()
{
    auto *toggle = new AutoRefreshToggle(m_theme, this);
    m_layout->add(toggle, HeaderLayout::Role::Control);
    return *toggle;
}

RefreshButton &SectionHeader::addRefresh(const QString &help)
{
    m_refresh = new RefreshButton(m_theme, help, this);
    m_layout->add(m_refresh, HeaderLayout::Role::Control);
    return *m_refresh;
}

void SectionHeader::addControl(QWidget *control)
{
    m_layout->add(control, HeaderLayout::Role::Control, m_refresh);
    if (m_refresh) {
        setTabOrder(m_refresh->previousInFocusChain(), control);
    }
}

void SectionHeader::setSubtitle(QWidget *subtitle)
{
    m_titles->layout()->addWidget(subtitle);
}
