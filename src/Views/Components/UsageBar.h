#pragma once

#include <QWidget>

class ElidedLabel;
class TextLabel;
class Theme;

/// How full something is: its name, the figures, and a bar that turns orange above 75 % and red above 90 %.
class UsageBar : public QWidget
{
    Q_OBJECT

public:
    enum class Name {
        Path, ///< monospaced, elided in its middle
        Words ///< dim
    };

    explicit UsageBar(const Theme &theme, QWidget *parent = nullptr, Name name = Name::Path);

    /// `figures` are dim, `emphasis` behind them is not. `percent` outside of 0 to 100 fills none or all of the bar.
    void setUsage(const QString &name, const QString &figures, const QString &emphasis, double percent);

    double percent() const { return m_percent; }

    /// The bar's colour at this percentage.
    static QColor colorFor(const Theme &theme, double percent);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    ElidedLabel *m_name;
    TextLabel *m_figures;
    TextLabel *m_emphasis;
    double m_percent = 0;
};
