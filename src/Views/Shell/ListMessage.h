#pragma once

#include <QWidget>

class QPushButton;
class TextLabel;
class Theme;

/// What stands in a narrow column in the place of an empty list.
class ListMessage : public QWidget
{
    Q_OBJECT

public:
    explicit ListMessage(const Theme &theme, QWidget *parent = nullptr);

    /// `text` and `buttonText` may be empty.
    void setMessage(const QString &title, const QString &text, const QString &buttonText);

    QString title() const;
    QString text() const;

    QPushButton &button() const { return *m_button; }

private:
    TextLabel *m_title;
    TextLabel *m_text;
    QPushButton *m_button;
};
