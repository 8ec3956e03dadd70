#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

class QAbstractButton;
class Theme;

/// One choice of a few, all of them in sight: a row of joined segments. One stop for Tab; the arrow keys, Home and
/// End move the choice. To assistive programs it is a group of radio buttons. Where there is too little room the
/// segments become narrower, and a text that is cut stands in its segment's tooltip.
class SegmentedControl : public QWidget
{
    Q_OBJECT

public:
    /// `name` is for assistive programs: what is chosen here.
    SegmentedControl(const Theme &theme, const QString &name, const QStringList &options = {},
                     QWidget *parent = nullptr);

    /// Replaces the options; the first one is chosen. Options that are there already change nothing.
    void setOptions(const QStringList &options);

    QStringList options() const;

    int current() const { return m_current; } ///< -1 without options

    /// Emits currentChanged if the choice changes. A place outside of the options is ignored.
    void setCurrent(int current);

Q_SIGNALS:
    void currentChanged(int current);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    class Segment;

    const Theme &m_theme;
    QList<Segment *> m_segments;
    int m_current = -1;
};
