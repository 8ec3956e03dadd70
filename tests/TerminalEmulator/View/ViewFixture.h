#pragma once

#include "TerminalEmulator/Engine/Terminal.h"
#include "TerminalEmulator/View/TerminalWidget.h"

#include <QByteArray>
#include <QEvent>
#include <QFont>
#include <QPaintEvent>
#include <QTest>

#include <functional>

/// Keeps what a view sends, and answers its questions as told.
class Recorder : public vt::TerminalDelegate
{
public:
    QByteArray sent;
    QList<QSize> sizes;
    bool allowsClipboard = false;
    QStringList clipboard;

    void terminalSends(const QByteArray &bytes) override { sent += bytes; }

    void terminalResized(int columns, int rows, QSize) override { sizes.append(QSize(columns, rows)); }

    bool terminalMayWriteClipboard(const QString &text) override
    {
        clipboard.append(text);
        return allowsClipboard;
    }

    QByteArray take() { return std::exchange(sent, {}); }
};

/// Counts how often a widget is painted, and what of it.
class PaintCount : public QObject
{
public:
    explicit PaintCount(QWidget &widget) { widget.installEventFilter(this); }

    int count = 0;
    QRegion region;

    void reset()
    {
        count = 0;
        region = {};
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            ++count;
            region += static_cast<QPaintEvent *>(event)->region();
        }
        return false;
    }
};

/// A view of 40x10 cells, shown and focused.
struct ViewFixture {
    vt::TerminalWidget view;
    Recorder recorder;

    ViewFixture()
    {
        QFont font(QStringLiteral("DejaVu Sans Mono"));
        font.setPointSizeF(10);
        view.setTerminalFont(font);
        vt::TerminalColors colors;
        colors.foreground = Qt::white;
        colors.background = Qt::black;
        view.setColors(colors);
        view.resizeGrid(40, 10);
        view.setDelegate(&recorder);
        view.resize(view.sizeHint());
        view.show();
        view.activateWindow();
        view.setFocus();
        [[maybe_unused]] const bool active = QTest::qWaitForWindowActive(&view);
        settle();
    }

    ~ViewFixture() { view.setDelegate(nullptr); }

    /// Lets frames and timers of the view run out.
    static void settle() { QTest::qWait(60); }

    QString row(int number) const
    {
        std::string text;
        for (int column = 0; column < view.columns(); ++column) {
            view.terminal().appendText(view.terminal().cell(number, column), text);
        }
        return QString::fromStdString(text).trimmed();
    }

    /// The middle of a cell, in the widget's coordinates.
    QPoint at(int column, int row) const
    {
        const QRect room = view.contentsRect();
        const QSize hint = view.sizeHint().shrunkBy(view.contentsMargins());
        return room.topLeft() + QPoint(hint.width() * (2 * column + 1) / (2 * view.columns()),
                                       hint.height() * (2 * row + 1) / (2 * view.rows()));
    }
};
