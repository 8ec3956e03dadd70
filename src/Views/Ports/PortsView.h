#pragma once

#include "Views/Components/TableSectionView.h"

class Panel;
class PortsViewModel;
class QPushButton;
class TextLabel;

/// The sockets of a server: the table, and what ends the view on those of one process.
class PortsView : public TableSectionView
{
    Q_OBJECT

public:
    /// Both outlive the view.
    PortsView(const Theme &theme, PortsViewModel &model, QWidget *parent = nullptr);

    QPushButton &allPortsButton() const { return *m_allPorts; }

private:
    void updateBar();

    PortsViewModel &m_model;
    Panel *m_bar;
    TextLabel *m_process;
    QPushButton *m_allPorts;
};
