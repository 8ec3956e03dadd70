#pragma once

#include "Views/Shell/ServerListModel.h"
#include "Views/Theme/Theme.h"

#include <QStyledItemDelegate>

/// Paints a server's row: state, name, address, and its labels as pills.
class ServerRowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit ServerRowDelegate(const Theme &theme, QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    /// One of two sizes: with or without labels.
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    /// The row that a menu is open for is painted like one that is pointed at.
    void setMarked(const QModelIndex &index) { m_marked = index; }

    /// Of the dot that shows a server's state.
    static QColor dotColor(const Theme &theme, ServerListModel::State state);

private:
    void paintGround(QPainter &painter, const QStyleOptionViewItem &option, const QRect &ground, bool isMarked) const;
    void paintLabels(QPainter &painter, const QRect &line, const QStringList &labels) const;

    const Theme &m_theme;
    QPersistentModelIndex m_marked;
    QFont m_nameFont;
    QFont m_addressFont;
    QFont m_labelFont;
    int m_nameHeight;
    int m_addressHeight;
    int m_labelHeight;
};
