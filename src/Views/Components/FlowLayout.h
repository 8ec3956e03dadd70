#pragma once

#include <QLayout>
#include <QList>

/// Puts its items side by side and goes on in the next line where one does not fit.
class FlowLayout : public QLayout
{
    Q_OBJECT

public:
    explicit FlowLayout(int spacing, QWidget *parent = nullptr);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;

    /// Like addWidget, in front of the item at `index`.
    void insertWidget(int index, QWidget *widget);

    int count() const override { return static_cast<int>(m_items.size()); }

    QLayoutItem *itemAt(int index) const override { return m_items.value(index, nullptr); }

    QLayoutItem *takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return {}; }

    bool hasHeightForWidth() const override { return true; }

    int heightForWidth(int width) const override { return arrange(QRect(0, 0, width, 0), false); }

    QSize sizeHint() const override; ///< of all in one line

    QSize minimumSize() const override;
    void setGeometry(const QRect &rect) override;

private:
    int arrange(const QRect &rect, bool moves) const;

    QList<QLayoutItem *> m_items;
};
