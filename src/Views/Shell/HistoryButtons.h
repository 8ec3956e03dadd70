#pragma once

#include <QWidget>

class ContentViewModel;
class QPushButton;
class Theme;

/// "Go Back" and "Go Forward".
class HistoryButtons : public QWidget
{
    Q_OBJECT

public:
    /// Both outlive the buttons.
    HistoryButtons(const Theme &theme, ContentViewModel &model, QWidget *parent = nullptr);

    QPushButton &back() const { return *m_back; }

    QPushButton &forward() const { return *m_forward; }

private:
    void update();

    ContentViewModel &m_model;
    QPushButton *m_back;
    QPushButton *m_forward;
};
