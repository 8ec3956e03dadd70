#pragma once

#include <QWidget>

class QHBoxLayout;
class QPainter;
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

    /// At the right end of the title's line.
    void addToTitle(QWidget *widget);

    /// The surface of a card, for other widgets that look like one; `rect` includes the room for the shadow.
    static void paintSurface(QPainter &painter, const QRect &rect, const Theme &theme);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    TextLabel *m_title;
    QHBoxLayout *m_titleLine;
    QVBoxLayout *m_content;
};
