#pragma once

#include "Views/Theme/Tokens.h"

#include <QWidget>

class QPushButton;
class TextLabel;
class Theme;

/// What came of something, told where it was asked for: words on a soft ground, what the other side said in the
/// monospaced font, and a button if there is something to do about it. The words can be selected and copied.
class InlineNotice : public QWidget
{
    Q_OBJECT

public:
    explicit InlineNotice(const Theme &theme, QWidget *parent = nullptr);

    /// `detail` and `buttonText` may be empty. An empty `text` hides the notice.
    void setNotice(ToneName tone, const QString &text, const QString &detail = {}, const QString &buttonText = {});

    QString text() const;
    QString detail() const;

    ToneName tone() const { return m_tone; }

    QPushButton &button() const { return *m_button; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void colorWords();

    const Theme &m_theme;
    ToneName m_tone = ToneName::Gray;
    TextLabel *m_text;
    TextLabel *m_detail;
    QPushButton *m_button;
};
