#include "Views/Dashboard/GPUDeviceList.h"

#include "Views/Components/Labels.h"
#include "Views/Components/Pill.h"
#include "Views/Components/UsageBar.h"
#include "Views/Dashboard/DashboardFigures.h"
#include "Views/Dashboard/DashboardViewModel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

/// One processor: who it is, how busy it is, and the rest in a dim line.
class GPUDeviceList::Device : public QWidget
{
public:
    Device(const Theme &theme, QWidget *parent)
        : QWidget(parent)
        , m_title(new TextLabel(theme, TextStyle::Emphasis, {}, TextLabel::Shade::Text, this))
        , m_name(new ElidedLabel(theme, TextStyle::Detail, TextLabel::Shade::Text, Qt::ElideRight, this))
        , m_vendor(new Pill(theme, Pill::Dot::Without, this))
        , m_utilization(new UsageBar(theme, this, UsageBar::Name::Words))
        , m_memory(new UsageBar(theme, this, UsageBar::Name::Words))
        , m_details(new ElidedLabel(theme, TextStyle::Detail, TextLabel::Shade::Dim, Qt::ElideRight, this))
    {
        auto *who = new QHBoxLayout;
        who->setSpacing(8);
        who->addWidget(m_title);
        who->addWidget(m_name);
        who->addWidget(m_vendor);
        who->addStretch();
        auto *bars = new QHBoxLayout;
        bars->setSpacing(24);
        bars->addWidget(m_utilization, 1);
        bars->addWidget(m_memory, 1);
        auto *column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(6);
        column->addLayout(who);
        column->addLayout(bars);
        column->addWidget(m_details);
    }

    void setDevice(const GPUDevice &gpu)
    {
        m_title->setText(DashboardFigures::gpuTitle(gpu));
        m_name->setFullText(gpu.name);
        m_vendor->setState(rawText(gpu.vendor), ToneName::Gray);
        m_utilization->setUsage(GPUDeviceList::tr("Utilization"), {},
                                DashboardFigures::utilizationText(gpu.utilization).trimmed(), gpu.utilization);
        const double memory = gpu.memoryTotal < 1
                                  ? 0
                                  : 100 * static_cast<double>(gpu.memoryUsed) / static_cast<double>(gpu.memoryTotal);
        m_memory->setUsage(GPUDeviceList::tr("Memory"), DashboardFigures::gpuMemoryText(gpu),
                           u'(' + DashboardFigures::utilizationText(memory).trimmed() + u')', memory);
        m_memory->setVisible(gpu.memoryTotal > 0);
        const QString details = DashboardFigures::gpuDetails(gpu);
        m_details->setFullText(details);
        m_details->setVisible(!details.isEmpty());
        setAccessibleName(m_title->text() + u": "_s + m_name->text());
    }

private:
    TextLabel *m_title;
    ElidedLabel *m_name;
    Pill *m_vendor;
    UsageBar *m_utilization;
    UsageBar *m_memory;
    ElidedLabel *m_details;
};

GPUDeviceList::GPUDeviceList(const Theme &theme, const DashboardViewModel &model, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_model(model)
    , m_column(new QVBoxLayout(this))
    , m_title(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Text, this))
    , m_text(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, this))
{
    setAccessibleName(tr("Graphics Processing Units"));
    m_column->setContentsMargins(0, 2, 0, 0);
    m_column->setSpacing(4);
    m_text->setWordWrap(true);
    m_column->addWidget(m_title);
    m_column->addWidget(m_text);
    connect(&model, &DashboardViewModel::gpuMetricsChanged, this, &GPUDeviceList::followModel);
    followModel();
}

void GPUDeviceList::followModel()
{
    const auto &metrics = m_model.gpuMetrics();
    const QList<GPUDevice> gpus = metrics ? metrics->gpus : QList<GPUDevice>();
    while (m_devices.size() > gpus.size()) {
        delete m_devices.takeLast();
    }
    while (m_devices.size() < gpus.size()) {
        m_devices.append(new Device(m_theme, this));
        m_column->addWidget(m_devices.constLast());
    }
    for (qsizetype i = 0; i < gpus.size(); ++i) {
        m_devices.at(i)->setDevice(gpus.at(i));
    }
    m_column->setSpacing(gpus.isEmpty() ? 4 : 16);
    m_title->setText(metrics ? tr("No GPU devices detected") : tr("Detecting GPU devices..."));
    m_title->setVisible(gpus.isEmpty());
    m_text->setText(metrics ? tr("GPU monitoring requires compatible hardware and drivers") : QString());
    m_text->setVisible(metrics && gpus.isEmpty());
}

QString GPUDeviceList::note() const
{
    return m_devices.isEmpty() ? m_title->text() : QString();
}
