#include "Views/Shell/HistoryButtons.h"

#include "Views/Shell/ContentViewModel.h"
#include "Views/Theme/Icons.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace
{

QPushButton *addButton(QHBoxLayout &line, IconName icon, const Theme &theme, const QString &name)
{
    auto *button = new QPushButton(line.parentWidget());
    button->setIcon(Icons::icon(icon, theme));
    button->setIconSize({12, 12});
    button->setFixedSize(28, 26);
    button->setAccessibleName(name);
    button->setToolTip(name);
    line.addWidget(button);
    return button;
}

} // namespace

HistoryButtons::HistoryButtons(const Theme &theme, ContentViewModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
{
    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(6);
    m_back = addButton(*line, IconName::Back, theme, tr("Go Back"));
    m_forward = addButton(*line, IconName::Forward, theme, tr("Go Forward"));
    connect(m_back, &QPushButton::clicked, &model, &ContentViewModel::goBack);
    connect(m_forward, &QPushButton::clicked, &model, &ContentViewModel::goForward);
    connect(&model.navigationHistory(), &NavigationHistory::changed, this, &HistoryButtons::update);
    update();
}

void HistoryButtons::update()
{
    m_back->setEnabled(m_model.navigationHistory().canGoBack());
    m_forward->setEnabled(m_model.navigationHistory().canGoForward());
}
