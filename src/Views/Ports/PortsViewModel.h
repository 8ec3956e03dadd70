#pragma once

#include "Models/PortInfo.h"
#include "Views/Components/Table/RecordTableModel.h"
#include "Views/Components/TableSectionViewModel.h"

class SectionNavigation;

/// Which sockets are on show; the labels are the view model's filters, in the same order.
enum class PortFilter { All, Listening, Established, Web, Database, System };

/// The sockets of one server.
class PortsViewModel : public TableSectionViewModel
{
    Q_OBJECT

public:
    /// `server` and `navigation` outlive the model.
    PortsViewModel(const MonitoredServer &server, SectionNavigation &navigation,
                   std::chrono::milliseconds interval = std::chrono::seconds(5), QObject *parent = nullptr);

    /// All of them, in the server's order.
    QList<PortInfo> ports() const { return m_table.records(); }

    /// Those on show, in the order of their rows.
    QList<PortInfo> filteredPorts() const { return m_table.shownRecords(); }

    PortFilter activeFilter() const { return static_cast<PortFilter>(activeFilterIndex()); }

    const PortInfo *selectedPort() const { return m_table.selected(); }

    bool matchesSearch(const PortInfo &port) const;
    bool matchesFilter(const PortInfo &port) const;

    /// The one process whose sockets are on show; empty for all.
    const QString &processFilter() const { return m_processFilter; }

    void setProcessFilter(const QString &pid);

public Q_SLOTS:

    void refreshPorts() { refresh(); }

    /// Shows the sockets of this process only.
    void showPorts(qint64 pid);

protected:
    void read(const Server &server) override;
    void applyFilter() override;
    Message emptiness() const override;

    void forget() override { setProcessFilter({}); }

private:
    static RecordTableDeclaration<PortInfo> declaration(SectionNavigation &navigation);

    RecordTableModel<PortInfo> m_table;
    QString m_processFilter;
};
