#include "Views/Shell/CompactHeader.h"

#include "Views/Shell/HistoryButtons.h"
#include "Views/Shell/SectionStrip.h"
#include "Views/Shell/ServerMenuButton.h"
#include "Views/Theme/Tokens.h"

#include <QHBoxLayout>

CompactHeader::CompactHeader(const Theme &theme, ServerStore &store, ContentViewModel &model, QWidget *parent)
    : Panel(theme, &Tokens::side, Qt::BottomEdge, parent)
    , m_servers(new ServerMenuButton(theme, store, model, this))
    , m_sections(new SectionStrip(theme, model, this))
{
    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(16, 9, 16, 10);
    line->setSpacing(10);
    line->addWidget(m_servers);
    line->addWidget(new HistoryButtons(theme, model, this));
    line->addWidget(m_sections);
    line->addStretch(1);
}
