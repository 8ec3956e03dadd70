#pragma once

#include <QListView>

/// A list without a frame or a ground of its own, whose rows show where the pointer is.
class SidebarList : public QListView
{
    Q_OBJECT

public:
    explicit SidebarList(const QString &accessibleName, QWidget *parent = nullptr)
        : QListView(parent)
    {
        setAccessibleName(accessibleName);
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollMode(ScrollPerPixel);
        setMouseTracking(true);
        viewport()->setAutoFillBackground(false);
        setEditTriggers(NoEditTriggers);
    }
};
