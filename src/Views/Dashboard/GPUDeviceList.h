#pragma once

#include "Models/GPUMetrics.h"

#include <QList>
#include <QWidget>

class DashboardViewModel;
class QVBoxLayout;
class TextLabel;
class Theme;

/// The graphics processors of a server with what their tools tell of each, or why there are none.
class GPUDeviceList : public QWidget
{
    Q_OBJECT

public:
    /// Both outlive it.
    GPUDeviceList(const Theme &theme, const DashboardViewModel &model, QWidget *parent = nullptr);

    /// What stands there in place of devices; empty with devices.
    QString note() const;

    qsizetype count() const { return m_devices.size(); }

private:
    class Device;

    void followModel();

    const Theme &m_theme;
    const DashboardViewModel &m_model;
    QVBoxLayout *m_column;
    TextLabel *m_title;
    TextLabel *m_text;
    QList<Device *> m_devices;
};
