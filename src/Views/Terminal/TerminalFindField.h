#pragma once

#include <QPointer>
#include <QWidget>

class HostedTerminalView;
class QLineEdit;
class QPushButton;
class TextLabel;
class Theme;

/// Looks for a text in one terminal's screen and scrollback: all hits are marked and counted, and one of them is the
/// current one. Return goes to the hit above, Shift+Return to the one below, Escape ends the search.
class TerminalFindField : public QWidget
{
    Q_OBJECT

public:
    explicit TerminalFindField(const Theme &theme, QWidget *parent = nullptr);

    /// Where to look from now on; the same text is looked for there. May be null.
    void setTerminal(HostedTerminalView *terminal);

    /// Takes the keyboard, with the text selected.
    void start();

    QLineEdit &field() const { return *m_field; }

    /// "3 of 17", or nothing without a search.
    QString countText() const;

Q_SIGNALS:
    /// The search ended by Escape.
    void finished();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void search();
    void showCount();
    void find(bool isUpwards);

    QPointer<HostedTerminalView> m_terminal;
    QLineEdit *m_field;
    TextLabel *m_count;
    QPushButton *m_previous;
    QPushButton *m_next;
};
