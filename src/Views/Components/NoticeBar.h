#pragma once

#include <QStringList>
#include <QWidget>

class ElidedLabel;
class Theme;

/// One line at the window's top that tells what the operator should know and need not act on. Further notices wait
/// until the one on show is dismissed. Without a notice it takes no room.
class NoticeBar : public QWidget
{
    Q_OBJECT

public:
    explicit NoticeBar(const Theme &theme, QWidget *parent = nullptr);

    /// Shows or queues a sentence; an empty one, or one that is there already, is ignored.
    void add(const QString &notice);

    QStringList notices() const { return m_notices; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void dismiss();
    void showFirst();

    const Theme &m_theme;
    ElidedLabel *m_text;
    QStringList m_notices;
};
