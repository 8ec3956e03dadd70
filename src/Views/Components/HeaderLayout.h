#pragma once

#include <QLayout>

/// A title at the left, controls at the right, and between them what narrows the content: in one line while it fits.
/// Where it doesn't, search and filter have a second line of their own, and a third one where even that is too short.
class HeaderLayout : public QLayout
{
    Q_OBJECT

public:
    enum class Role { Title, Search, Filter, Control };

    static constexpr int kGap = 12;
    static constexpr int kLineGap = 10;
    static constexpr int kSearchWidth = 220;
    static constexpr int kLeastSearchWidth = 140;

    explicit HeaderLayout(QWidget *parent);
    ~HeaderLayout() override;

    /// The order of the calls is the order within a role, unless one is to stand before another.
    void add(QWidget *widget, Role role, const QWidget *before = nullptr);

    void addItem(QLayoutItem *item) override;
    int count() const override;
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
    void setGeometry(const QRect &rect) override;

private:
    struct Entry {
        QLayoutItem *item;
        Role role;
    };

    QList<QLayoutItem *> shown(Role role) const;
    int arrange(const QRect &rect, bool isReal) const; // the height

    QList<Entry> m_entries;
};
