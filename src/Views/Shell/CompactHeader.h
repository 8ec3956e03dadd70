#pragma once

#include "Views/Components/Panel.h"

class ContentViewModel;
class SectionStrip;
class ServerMenuButton;
class ServerStore;

/// What a narrow window has instead of its lists: the servers as a menu, the steps of the history, the sections.
class CompactHeader : public Panel
{
    Q_OBJECT

public:
    /// All of it outlives the header.
    CompactHeader(const Theme &theme, ServerStore &store, ContentViewModel &model, QWidget *parent = nullptr);

    ServerMenuButton &servers() const { return *m_servers; }

    SectionStrip &sections() const { return *m_sections; }

private:
    ServerMenuButton *m_servers;
    SectionStrip *m_sections;
};
