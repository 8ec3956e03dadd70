#pragma once

#include "Views/Components/Panel.h"

class DashboardViewModel;
class ElidedLabel;
class Pill;
class QPushButton;

/// Name, address and state of the server, and what can be done with the connection.
class DashboardHeader : public Panel
{
    Q_OBJECT

public:
    /// `model` outlives the header.
    DashboardHeader(const Theme &theme, DashboardViewModel &model, QWidget *parent = nullptr);

    Pill &state() const { return *m_state; }

    QPushButton &disconnectButton() const { return *m_disconnect; }

private:
    QPushButton *addButton(class QHBoxLayout &line, const QString &text);
    void update();

    DashboardViewModel &m_model;
    ElidedLabel *m_name;
    ElidedLabel *m_address;
    Pill *m_state;
    QPushButton *m_refresh;
    QPushButton *m_connect;
    QPushButton *m_disconnect;
};
