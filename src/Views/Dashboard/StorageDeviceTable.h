#pragma once

#include "Models/SystemInfo.h"

#include <QList>
#include <QWidget>

class DashboardViewModel;
class ElidedLabel;
class Pill;
class QGridLayout;
class TextLabel;
class Theme;

/// The block devices of a server, one a line, in the order in which the server listed them.
class StorageDeviceTable : public QWidget
{
    Q_OBJECT

public:
    /// Devices that get a line of their own; a server may tell of any number.
    static constexpr qsizetype kMostLines = 200;

    /// Both outlive it.
    StorageDeviceTable(const Theme &theme, const DashboardViewModel &model, QWidget *parent = nullptr);

    /// What stands in the rows, column by column.
    QList<QStringList> rows() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Row {
        ElidedLabel *name;
        ElidedLabel *size;
        ElidedLabel *type;
        QWidget *status;
        Pill *readOnly;
        Pill *removable;
        ElidedLabel *mountPoint;
    };

    void followModel();
    void addRow();
    void removeRow();
    static void fill(const Row &row, const StorageDevice &device);

    const Theme &m_theme;
    const DashboardViewModel &m_model;
    QGridLayout *m_layout;
    TextLabel *m_note; ///< in place of rows, or how many more there are
    QList<TextLabel *> m_heads;
    QList<Row> m_rows;
};
