#include "Views/Dashboard/StorageDeviceTable.h"

#include "Views/Components/Labels.h"
#include "Views/Components/Pill.h"
#include "Views/Dashboard/DashboardViewModel.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kRowHeight = 30;
constexpr int kColumns = 5;
constexpr int kSizeColumn = 1;

QString mountPoints(const StorageDevice &device)
{
    QStringList points;
    for (const std::optional<QString> &point : device.mountpoints) {
        if (point && !point->isEmpty()) {
            points.append(*point);
        }
    }
    return points.join(u", "_s);
}

} // namespace

StorageDeviceTable::StorageDeviceTable(const Theme &theme, const DashboardViewModel &model, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_model(model)
    , m_layout(new QGridLayout(this))
    , m_note(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, this))
{
    setAccessibleName(tr("Storage Devices"));
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setHorizontalSpacing(24);
    m_layout->setVerticalSpacing(0);
    static constexpr int kStretches[kColumns]{3, 1, 2, 3, 6};
    const QString titles[kColumns]{tr("Device"), tr("Size"), tr("Type"), tr("Status"), tr("Mount Point")};
    for (int i = 0; i < kColumns; ++i) {
        m_heads.append(new TextLabel(theme, TextStyle::Caption, titles[i], TextLabel::Shade::Dim, this));
        m_layout->addWidget(m_heads.constLast(), 0, i);
        m_layout->setColumnStretch(i, kStretches[i]);
    }
    m_heads.at(kSizeColumn)->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_layout->addWidget(m_note, kMostLines + 1, 0, 1, kColumns);
    m_note->setMinimumHeight(kRowHeight);
    connect(&model, &DashboardViewModel::changed, this, &StorageDeviceTable::followModel);
    followModel();
}

void StorageDeviceTable::followModel()
{
    const auto &info = m_model.systemInfo();
    const bool isKnown = info && info->storageDevices;
    const QList<StorageDevice> devices = isKnown ? *info->storageDevices : QList<StorageDevice>();
    const qsizetype shown = std::min(devices.size(), kMostLines);
    while (m_rows.size() > shown) {
        removeRow();
    }
    while (m_rows.size() < shown) {
        addRow();
    }
    for (qsizetype i = 0; i < shown; ++i) {
        fill(m_rows.at(i), devices.at(i));
    }
    for (TextLabel *head : m_heads) {
        head->setVisible(shown > 0);
    }
    m_layout->setRowMinimumHeight(0, shown > 0 ? kRowHeight : 0);
    m_note->setVisible(shown == 0 || devices.size() > shown);
    m_note->setText(shown > 0 ? tr("... and %1 more").arg(devices.size() - shown)
                    : isKnown ? tr("No storage devices found")
                              : tr("The server has not told its storage devices"));
    update();
}

void StorageDeviceTable::removeRow()
{
    const Row row = m_rows.takeLast();
    m_layout->setRowMinimumHeight(static_cast<int>(m_rows.size()) + 1, 0);
    delete row.name;
    delete row.size;
    delete row.type;
    delete row.status;
    delete row.mountPoint;
}

void StorageDeviceTable::addRow()
{
    const auto line = static_cast<int>(m_rows.size()) + 1; // below the heads
    Row row{.name = new ElidedLabel(m_theme, TextStyle::Mono, TextLabel::Shade::Text, Qt::ElideMiddle, this),
            .size = new ElidedLabel(m_theme, TextStyle::Detail, TextLabel::Shade::Text, Qt::ElideRight, this),
            .type = new ElidedLabel(m_theme, TextStyle::Detail, TextLabel::Shade::Dim, Qt::ElideRight, this),
            .status = new QWidget(this),
            .readOnly = nullptr,
            .removable = nullptr,
            .mountPoint = new ElidedLabel(m_theme, TextStyle::Mono, TextLabel::Shade::Text, Qt::ElideMiddle, this)};
    auto *pills = new QHBoxLayout(row.status);
    pills->setContentsMargins(0, 0, 0, 0);
    pills->setSpacing(4);
    row.readOnly = new Pill(m_theme, Pill::Dot::Without, row.status);
    row.readOnly->setState(tr("RO"), ToneName::Orange);
    row.removable = new Pill(m_theme, Pill::Dot::Without, row.status);
    row.removable->setState(tr("Removable"), ToneName::Blue);
    pills->addWidget(row.readOnly);
    pills->addWidget(row.removable);
    pills->addStretch();
    m_layout->setRowMinimumHeight(line, kRowHeight);
    row.size->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_layout->addWidget(row.name, line, 0);
    m_layout->addWidget(row.size, line, 1);
    m_layout->addWidget(row.type, line, 2);
    m_layout->addWidget(row.status, line, 3);
    m_layout->addWidget(row.mountPoint, line, 4);
    m_rows.append(row);
}

void StorageDeviceTable::fill(const Row &row, const StorageDevice &device)
{
    row.name->setFullText(device.name);
    row.size->setFullText(device.size);
    row.type->setFullText(device.type);
    row.readOnly->setVisible(device.readonly);
    row.removable->setVisible(device.removable);
    row.mountPoint->setFullText(mountPoints(device));
}

QList<QStringList> StorageDeviceTable::rows() const
{
    QList<QStringList> rows;
    for (const Row &row : m_rows) {
        QStringList status;
        for (const Pill *pill : {row.readOnly, row.removable}) {
            if (!pill->isHidden()) {
                status.append(pill->text());
            }
        }
        rows.append(QStringList{row.name->text(), row.size->text(), row.type->text(), status.join(u' '),
                                row.mountPoint->text()});
    }
    return rows;
}

void StorageDeviceTable::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    for (const Row &row : m_rows) {
        const int top = row.name->geometry().center().y() - kRowHeight / 2;
        painter.fillRect(0, top, width(), 1, m_theme.tokens().soft);
    }
}
