#pragma once

#include <QColor>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QtPlugin>

class QWidget;

/// The curves of a chart, drawn by Qt Charts. They are behind this interface because loading that library, and Qt's
/// for OpenGL with it, takes time and memory, which a start that shows no chart must not pay: what implements it is a
/// library of its own, which ChartLibrary loads.
class ChartSurface
{
public:
    struct Curve {
        QColor line;
        QColor fill;           ///< of the area below; invalid for none
        QList<QPointF> points; ///< finite, from left to right

        bool operator==(const Curve &) const = default;
    };

    struct Picture {
        QColor grid;
        double width = 1;  ///< the x of the right edge; that of the left one is 0
        double height = 1; ///< the y of the upper edge; that of the lower one is 0
        QList<Curve> curves;
    };

    ChartSurface() = default;
    ChartSurface(const ChartSurface &) = delete;
    ChartSurface &operator=(const ChartSurface &) = delete;
    virtual ~ChartSurface() = default;

    /// What the curves are drawn on. It belongs to the parent that it was made with, and the surface goes with it. It
    /// takes no mouse and no keyboard.
    virtual QWidget *widget() = 0;

    /// Shows `picture` in place of the one before.
    virtual void draw(const Picture &picture) = 0;

    /// Where the picture's edges are, in the widget's coordinates.
    virtual QRectF plotArea() const = 0;
};

class ChartFactory
{
public:
    ChartFactory() = default;
    ChartFactory(const ChartFactory &) = delete;
    ChartFactory &operator=(const ChartFactory &) = delete;
    virtual ~ChartFactory() = default;

    virtual ChartSurface *makeSurface(QWidget *parent) = 0;
};

Q_DECLARE_INTERFACE(ChartFactory, "Tarnwell.ChartFactory/1")
