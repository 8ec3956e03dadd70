#include "App/Gallery/GalleryTable.h"

#include "Helpers/ByteCount.h"
#include "Views/Components/AutoRefreshToggle.h"
#include "Views/Components/RefreshButton.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Components/SectionScaffold.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/Components/StatusLine.h"
#include "Views/Components/Table/RecordTable.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

using Column = RecordColumn<GalleryRecord>;

std::optional<ToneName> toneOf(const GalleryRecord &record)
{
    return record.state == "running"_L1  ? ToneName::Green
           : record.state == "paused"_L1 ? ToneName::Orange
           : record.state == "failed"_L1 ? ToneName::Red
                                         : ToneName::Gray;
}

RecordTableDeclaration<GalleryRecord> declaration()
{
    const auto isRunning = [](const GalleryRecord &r) { return r.state == "running"_L1; };
    return {
        .name = GalleryTable::tr("Invented records"),
        .identity = &GalleryRecord::pid,
        .rowIdentifier = [](const GalleryRecord &r) { return u"row_"_s + r.pid; },
        .columns = {Column{.title = GalleryTable::tr("PID"),
                           .text = &GalleryRecord::pid,
                           .sortKey = [](const GalleryRecord &r) { return r.pid.toInt(); },
                           .align = CellAlign::Right,
                           .width = 80},
                    Column{.title = GalleryTable::tr("Name"),
                           .text = &GalleryRecord::name,
                           .style = CellStyle::Emphasis,
                           .width = 170,
                           .icon = [](const GalleryRecord &) { return IconName::File; }},
                    Column{.title = GalleryTable::tr("State"),
                           .text = &GalleryRecord::state,
                           .style = CellStyle::Pill,
                           .width = 110,
                           .tone = toneOf},
                    Column{.title = GalleryTable::tr("CPU %"),
                           .text = [](const GalleryRecord &r) { return QString::number(r.cpu, 'f', 1); },
                           .sortKey = &GalleryRecord::cpu,
                           .align = CellAlign::Right,
                           .width = 90,
                           .tone = [](const GalleryRecord &r) -> std::optional<ToneName> {
                               return r.cpu > 10 ? std::optional(ToneName::Orange) : std::nullopt;
                           }},
                    Column{.title = GalleryTable::tr("Memory"),
                           .text = [](const GalleryRecord &r) { return fileByteCount(r.bytes); },
                           .sortKey = &GalleryRecord::bytes,
                           .align = CellAlign::Right,
                           .width = 100},
                    Column{.title = GalleryTable::tr("Command"),
                           .text = &GalleryRecord::command,
                           .style = CellStyle::Mono,
                           .elide = Qt::ElideMiddle,
                           .stretches = true}},
        .actions = {{.label = GalleryTable::tr("Stop"),
                     .icon = IconName::Stop,
                     .isButton = true,
                     .isOffered = isRunning,
                     .run = [](const GalleryRecord &) {}},
                    {.label = GalleryTable::tr("Start"),
                     .icon = IconName::Play,
                     .isButton = true,
                     .isOffered = [isRunning](const GalleryRecord &r) { return !isRunning(r); },
                     .run = [](const GalleryRecord &) {}},
                    {.label = GalleryTable::tr("Delete"),
                     .icon = IconName::Delete,
                     .isDestructive = true,
                     .isButton = true,
                     .startsGroup = true,
                     .isEnabled = [](const GalleryRecord &r) { return r.pid != u"1"_s; },
                     .question =
                         [](const GalleryRecord &r) {
                             return RowQuestion{
                                 .title = GalleryTable::tr("Delete"),
                                 .text = GalleryTable::tr("Are you sure you want to delete '%1'?").arg(r.name),
                                 .confirm = GalleryTable::tr("Delete"),
                                 .detail = r.command};
                         },
                     .run = [](const GalleryRecord &) {}}},
        .sortColumn = 3,
        .sortOrder = Qt::DescendingOrder,
    };
}

QList<GalleryRecord> records()
{
    return {
        {u"18231"_s, u"database"_s, u"running"_s, 42.1, 2'112'000'000, u"/usr/lib/postgresql/16/bin/postgres"_s},
        {u"1733"_s, u"web-app"_s, u"running"_s, 12.4, 1'051'000'000, u"/usr/bin/node /srv/www/app/server.js"_s},
        {u"902"_s, u"containers"_s, u"running"_s, 3.2, 147'800'000, u"/usr/bin/dockerd -H fd://"_s},
        {u"2210"_s, u"web-server"_s, u"paused"_s, 2.8, 103'100'000, u"nginx: worker process"_s},
        {u"2211"_s, u"mailer"_s, u"failed"_s, 2.7, 102'600'000,
         u"/opt/mailer/releases/2026-11-20-081502/bin/mailer --config /etc/mailer/production/outgoing.conf --verbose "
         "--log-file /var/log/mailer/outgoing.log"_s},
        {u"441"_s, u"journal"_s, u"running"_s, 1.1, 46'300'000, u"/lib/systemd/systemd-journald"_s},
        {u"688"_s, u"<b>cron</b>"_s, u"stopped"_s, 0.1, 900'000, u"/usr/sbin/cron -f"_s},
        {u"1"_s, u"init"_s, u"running"_s, 0, 13'500'000, u"/sbin/init"_s},
    };
}

} // namespace

GalleryTable::GalleryTable(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_model(declaration())
{
    m_model.setRecords(records());
    m_model.setBusy(u"902"_s, true);
    m_model.setError(u"2210"_s, tr("kill: (2210): Operation not permitted"));

    auto *table = new RecordTable(theme, m_model);
    auto *section = new SectionScaffold(theme, tr("A Section"), table, this);
    SearchField &search = section->header().addSearch(tr("Search records..."));
    SegmentedControl &filter = section->header().addFilter(tr("Filter"), {tr("All"), tr("Running"), tr("Stopped")});
    section->header().addAutoRefresh().setChecked(true);
    connect(&section->header().addRefresh(), &RefreshButton::refreshRequested, this, [this] {
        QList<GalleryRecord> now = m_model.records();
        for (GalleryRecord &record : now) {
            record.cpu = record.pid.toInt() * 37 % 101 / (record.cpu + 1);
        }
        m_model.setRecords(now);
    });
    const auto narrow = [this, &search, &filter] {
        m_model.setFilter([text = search.text(), wanted = filter.current()](const GalleryRecord &r) {
            const bool isRunning = r.state == "running"_L1;
            return r.command.contains(text, Qt::CaseInsensitive) && (wanted == 0 || (wanted == 1) == isRunning);
        });
    };
    const auto count = [this, section] {
        section->status().setStats({{tr("Showing:"), QString::number(m_model.shownCount()), {}},
                                    {tr("Total"), QString::number(m_model.total()), {}},
                                    {tr("Failed"), u"1"_s, ToneName::Red}});
    };
    connect(&search, &QLineEdit::textChanged, this, narrow);
    connect(&filter, &SegmentedControl::currentChanged, this, narrow);
    connect(&m_model, &TableModel::updated, this, count);
    connect(&m_model, &TableModel::holdingBackChanged, &section->status(), &StatusLine::setOrderHeld);
    section->status().setNote(tr("Updated just now"));
    section->setRefreshing(true);

    // A held order with a row whose record is gone.
    m_model.setHeld(true);
    QList<GalleryRecord> next = records();
    next.removeIf([](const GalleryRecord &r) { return r.pid == u"441"_s; });
    next[1].cpu = 57.3;
    m_model.setRecords(next);
    m_model.requestSelection(u"1733"_s);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(section);
    setFixedHeight(420);
}
