#include "Views/Ports/PortsViewModel.h"

#include "Helpers/Text.h"
#include "Services/Ports/OpenPorts.h"
#include "Views/Components/SectionNavigation.h"

using namespace Qt::StringLiterals;

namespace
{

bool hasProcess(const PortInfo &port)
{
    return Text::decimalInteger(port.pid).value_or(0) > 0;
}

QString processText(const PortInfo &port)
{
    return port.pid.isEmpty() ? port.processName : u"%1 (%2)"_s.arg(port.processName, port.pid);
}

std::optional<ToneName> stateTone(const PortInfo &port)
{
    const QString state = port.state.toLower().replace(u'-', u'_'); // ss and netstat differ in it
    if (state == "listen"_L1) {
        return ToneName::Green;
    }
    if (state == "established"_L1 || state == "estab"_L1) {
        return ToneName::Blue;
    }
    return state == "close_wait"_L1 || state == "time_wait"_L1 ? std::optional(ToneName::Orange) : std::nullopt;
}

std::optional<ToneName> categoryTone(const PortInfo &port)
{
    switch (color(port.portCategory())) {
    case SemanticColor::Blue:
        return ToneName::Blue;
    case SemanticColor::Green:
        return ToneName::Green;
    case SemanticColor::Orange:
    case SemanticColor::Yellow:
        return ToneName::Orange;
    case SemanticColor::Purple:
    case SemanticColor::Indigo:
        return ToneName::Purple;
    case SemanticColor::Red:
        return ToneName::Red;
    case SemanticColor::Cyan:
    case SemanticColor::Mint:
        return ToneName::Accent;
    case SemanticColor::Gray:
    case SemanticColor::Secondary:
        break;
    }
    return ToneName::Gray;
}

} // namespace

PortsViewModel::PortsViewModel(const MonitoredServer &server, SectionNavigation &navigation,
                               std::chrono::milliseconds interval, QObject *parent)
    : TableSectionViewModel(server,
                            {.title = tr("Ports"),
                             .search = tr("Search ports, processes, protocols..."),
                             .loading = tr("Loading ports..."),
                             .failure = {tr("Failed to Load Ports"), tr("Unable to retrieve port list"), {}}},
                            interval, parent)
    , m_table(declaration(navigation))
{
    setTable(m_table, {tr("All"), tr("Listening"), tr("Established"), tr("Web"), tr("Database"), tr("System")});
    connect(&navigation, &SectionNavigation::portsRequested, this, &PortsViewModel::showPorts);
}

RecordTableDeclaration<PortInfo> PortsViewModel::declaration(SectionNavigation &navigation)
{
    using Column = RecordColumn<PortInfo>;
    return {
        .name = tr("Ports"),
        .identity =
            [](const PortInfo &port) {
                QString identity;
                identity.reserve(64); // most fit; one piece of memory for each of thousands
                for (const QString *part : {&port.protocolType, &port.localAddress, &port.localPort,
                                            &port.foreignAddress, &port.foreignPort, &port.pid}) {
                    identity.append(*part).append(u' ');
                }
                return identity;
            },
        .rowIdentifier = [](const PortInfo &port) { return u"row_port_"_s + port.localPort; },
        .columns = {Column{.title = tr("Protocol"), .text = &PortInfo::protocolType, .width = 90},
                    Column{.title = tr("Port"),
                           .text = &PortInfo::localPort,
                           .sortKey = &PortInfo::localPortInt,
                           .align = CellAlign::Right,
                           .width = 80},
                    Column{.title = tr("Address"),
                           .text = &PortInfo::localAddress,
                           .style = CellStyle::Mono,
                           .elide = Qt::ElideMiddle,
                           .width = 220},
                    Column{.title = tr("State"), .text = &PortInfo::state, .width = 120, .tone = &stateTone},
                    Column{.title = tr("Process"), .text = &processText, .stretches = true},
                    Column{.title = tr("Category"),
                           .text = [](const PortInfo &port) { return rawText(port.portCategory()); },
                           .style = CellStyle::Pill,
                           .width = 120,
                           .tone = &categoryTone}},
        .actions = {{.label = tr("Show Process"),
                     .icon = IconName::Info,
                     .isDefault = true,
                     .isOffered = &hasProcess,
                     .run = [&navigation](const PortInfo &port) { navigation.showProcess(port.pid.toLongLong()); }}},
        .sortColumn = 1,
    };
}

bool PortsViewModel::matchesSearch(const PortInfo &port) const
{
    const QString &text = searchText();
    return text.isEmpty() || port.localPort.contains(text) || port.processName.contains(text, Qt::CaseInsensitive) ||
           port.protocolType.contains(text, Qt::CaseInsensitive) || port.state.contains(text, Qt::CaseInsensitive);
}

bool PortsViewModel::matchesFilter(const PortInfo &port) const
{
    switch (activeFilter()) {
    case PortFilter::All:
        return true;
    case PortFilter::Listening:
        return port.state.toLower() == "listen"_L1;
    case PortFilter::Established:
        return port.state.toLower() == "established"_L1;
    case PortFilter::Web:
        return port.portCategory() == PortCategory::Web;
    case PortFilter::Database:
        return port.portCategory() == PortCategory::Database;
    case PortFilter::System:
        return port.portCategory() == PortCategory::System;
    }
    return true;
}

void PortsViewModel::read(const Server &server)
{
    load(OpenPorts::getPorts(monitored().manager, server),
         [this](QList<PortInfo> ports) { m_table.setRecords(std::move(ports)); });
}

void PortsViewModel::applyFilter()
{
    m_table.setFilter([this](const PortInfo &port) {
        return (m_processFilter.isEmpty() || port.pid == m_processFilter) && matchesFilter(port) &&
               matchesSearch(port);
    });
}

TableSectionViewModel::Message PortsViewModel::emptiness() const
{
    if (!m_processFilter.isEmpty() && searchText().isEmpty() && activeFilter() == PortFilter::All) {
        return {tr("No Results"),
                tr("No listed port names process %1. Of the processes that share a port only one is named, and to "
                   "logins other than root only their own.")
                    .arg(m_processFilter),
                {}};
    }
    return {tr("No Results"), noMatch(tr("No ports match '%1'"), tr("The server lists no open ports")), {}};
}

void PortsViewModel::setProcessFilter(const QString &pid)
{
    if (std::exchange(m_processFilter, pid) != pid) {
        applyFilter();
    }
}

void PortsViewModel::showPorts(qint64 pid)
{
    setSearchText({});
    setActiveFilterIndex(0);
    setProcessFilter(QString::number(pid));
}
