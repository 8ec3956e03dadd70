#pragma once

#include <QList>
#include <QWidget>
#include <utility>

class ElidedLabel;
class QGridLayout;
class TextLabel;
class Theme;

/// Facts, one a line: a dim label and its value. New values take the place of old ones without a new layout.
class KeyValueGrid : public QWidget
{
    Q_OBJECT

public:
    using Rows = QList<std::pair<QString, QString>>;

    explicit KeyValueGrid(const Theme &theme, QWidget *parent = nullptr);

    void setRows(const Rows &rows);

    /// What stands in a row, for tests and for copying.
    Rows rows() const;

private:
    const Theme &m_theme;
    QGridLayout *m_layout;
    QList<std::pair<TextLabel *, ElidedLabel *>> m_labels;
};
