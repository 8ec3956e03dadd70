#pragma once

#include <QTabBar>
#include <QUuid>

class GlobalTerminalSessionManager;
class Theme;

/// The terminals of one server, when there are more than one. A dot marks those in which something happened while
/// they were not on show. The first has no closing button: it ends with the connection to its server.
class TerminalTabs : public QTabBar
{
    Q_OBJECT

public:
    TerminalTabs(const Theme &theme, GlobalTerminalSessionManager &terminals, const QUuid &serverId,
                 QWidget *parent = nullptr);

    /// Shows the terminals of the moment.
    void refresh();

Q_SIGNALS:
    void terminalChosen(const QUuid &terminalId);
    void closeRequested(const QUuid &terminalId);

protected:
    QSize tabSizeHint(int index) const override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString shownText(int index) const;
    void addCloseButton(int index, const QUuid &terminalId);
    void showTab(int index, const QUuid &terminalId);

    const Theme &m_theme;
    GlobalTerminalSessionManager &m_terminals;
    QUuid m_serverId;
    bool m_isRefreshing = false;
};
