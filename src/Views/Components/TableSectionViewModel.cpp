#include "Views/Components/TableSectionViewModel.h"

#include "Helpers/Clock.h"
#include "Models/ServerStore.h"

namespace
{

constexpr std::chrono::seconds kNoticeTime(30);

} // namespace

TableSectionViewModel::TableSectionViewModel(const MonitoredServer &server, Words words,
                                             std::chrono::milliseconds interval, QObject *parent)
    : QObject(parent)
    , m_server(server)
    , m_words(std::move(words))
    , m_hasTimer(interval.count() > 0)
    , m_login(login())
{
    m_autoRefreshTimer.setInterval(interval);
    connect(&m_autoRefreshTimer, &QTimer::timeout, this, [this] {
        if (!m_isLoading) {
            refresh();
        }
    });
    connect(&server.store, &ServerStore::serverUpdated, this, &TableSectionViewModel::followConnection);
    connect(&server.store, &ServerStore::serverRemoved, this, &TableSectionViewModel::followConnection);
}

void TableSectionViewModel::setTable(TableModel &table, const QStringList &filters)
{
    m_table = &table;
    m_filters = filters;
    connect(m_table, &TableModel::updated, this, &TableSectionViewModel::changed);
}

void TableSectionViewModel::setActiveFilterIndex(int filter)
{
    if (std::exchange(m_activeFilter, filter) != filter) {
        applyFilter();
    }
}

void TableSectionViewModel::setSearchText(const QString &text)
{
    if (std::exchange(m_searchText, text) != text) {
        applyFilter();
    }
}

void TableSectionViewModel::setAutoRefreshEnabled(bool isEnabled)
{
    if (std::exchange(m_isAutoRefreshEnabled, isEnabled) != isEnabled) {
        startAutoRefresh();
        Q_EMIT changed();
    }
}

void TableSectionViewModel::startAutoRefresh()
{
    if (!m_hasTimer || !m_isAutoRefreshEnabled || !m_isViewVisible || !m_login) {
        m_autoRefreshTimer.stop();
    } else if (!m_autoRefreshTimer.isActive()) {
        m_autoRefreshTimer.start();
    }
}

void TableSectionViewModel::updateViewVisibility(bool isActiveView)
{
    m_isViewVisible = isActiveView;
    if (m_isViewVisible && m_login && !m_hasLoadedInitialData) {
        refresh();
    }
    startAutoRefresh();
}

std::optional<TableSectionViewModel::Login> TableSectionViewModel::login() const
{
    const std::optional<Server> record = m_server.connected();
    return record ? std::optional(Login{record->host, record->port, record->username}) : std::nullopt;
}

void TableSectionViewModel::followConnection()
{
    const std::optional<Login> now = login();
    if (std::exchange(m_login, now) == now) {
        return;
    }
    ++m_session;
    ++m_newestRequest; // what is under way comes to nothing
    m_isLoading = false;
    m_isInitialLoad = true;
    m_hasLoadedInitialData = false;
    m_loadError.reset();
    m_shownError.reset();
    m_lastUpdated = {};
    m_complaint.reset();
    m_table->clear();
    forget();
    updateViewVisibility(m_isViewVisible);
    Q_EMIT changed();
}

void TableSectionViewModel::refresh()
{
    const std::optional<Server> record = m_server.connected();
    if (!record) {
        return;
    }
    ++m_newestRequest;
    m_isLoading = true;
    m_hasLoadedInitialData = true;
    m_loadError.reset();
    Q_EMIT changed();
    read(*record);
}

void TableSectionViewModel::finishReading()
{
    m_isLoading = false;
    m_isInitialLoad = false;
    m_shownError = m_loadError;
    m_lastUpdated = m_server.clock.now();
    if (const auto complaint = std::exchange(m_complaint, {})) {
        noticeIfUnseen(*complaint);
    }
    Q_EMIT changed();
}

void TableSectionViewModel::complain(const QString &identity, const QString &sentence)
{
    m_table->setError(identity, sentence);
    const Complaint complaint{identity, sentence};
    m_complaint = noticeIfUnseen(complaint) ? std::nullopt : std::optional(complaint);
    Q_EMIT changed();
}

bool TableSectionViewModel::noticeIfUnseen(const Complaint &complaint)
{
    const int row = m_table->rowOf(complaint.identity);
    if (row >= 0 && !m_table->isGone(row)) {
        return false;
    }
    m_notice = complaint.sentence;
    m_noticeEnd = m_server.clock.now() + kNoticeTime;
    return true;
}

QString TableSectionViewModel::notice() const
{
    return m_server.clock.now() < m_noticeEnd ? m_notice : QString();
}

TableSectionViewModel::Display TableSectionViewModel::display() const
{
    if (m_isInitialLoad) {
        return m_login ? Display::Loading : Display::NotConnected;
    }
    if (m_shownError) {
        return Display::Error;
    }
    return m_table->rowCount() == 0 ? Display::Empty : Display::Content;
}

TableSectionViewModel::Message TableSectionViewModel::message() const
{
    switch (display()) {
    case Display::Loading:
        return {m_words.loading, {}, {}};
    case Display::NotConnected:
        return {tr("Not Connected"), tr("Connect to the server on its dashboard"), {}};
    case Display::Error:
        return {m_words.failure.title, m_words.failure.text, *m_shownError};
    case Display::Empty:
        return emptiness();
    case Display::Content:
        break;
    }
    return {};
}

QList<Stat> TableSectionViewModel::stats() const
{
    return {{tr("Showing:"), QString::number(m_table->shownCount())},
            {tr("Total"), QString::number(m_table->total())}};
}

QString TableSectionViewModel::noMatch(const QString &pattern, const QString &whenNothing) const
{
    if (m_searchText.isEmpty() && m_activeFilter == 0) {
        return whenNothing;
    }
    return pattern.arg(m_searchText.isEmpty() ? m_filters.at(m_activeFilter) : m_searchText);
}
