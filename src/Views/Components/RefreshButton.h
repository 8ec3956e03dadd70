#pragma once

#include <QPushButton>

class Motion;
class Theme;

/// A button with a round arrow that turns while a refresh runs. Meanwhile pressing it does nothing; it keeps the
/// keyboard, which a disabled button would lose.
class RefreshButton : public QPushButton
{
    Q_OBJECT

public:
    /// `help` is the tooltip and the name, for instance "Refresh packages"; empty: "Refresh".
    explicit RefreshButton(const Theme &theme, const QString &help = {}, QWidget *parent = nullptr);

    void setRefreshing(bool isRefreshing);

    bool isRefreshing() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void refreshRequested();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    Motion *m_motion;
};
