#pragma once

#include "Helpers/Tasks.h"
#include "Services/Monitoring/MonitoredServer.h"
#include "Views/Components/Stat.h"
#include "Views/Components/Table/TableModel.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>
#include <chrono>

/// What sections have in common whose content is one table of a server's records: when they read them, what narrows
/// them, and what is on show. A section derives from it, declares its table, and says how it reads.
///
/// It reads only while its server is connected: first when the section becomes visible, then when it is told to, and
/// by a timer while it is visible. With the connection, or when its record leads elsewhere, all goes that was read
/// over it. It may be destroyed at any moment; what is under way then comes to nothing.
class TableSectionViewModel : public QObject
{
    Q_OBJECT

public:
    enum class Display { Loading, NotConnected, Error, Empty, Content };

    struct Message {
        QString title;
        QString text;
        QString detail; ///< what the server said

        bool operator==(const Message &) const = default;
    };

    /// The section's own texts.
    struct Words {
        QString title;
        QString search;  ///< the prompt of the search field
        QString loading; ///< the first time
        Message failure; ///< loadError becomes its detail
    };

    const Words &words() const { return m_words; }

    TableModel &table() const { return *m_table; }

    /// The labels of the filters, the first of which keeps everything; empty for a section without.
    const QStringList &filters() const { return m_filters; }

    int activeFilterIndex() const { return m_activeFilter; }

    void setActiveFilterIndex(int filter);

    const QString &searchText() const { return m_searchText; }

    void setSearchText(const QString &text);

    /// A reading is under way.
    bool isLoading() const { return m_isLoading; }

    /// Nothing has been read yet.
    bool isInitialLoad() const { return m_isInitialLoad; }

    /// The first reading has begun.
    bool hasLoadedInitialData() const { return m_hasLoadedInitialData; }

    /// Why the last reading failed, in the server's words; nothing while it is tried again.
    const std::optional<QString> &loadError() const { return m_loadError; }

    /// Null for a section without a timer.
    const QTimer *autoRefreshTimer() const { return m_hasTimer ? &m_autoRefreshTimer : nullptr; }

    bool isAutoRefreshEnabled() const { return m_isAutoRefreshEnabled; }

    void setAutoRefreshEnabled(bool isEnabled);

    bool isViewVisible() const { return m_isViewVisible; }

    /// The section came on show, or went.
    void updateViewVisibility(bool isActiveView);

    Display display() const;

    /// Of every display but the content.
    Message message() const;

    /// The figures below the table.
    virtual QList<Stat> stats() const;

    /// When the records on show were read; invalid before.
    QDateTime lastUpdated() const { return m_lastUpdated; }

    /// What is to be said of a row that is not there any more, for half a minute; empty for nothing.
    QString notice() const;

public Q_SLOTS:
    /// Reads now. Of overlapping readings the newest counts.
    void refresh();

Q_SIGNALS:
    /// Anything of the above is different now.
    void changed();

protected:
    /// `interval` of the timer; zero for none.
    TableSectionViewModel(const MonitoredServer &server, Words words, std::chrono::milliseconds interval,
                          QObject *parent);

    /// To be called once, before anything else. `table` belongs to the section.
    void setTable(TableModel &table, const QStringList &filters);

    /// Begins to read from this server, by load().
    virtual void read(const Server &server) = 0;

    /// Puts the search and the filter into effect on the table.
    virtual void applyFilter() = 0;

    /// When the search or the filter leaves nothing, or nothing is there.
    virtual Message emptiness() const = 0;

    /// Hands the task's value to `store`, unless a newer reading has begun by then. `store` is called in this
    /// object's life time only, and shows what came by the table or by setLoadError.
    template<typename T, typename Store>
    void load(QCoro::Task<T> task, Store store)
    {
        whenDone(std::move(task), this, [this, request = m_newestRequest, store = std::move(store)](T value) {
            if (request == m_newestRequest) {
                store(std::move(value));
                finishReading();
            }
        });
    }

    void setLoadError(const QString &error) { m_loadError = error; }

    /// Another one for each connection: what was begun in one means nothing in the next.
    quint64 session() const { return m_session; }

    /// The session is over: what belongs to it goes. The table is empty by then.
    virtual void forget() {}

    /// Says on its row why an action on a record failed; where no row shows the record, or none after the next
    /// reading, notice() says it. `sentence` names the record.
    void complain(const QString &identity, const QString &sentence);

    /// `pattern` with what narrows the table in the place of its %1; `whenNothing` if nothing does.
    QString noMatch(const QString &pattern, const QString &whenNothing) const;

    const MonitoredServer &monitored() const { return m_server; }

private:
    struct Login {
        QString host;
        int port = 0;
        QString username;

        bool operator==(const Login &) const = default;
    };

    struct Complaint {
        QString identity;
        QString sentence;
    };

    std::optional<Login> login() const;
    bool noticeIfUnseen(const Complaint &complaint);
    void finishReading();
    void startAutoRefresh();
    void followConnection();

    MonitoredServer m_server;
    Words m_words;
    TableModel *m_table = nullptr;
    QStringList m_filters;
    int m_activeFilter = 0;
    QString m_searchText;
    bool m_isLoading = false;
    bool m_isInitialLoad = true;
    bool m_hasLoadedInitialData = false;
    std::optional<QString> m_loadError;
    std::optional<QString> m_shownError; // stays on show while it is tried again
    quint64 m_newestRequest = 0;
    QDateTime m_lastUpdated;
    QTimer m_autoRefreshTimer;
    bool m_hasTimer;
    bool m_isAutoRefreshEnabled = true;
    bool m_isViewVisible = false;
    std::optional<Login> m_login; // nothing while the server is not connected
    quint64 m_session = 0;
    std::optional<Complaint> m_complaint; // until the next reading
    QString m_notice;
    QDateTime m_noticeEnd;
};
