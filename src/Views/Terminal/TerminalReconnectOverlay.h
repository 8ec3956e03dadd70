#pragma once

#include <QWidget>

class QPushButton;
class TextLabel;
class Theme;

/// Stands over a terminal whose session has ended, and offers another one. The terminal around it can still be read.
class TerminalReconnectOverlay : public QWidget
{
    Q_OBJECT

public:
    explicit TerminalReconnectOverlay(const Theme &theme, QWidget *parent = nullptr);

    void setServerName(const QString &name);

    /// While a new session begins.
    void setReconnecting(bool isReconnecting);

    QPushButton &button() const { return *m_button; }

Q_SIGNALS:
    void reconnectRequested();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    TextLabel *m_text;
    QPushButton *m_button;
};
