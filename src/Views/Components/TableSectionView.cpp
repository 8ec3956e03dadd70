#include "Views/Components/TableSectionView.h"

#include "Views/Components/AutoRefreshToggle.h"
#include "Views/Components/RefreshButton.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/StatusLine.h"
#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/TableSectionViewModel.h"

#include <QLocale>

TableSectionView::TableSectionView(const Theme &theme, TableSectionViewModel &model, QWidget *parent)
    : TableSectionView(theme, model, new RecordTable(theme, model.table()), parent)
{
}

TableSectionView::TableSectionView(const Theme &theme, TableSectionViewModel &model, RecordTable *table,
                                   QWidget *parent)
    : SectionScaffold(theme, model.words().title, table, parent)
    , m_model(model)
    , m_table(table)
    , m_search(&header().addSearch(model.words().search))
{
    connect(m_search, &QLineEdit::textChanged, &model, &TableSectionViewModel::setSearchText);
    connect(m_search, &SearchField::left, table, qOverload<>(&QWidget::setFocus));
    if (!model.filters().isEmpty()) {
        m_filter = &header().addFilter(tr("Filter"), model.filters());
        connect(m_filter, &SegmentedControl::currentChanged, &model, &TableSectionViewModel::setActiveFilterIndex);
    }
    if (model.autoRefreshTimer()) {
        m_autoRefresh = &header().addAutoRefresh();
        connect(m_autoRefresh, &QCheckBox::toggled, &model, &TableSectionViewModel::setAutoRefreshEnabled);
    }
    m_refresh = &header().addRefresh();
    connect(m_refresh, &RefreshButton::refreshRequested, &model, &TableSectionViewModel::refresh);
    connect(&page(), &StatePage::retryRequested, &model, &TableSectionViewModel::refresh);
    connect(this, &SectionPage::activeChanged, &model, &TableSectionViewModel::updateViewVisibility);
    connect(&model, &TableSectionViewModel::changed, this, &TableSectionView::update);
    connect(&model.table(), &TableModel::holdingBackChanged, &status(), &StatusLine::setOrderHeld);
    update();
}

void TableSectionView::focusSearch()
{
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
}

void TableSectionView::update()
{
    if (m_search->text() != m_model.searchText()) {
        m_search->setText(m_model.searchText());
    }
    if (m_filter) {
        m_filter->setCurrent(m_model.activeFilterIndex());
    }
    if (m_autoRefresh) {
        m_autoRefresh->setChecked(m_model.isAutoRefreshEnabled());
    }
    m_refresh->setRefreshing(m_model.isLoading());
    setRefreshing(m_model.isLoading());
    updatePage();
    status().setStats(m_model.stats());
    status().setNote(note());
}

QString TableSectionView::note() const
{
    QString notice = m_model.notice();
    const QDateTime updated = m_model.lastUpdated();
    if (!notice.isEmpty() || !updated.isValid()) {
        return notice;
    }
    return tr("Updated %1").arg(QLocale().toString(updated.toLocalTime().time(), QLocale::LongFormat));
}

void TableSectionView::updatePage()
{
    const TableSectionViewModel::Message message = m_model.message();
    StatePage::Message shown{message.title, message.text, message.detail};
    switch (m_model.display()) {
    case TableSectionViewModel::Display::Loading:
        page().showLoading(shown);
        break;
    case TableSectionViewModel::Display::Error:
        page().showError(shown);
        break;
    case TableSectionViewModel::Display::NotConnected:
        shown.icon = IconName::Plug;
        page().showEmpty(shown);
        break;
    case TableSectionViewModel::Display::Empty:
        shown.icon = IconName::Search;
        page().showEmpty(shown);
        break;
    case TableSectionViewModel::Display::Content:
        page().showContent();
        break;
    }
}
