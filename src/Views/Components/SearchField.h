#pragma once

#include <QLineEdit>

class QAction;
class Theme;

/// A field that narrows what is on show while one types. Escape and its button clear it; an Escape in the empty field
/// belongs to whatever is around it. Arrow down and Return leave it for the list that it narrows.
class SearchField : public QLineEdit
{
    Q_OBJECT

public:
    /// `prompt` is also the name for assistive programs.
    SearchField(const Theme &theme, const QString &prompt, QWidget *parent = nullptr);

Q_SIGNALS:
    /// Return or Arrow down: the keyboard belongs to the results now.
    void left();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    QAction *m_clear;
};
