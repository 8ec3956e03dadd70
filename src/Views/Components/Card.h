#pragma once

#include <QWidget>

class QVBoxLayout;
class TextLabel;
class Theme;

/// A rounded surface with a title, and content below it.
class Card : public QWidget
{
    Q_OBJECT

public:
    /// Room that a card keeps around its visible edge, for its shadow.
    static constexpr int kShadow = 2;

    Card(const Theme &theme, const QString &title, QWidget *parent = nullptr);

    /// Where the content goes.
    QVBoxLayout &content() { return *m_content; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    TextLabel *m_title;
    QVBoxLayout *m_content;
};
