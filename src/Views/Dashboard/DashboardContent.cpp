#include "Views/Dashboard/DashboardContent.h"

#include "Views/Components/Card.h"
#include "Views/Components/Disclosure.h"
#include "Views/Components/KeyValueGrid.h"
#include "Views/Components/Labels.h"
#include "Views/Components/UsageBar.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Dashboard/GPUDeviceList.h"
#include "Views/Dashboard/MonitoringCards.h"
#include "Views/Dashboard/StorageDeviceTable.h"

#include <QGridLayout>
#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype kEqualCards = 6; // up to so many file systems the other card is made as high as theirs

KeyValueGrid::Rows rowsOf(const SystemInfo &info)
{
    const auto tr = [](const char *text) { return DashboardContent::tr(text); };
    const QString cores = info.cpuCount.isEmpty() ? QString() : tr("%1 vCPUs").arg(info.cpuCount);
    return {{tr("Hostname"), info.hostname},  {tr("OS"), info.osVersion},        {tr("Kernel"), info.kernel},
            {tr("Uptime"), info.uptime},      {tr("CPU"), info.cpuInfo},         {tr("CPU Cores"), cores},
            {tr("Memory"), info.memoryTotal}, {tr("Load Avg"), info.loadAverage}};
}

} // namespace

DashboardContent::DashboardContent(const Theme &theme, DashboardViewModel &model, QWidget *parent)
    : QScrollArea(parent)
    , m_theme(theme)
    , m_model(model)
    , m_trouble(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Dim))
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(tr("Dashboard"));

    auto *body = new QWidget;
    const int margin = Metrics::kPageMargin - Card::kShadow;
    auto *column = new QVBoxLayout(body);
    column->setContentsMargins(margin, 14, margin, margin);
    column->setSpacing(Metrics::kCardGap - 2 * Card::kShadow);
    m_trouble->setWordWrap(true);
    m_trouble->setSelectable();
    m_trouble->setContentsMargins(Card::kShadow, 0, Card::kShadow, 4);
    m_trouble->hide();
    column->addWidget(m_trouble);
    column->addWidget(makeCards(body));

    using Frame = Disclosure::Frame;
    addSection(*column, DashboardViewModel::kStorageDevices,
               new Disclosure(theme, tr("Storage Devices"), Frame::Card, [&theme, &model](QWidget *place) {
                   return new StorageDeviceTable(theme, model, place);
               }));
    addSection(*column, DashboardViewModel::kGPUDevices,
               new Disclosure(theme, tr("Graphics Processing Units"), Frame::Card,
                              [&theme, &model](QWidget *place) { return new GPUDeviceList(theme, model, place); }));
    addSection(*column, DashboardViewModel::kMonitoring,
               new Disclosure(theme, tr("Real-time Monitoring"), Frame::None,
                              [&theme, &model](QWidget *place) { return new MonitoringCards(theme, model, place); }));
    column->addStretch();
    setWidget(body);

    connect(&model, &DashboardViewModel::changed, this, &DashboardContent::update);
    connect(&model, &DashboardViewModel::expandedSectionsChanged, this, &DashboardContent::followSections);
    followSections();
    update();
}

QWidget *DashboardContent::makeCards(QWidget *parent)
{
    auto *cards = new QWidget(parent);
    m_information = new Card(m_theme, tr("System Information"), cards);
    m_facts = new KeyValueGrid(m_theme, m_information);
    m_information->content().addWidget(m_facts);
    m_information->content().addStretch();
    m_fileSystemsCard = new Card(m_theme, tr("Filesystems"), cards);
    m_moreFileSystems = new TextLabel(m_theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, m_fileSystemsCard);
    m_moreFileSystems->hide();
    m_fileSystemsCard->content().addWidget(m_moreFileSystems);
    m_fileSystemsCard->content().addStretch();

    auto *grid = new QGridLayout(cards);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(Metrics::kCardGap - 2 * Card::kShadow);
    grid->setColumnStretch(0, 21);
    grid->setColumnStretch(1, 20);
    grid->addWidget(m_information, 0, 0);
    grid->addWidget(m_fileSystemsCard, 0, 1);
    return cards;
}

void DashboardContent::addSection(QVBoxLayout &column, const QString &key, Disclosure *section)
{
    column.addWidget(section);
    m_sections.append({key, section});
    connect(section, &Disclosure::toggleRequested, &m_model,
            [&model = m_model, key](bool isExpanded) { model.setExpanded(key, isExpanded); });
}

QString DashboardContent::trouble() const
{
    return m_trouble->text();
}

Disclosure &DashboardContent::section(const QString &key) const
{
    return *std::ranges::find(m_sections, key, &std::pair<QString, Disclosure *>::first)->second;
}

void DashboardContent::followSections()
{
    for (const auto &[key, section] : m_sections) {
        section->setExpanded(m_model.isExpanded(key));
    }
}

void DashboardContent::update()
{
    if (m_model.systemInfo()) {
        showFacts();
    }
    QString trouble;
    if (m_model.connection() == DashboardViewModel::Connection::Failed) {
        trouble =
            QStringList{m_model.connectionErrorMessage(), m_model.connectionErrorDetail()}.join(u'\n').trimmed();
    } else if (m_model.refreshError()) {
        trouble = m_model.refreshError()->isEmpty() ? tr("The last refresh failed")
                                                    : tr("The last refresh failed: %1").arg(*m_model.refreshError());
    }
    m_trouble->setText(trouble);
    m_trouble->setVisible(!trouble.isEmpty());
    section(DashboardViewModel::kMonitoring).setNote(m_model.monitoringNote());
}

void DashboardContent::showFacts()
{
    const SystemInfo &info = *m_model.systemInfo();
    m_facts->setRows(rowsOf(info));
    showFileSystems(info);
    section(DashboardViewModel::kStorageDevices).setCount(info.storageDevices ? info.storageDevices->size() : -1);
}

void DashboardContent::showFileSystems(const SystemInfo &info)
{
    QList<DiskInfo> disks = DashboardViewModel::sortedDiskUsage(info.diskUsage);
    const qsizetype more = disks.size() - kMostLines;
    m_moreFileSystems->setText(tr("... and %1 more").arg(more));
    m_moreFileSystems->setVisible(more > 0);
    const bool isLong = disks.size() > kEqualCards;
    m_information->parentWidget()->layout()->setAlignment(m_information, isLong ? Qt::AlignTop : Qt::Alignment());
    disks = disks.first(std::min(disks.size(), kMostLines));
    while (m_fileSystems.size() > disks.size()) {
        delete m_fileSystems.takeLast();
    }
    while (m_fileSystems.size() < disks.size()) {
        auto *bar = new UsageBar(m_theme, m_fileSystemsCard);
        m_fileSystemsCard->content().insertWidget(m_fileSystemsCard->content().count() - 2, bar);
        m_fileSystems.append(bar);
    }
    for (qsizetype i = 0; i < disks.size(); ++i) {
        const DiskInfo &disk = disks.at(i);
        const QString percent = disk.usePercent;
        m_fileSystems.at(i)->setUsage(disk.mountPoint, disk.used + u" / "_s + disk.size, u'(' + percent + u')',
                                      QString(percent).remove(u'%').toDouble());
    }
}
