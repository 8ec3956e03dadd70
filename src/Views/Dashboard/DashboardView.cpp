#include "Views/Dashboard/DashboardView.h"

#include "Views/Components/Card.h"
#include "Views/Components/KeyValueGrid.h"
#include "Views/Components/Labels.h"
#include "Views/Components/ProgressLine.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/UsageBar.h"
#include "Views/Dashboard/DashboardHeader.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Dashboard/SecretForm.h"

#include <QGridLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

using Connection = DashboardViewModel::Connection;
using WantedSecret = DashboardViewModel::WantedSecret;

KeyValueGrid::Rows rowsOf(const SystemInfo &info)
{
    const auto tr = [](const char *text) { return DashboardView::tr(text); };
    const QString cores = info.cpuCount.isEmpty() ? QString() : tr("%1 vCPUs").arg(info.cpuCount);
    return {{tr("Hostname"), info.hostname},  {tr("OS"), info.osVersion},        {tr("Kernel"), info.kernel},
            {tr("Uptime"), info.uptime},      {tr("CPU"), info.cpuInfo},         {tr("CPU Cores"), cores},
            {tr("Memory"), info.memoryTotal}, {tr("Load Avg"), info.loadAverage}};
}

} // namespace

DashboardView::DashboardView(const Theme &theme, DashboardViewModel &model, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_model(model)
    , m_header(new DashboardHeader(theme, model, this))
    , m_progress(new ProgressLine(theme, this))
    , m_secretForm(new SecretForm)
{
    m_page = new StatePage(theme, makeContent(), this);
    m_page->setErrorExtra(m_secretForm);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_header);
    column->addWidget(m_progress);
    column->addWidget(m_page, 1);

    connect(&model, &DashboardViewModel::changed, this, &DashboardView::update);
    connect(m_page, &StatePage::retryRequested, this, &DashboardView::retry);
    connect(m_secretForm, &SecretForm::submitted, &model,
            [&model](const QString &secret) { model.initiateConnection(secret); });
    update();
}

QWidget *DashboardView::makeContent()
{
    auto *area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setAccessibleName(tr("Dashboard"));

    auto *body = new QWidget(area);
    auto *information = new Card(m_theme, tr("System Information"), body);
    m_facts = new KeyValueGrid(m_theme, information);
    information->content().addWidget(m_facts);
    information->content().addStretch();
    m_fileSystemsCard = new Card(m_theme, tr("Filesystems"), body);
    m_fileSystemsCard->content().addStretch();
    m_refreshError = new TextLabel(m_theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, body);
    m_refreshError->setWordWrap(true);
    m_refreshError->hide();

    const int margin = Metrics::kPageMargin - Card::kShadow;
    auto *grid = new QGridLayout;
    grid->setSpacing(Metrics::kCardGap - 2 * Card::kShadow);
    grid->setColumnStretch(0, 21);
    grid->setColumnStretch(1, 20);
    grid->addWidget(information, 0, 0);
    grid->addWidget(m_fileSystemsCard, 0, 1);
    auto *column = new QVBoxLayout(body);
    column->setContentsMargins(margin, 12, margin, margin);
    column->setSpacing(8);
    column->addWidget(m_refreshError);
    column->addLayout(grid);
    column->addStretch();
    area->setWidget(body);
    return area;
}

void DashboardView::update()
{
    m_progress->setActive(m_model.isRefreshing() || m_model.connection() == Connection::Connecting);
    if (m_model.systemInfo()) {
        showFacts();
    }
    showPage();
}

void DashboardView::showPage()
{
    const QString name = m_model.server().name;
    if (m_model.connection() == Connection::Failed) {
        showConnectionError();
    } else if (m_model.connection() == Connection::NotConnected) {
        m_page->showEmpty({tr("Not Connected"), tr("Connect to %1 to see its dashboard.").arg(name), {}},
                          tr("Connect"));
    } else if (m_model.systemInfo()) {
        m_page->showContent();
    } else if (m_model.refreshError()) {
        m_page->showError(
            {tr("System information is not available"),
             tr("%1 is connected, but it did not answer the question for its system information.").arg(name),
             *m_model.refreshError()});
    } else if (m_model.connection() == Connection::Connecting) {
        m_page->showLoading({tr("Connecting to %1").arg(name), {}, {}});
    } else {
        m_page->showLoading({tr("Loading system information"), {}, {}});
    }
}

void DashboardView::showConnectionError()
{
    const WantedSecret wanted = m_model.wantedSecret();
    const QString title = !m_model.lacksSecret()             ? tr("Connection Failed")
                          : wanted == WantedSecret::Password ? tr("Password Required")
                                                             : tr("Passphrase Required");
    m_page->showError({title, m_model.connectionErrorMessage(), {}});
    m_secretForm->setSecretName(wanted == WantedSecret::Passphrase ? tr("Passphrase") : tr("Password"));
    m_secretForm->setVisible(wanted != WantedSecret::None);
    m_page->button().setVisible(wanted == WantedSecret::None); // the form has a button of its own
}

void DashboardView::showFacts()
{
    const SystemInfo &info = *m_model.systemInfo();
    m_facts->setRows(rowsOf(info));
    const QList<DiskInfo> disks = DashboardViewModel::sortedDiskUsage(info.diskUsage);
    while (m_fileSystems.size() > disks.size()) {
        delete m_fileSystems.takeLast();
    }
    while (m_fileSystems.size() < disks.size()) {
        auto *bar = new UsageBar(m_theme, m_fileSystemsCard);
        m_fileSystemsCard->content().insertWidget(m_fileSystemsCard->content().count() - 1, bar);
        m_fileSystems.append(bar);
    }
    for (qsizetype i = 0; i < disks.size(); ++i) {
        const DiskInfo &disk = disks.at(i);
        const QString percent = disk.usePercent;
        m_fileSystems.at(i)->setUsage(disk.mountPoint, disk.used + u" / "_s + disk.size, u'(' + percent + u')',
                                      QString(percent).remove(u'%').toDouble());
    }
    m_refreshError->setVisible(m_model.refreshError().has_value());
    if (m_model.refreshError()) {
        m_refreshError->setText(tr("The last refresh failed: %1").arg(*m_model.refreshError()));
    }
}

void DashboardView::retry()
{
    if (m_model.connection() == Connection::Connected) {
        m_model.refreshSystemInfo();
    } else {
        m_model.initiateConnection();
    }
}
