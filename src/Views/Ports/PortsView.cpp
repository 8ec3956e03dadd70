#include "Views/Ports/PortsView.h"

#include "Views/Components/Labels.h"
#include "Views/Components/Panel.h"
#include "Views/Ports/PortsViewModel.h"

#include <QHBoxLayout>
#include <QPushButton>

PortsView::PortsView(const Theme &theme, PortsViewModel &model, QWidget *parent)
    : TableSectionView(theme, model, parent)
    , m_model(model)
    , m_bar(new Panel(theme, &Tokens::surface, Qt::BottomEdge, this))
    , m_process(new TextLabel(theme, TextStyle::Body, {}, TextLabel::Shade::Text, m_bar))
    , m_allPorts(new QPushButton(tr("Show All Ports"), m_bar))
{
    auto *line = new QHBoxLayout(m_bar);
    line->setContentsMargins(Metrics::kPageMargin, 8, Metrics::kPageMargin, 8);
    line->addWidget(m_process);
    line->addStretch();
    line->addWidget(m_allPorts);
    addBar(m_bar);
    connect(&model, &TableSectionViewModel::changed, this, &PortsView::updateBar);
    connect(m_allPorts, &QPushButton::clicked, &model, [&model] { model.setProcessFilter({}); });
    updateBar();
}

void PortsView::updateBar()
{
    m_bar->setVisible(!m_model.processFilter().isEmpty());
    m_process->setText(tr("Only the ports of process %1").arg(m_model.processFilter()));
}
