#include "Views/Terminal/TerminalTabs.h"

#include "Views/Components/PlainText.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/Shaping.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QPainter>
#include <QPushButton>
#include <QScopedValueRollback>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype kLongestTitle = 32;
constexpr int kHeight = 32;
constexpr int kPadding = 12;
constexpr int kUnderline = 2;

} // namespace

TerminalTabs::TerminalTabs(const Theme &theme, GlobalTerminalSessionManager &terminals, const QUuid &serverId,
                           QWidget *parent)
    : QTabBar(parent)
    , m_theme(theme)
    , m_terminals(terminals)
    , m_serverId(serverId)
{
    setAccessibleName(tr("Terminals"));
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

QSize TerminalTabs::tabSizeHint(int index) const
{
    const int button = tabButton(index, RightSide) ? tabButton(index, RightSide)->width() + 4 : 0;
    return {fontMetrics().horizontalAdvance(shownText(index)) + 2 * kPadding + button, kHeight};
}

QString TerminalTabs::shownText(int index) const
{
    return tabText(index).replace(u"&&"_s, u"&"_s);
}

// Flat, as the rest of the window: the current one is underlined.
void TerminalTabs::paintEvent(QPaintEvent *)
{
    const Tokens &t = m_theme.tokens();
    QPainter painter(this);
    painter.fillRect(rect(), t.surface);
    painter.fillRect(0, height() - 1, width(), 1, t.line);
    for (int i = 0; i < count(); ++i) {
        const QRect tab = tabRect(i);
        const bool isCurrent = i == currentIndex();
        painter.setPen(isCurrent ? t.text : t.dim);
        const QString text = shownText(i);
        painter.setFont(Shaping::fit(font(), text));
        painter.drawText(tab.adjusted(kPadding, 0, 0, 0), Qt::AlignVCenter | Qt::TextSingleLine, text);
        if (isCurrent) {
            painter.fillRect(tab.left(), tab.bottom() - kUnderline + 1, tab.width(), kUnderline, t.accent.color);
        }
        if (isCurrent && hasFocus()) {
            TarnwellStyle::drawFocusRing(painter, QRectF(tab).adjusted(1, 1, -1, -3), Metrics::kControlRadius,
                                         t.accent.color);
        }
    }
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
    setTabText(index, (hasNews ? u"\u2022 "_s : QString()) + PlainText::withoutMnemonic(text));
    setTabToolTip(index, PlainText::toolTip(title));
    setAccessibleTabName(index, hasNews ? tr("%1, with new output").arg(text) : text);
}
