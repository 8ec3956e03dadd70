#include "Views/Terminal/TerminalTabs.h"

#include "Views/Components/PlainText.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QPushButton>
#include <QScopedValueRollback>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype kLongestTitle = 32;

} // namespace

TerminalTabs::TerminalTabs(const Theme &theme, GlobalTerminalSessionManager &terminals, const QUuid &serverId,
                           QWidget *parent)
    : QTabBar(parent)
    , m_theme(theme)
    , m_terminals(terminals)
    , m_serverId(serverId)
{
    setAccessibleName(tr("Terminals"));
    setDocumentMode(true);
    setExpanding(false);
    setDrawBase(false);
    setElideMode(Qt::ElideRight);
    setUsesScrollButtons(true);
    setFont(theme.font(TextStyle::Detail));
    connect(this, &QTabBar::currentChanged, this, [this](int index) {
        if (!m_isRefreshing && index >= 0) {
            Q_EMIT terminalChosen(tabData(index).toUuid());
        }
    });
    const auto follow = [this](const QUuid &changed) {
        if (changed == m_serverId) {
            refresh();
        }
    };
    connect(&terminals, &GlobalTerminalSessionManager::terminalsChanged, this, follow);
    connect(&terminals, &GlobalTerminalSessionManager::newsChanged, this, follow);
    refresh();
}

void TerminalTabs::refresh()
{
    const QScopedValueRollback refreshing(m_isRefreshing, true);
    const QList<QUuid> terminals = m_terminals.terminalsOf(m_serverId);
    for (int i = count() - 1; i >= 0; --i) {
        if (!terminals.contains(tabData(i).toUuid())) {
            removeTab(i);
        }
    }
    for (int i = 0; i < terminals.size(); ++i) {
        const QUuid id = terminals.at(i);
        if (i >= count() || tabData(i).toUuid() != id) {
            insertTab(i, {});
            setTabData(i, id);
            addCloseButton(i, id);
        }
        showTab(i, id);
    }
    setCurrentIndex(static_cast<int>(terminals.indexOf(m_terminals.currentTerminal(m_serverId))));
    setVisible(terminals.size() > 1);
}

void TerminalTabs::addCloseButton(int index, const QUuid &terminalId)
{
    if (terminalId == m_serverId) {
        return;
    }
    auto *const button = new QPushButton(this);
    setButtonKind(*button, ButtonKind::Quiet);
    button->setIcon(Icons::icon(IconName::Close, m_theme));
    button->setIconSize({8, 8});
    button->setFixedSize(18, 18);
    button->setAccessibleName(tr("Close Terminal"));
    button->setToolTip(tr("Close Terminal"));
    connect(button, &QPushButton::clicked, this, [this, terminalId] { Q_EMIT closeRequested(terminalId); });
    setTabButton(index, RightSide, button);
}

void TerminalTabs::showTab(int index, const QUuid &terminalId)
{
    const QString title = PlainText::oneLine(m_terminals.terminal(terminalId).terminal->title());
    QString text = tr("Terminal %1").arg(index + 1);
    if (!title.trimmed().isEmpty()) {
        text = title.size() > kLongestTitle ? title.left(kLongestTitle) + u'\u2026' : title;
    }
    const bool hasNews = m_terminals.terminalNews(terminalId) != TerminalNews::None;
    setTabText(index, (hasNews ? u"\u2022 "_s : QString()) + text.replace(u'&', u"&&"_s));
    setTabToolTip(index, PlainText::toolTip(title));
    setAccessibleTabName(index, hasNews ? tr("%1, with new output").arg(text) : text);
}
