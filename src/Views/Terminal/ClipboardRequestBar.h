#pragma once

#include "Views/Components/Panel.h"

class ElidedLabel;

/// The question whether a server may put a text into the clipboard. The text is shown as it is, shortened.
class ClipboardRequestBar : public Panel
{
    Q_OBJECT

public:
    explicit ClipboardRequestBar(const Theme &theme, QWidget *parent = nullptr);

    void ask(const QString &serverName, const QString &text);

Q_SIGNALS:
    void refused();
    void allowedOnce();
    void allowedAlways();

private:
    ElidedLabel *m_question;
    ElidedLabel *m_preview;
};
