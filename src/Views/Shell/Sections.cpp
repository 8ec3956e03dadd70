#include "Views/Shell/Sections.h"

#include "Views/Components/Labels.h"
#include "Views/Components/Panel.h"
#include "Views/Components/Pill.h"
#include "Views/Components/SectionPage.h"
#include "Views/Dashboard/DashboardView.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Ports/PortsView.h"
#include "Views/Ports/PortsViewModel.h"
#include "Views/Processes/ProcessesView.h"
#include "Views/Processes/ProcessesViewModel.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Terminal/TerminalView.h"
#include "Views/Users/UsersView.h"
#include "Views/Users/UsersViewModel.h"

#include <QCoreApplication>
#include <QKeySequence>
#include <QVBoxLayout>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

QVBoxLayout *columnOf(SectionPage &page)
{
    auto *column = new QVBoxLayout(&page);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    return column;
}

SectionPage *makeDashboard(const Theme &theme, const SectionServices &services, const Server &server, QWidget *parent)
{
    auto *page = new SectionPage(parent);
    auto *model = new DashboardViewModel({services.manager, services.store, services.clock}, server);
    auto *view = new DashboardView(theme, *model, page);
    model->setParent(page); // behind the view, which goes first
    columnOf(*page)->addWidget(view);
    QObject::connect(page, &SectionPage::activeChanged, view, &SectionPage::setActive);
    return page;
}

SectionPage *makeTerminal(const Theme &theme, const SectionServices &services, const Server &server, QWidget *parent)
{
    return services.terminals ? new TerminalView(theme, services.store, *services.terminals, server, parent)
                              : nullptr;
}

// The model goes behind the view, whose widgets look at it to the last.
template<class View, class Model>
SectionPage *viewOf(Model *model, const Theme &theme, QWidget *parent)
{
    auto *view = new View(theme, *model, parent);
    model->setParent(view);
    return view;
}

MonitoredServer monitored(const SectionServices &services, const Server &server)
{
    return {services.manager, services.store, services.clock, server.id};
}

SectionPage *makeProcesses(const Theme &theme, const SectionServices &services, const Server &server, QWidget *parent)
{
    return viewOf<ProcessesView>(new ProcessesViewModel(monitored(services, server), *services.navigation), theme,
                                 parent);
}

SectionPage *makePorts(const Theme &theme, const SectionServices &services, const Server &server, QWidget *parent)
{
    return viewOf<PortsView>(new PortsViewModel(monitored(services, server), *services.navigation), theme, parent);
}

SectionPage *makeUsers(const Theme &theme, const SectionServices &services, const Server &server, QWidget *parent)
{
    return viewOf<UsersView>(new UsersViewModel(monitored(services, server)), theme, parent);
}

constexpr auto kTitleOnly = nullptr;

constexpr std::array<Section, kMainTabCount> kSections{{
    {MainTab::Dashboard, QT_TRANSLATE_NOOP("MainTab", "Dashboard"), IconName::House, &makeDashboard},
    {MainTab::Terminal, QT_TRANSLATE_NOOP("MainTab", "Terminal"), IconName::Terminal, &makeTerminal},
    {MainTab::Processes, QT_TRANSLATE_NOOP("MainTab", "Processes"), IconName::BarChart, &makeProcesses},
    {MainTab::Services, QT_TRANSLATE_NOOP("MainTab", "Services"), IconName::Gear, kTitleOnly},
    {MainTab::Docker, QT_TRANSLATE_NOOP("MainTab", "Containers"), IconName::Box, kTitleOnly},
    {MainTab::Ports, QT_TRANSLATE_NOOP("MainTab", "Ports"), IconName::Globe, &makePorts},
    {MainTab::Users, QT_TRANSLATE_NOOP("MainTab", "Users"), IconName::People, &makeUsers},
    {MainTab::Packages, QT_TRANSLATE_NOOP("MainTab", "Packages"), IconName::Parcel, kTitleOnly},
    {MainTab::Files, QT_TRANSLATE_NOOP("MainTab", "Files"), IconName::Folder, kTitleOnly},
    {MainTab::Cron, QT_TRANSLATE_NOOP("MainTab", "Cron"), IconName::Clock, kTitleOnly},
    {MainTab::Logs, QT_TRANSLATE_NOOP("MainTab", "Logs"), IconName::Document, kTitleOnly},
}};

SectionPage *makeTitlePage(const QString &title, const Theme &theme, QWidget *parent)
{
    auto *page = new SectionPage(parent);
    auto *header = new Panel(theme, &Tokens::surface, Qt::BottomEdge, page);
    auto *line = new QVBoxLayout(header);
    line->setContentsMargins(Metrics::kPageMargin, 14, Metrics::kPageMargin, 13);
    line->addWidget(new TextLabel(theme, TextStyle::Title, title, TextLabel::Shade::Text, header));
    auto *column = columnOf(*page);
    column->addWidget(header);
    column->addStretch();
    return page;
}

} // namespace

const Section &Sections::of(MainTab tab)
{
    return kSections.at(static_cast<std::size_t>(tab));
}

QString Sections::title(MainTab tab)
{
    return QCoreApplication::translate("MainTab", of(tab).title);
}

QString Sections::shortcutText(MainTab tab)
{
    const auto digit = shortcutDigit(tab);
    return digit ? QKeySequence(static_cast<int>(Qt::CTRL) | (static_cast<int>(Qt::Key_0) + *digit))
                       .toString(QKeySequence::NativeText)
                 : QString();
}

QString Sections::toolTip(MainTab tab)
{
    const QString shortcut = shortcutText(tab);
    return shortcut.isEmpty() ? title(tab) : title(tab) + u" ("_s + shortcut + u')';
}

QString Sections::described(SectionMark mark)
{
    switch (mark) {
    case SectionMark::News:
        return QCoreApplication::translate("Sections", "New output");
    case SectionMark::Attention:
        return QCoreApplication::translate("Sections", "Asks for attention");
    case SectionMark::None:
        break;
    }
    return {};
}

void Sections::paintMark(QPainter &painter, const Theme &theme, SectionMark mark, const QPointF &iconTopRight)
{
    if (mark != SectionMark::None) {
        const Tokens &t = theme.tokens();
        StateDot::paint(painter, iconTopRight + QPointF(0, 2),
                        mark == SectionMark::Attention ? t.orange.color : t.accent.color);
    }
}

Sections::IconPreparation::IconPreparation(const QColor &color, qreal pixelRatio)
    : m_color(color)
    , m_pictures(std::async(std::launch::async, [color, pixelRatio] {
        std::vector<QImage> pictures;
        for (const Section &section : kSections) {
            pictures.push_back(Icons::picture(section.icon, color, Metrics::kIconSize, pixelRatio));
        }
        return pictures;
    }))
{
}

Sections::IconPreparation::~IconPreparation()
{
    const std::vector<QImage> pictures = m_pictures.get();
    for (size_t i = 0; i < pictures.size(); ++i) {
        Icons::keep(kSections[i].icon, m_color, Metrics::kIconSize, pictures[i]);
    }
}

SectionPage *Sections::makePage(MainTab tab, const Theme &theme, const SectionServices &services,
                                const Server &server, QWidget *parent)
{
    const Section &section = of(tab);
    SectionPage *page = section.make ? section.make(theme, services, server, parent) : nullptr;
    if (!page) {
        page = makeTitlePage(title(tab), theme, parent);
    }
    page->setAccessibleName(title(tab));
    return page;
}
