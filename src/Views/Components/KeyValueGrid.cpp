#include "Views/Components/KeyValueGrid.h"

#include "Views/Components/Labels.h"

#include <QGridLayout>

using namespace Qt::StringLiterals;

KeyValueGrid::KeyValueGrid(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_layout(new QGridLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setVerticalSpacing(8);
    m_layout->setHorizontalSpacing(16);
    m_layout->setColumnMinimumWidth(0, 70);
    m_layout->setColumnStretch(1, 1);
}

void KeyValueGrid::setRows(const Rows &rows)
{
    while (m_labels.size() > rows.size()) {
        const auto [key, value] = m_labels.takeLast();
        delete key;
        delete value;
    }
    while (m_labels.size() < rows.size()) {
        auto *key = new TextLabel(m_theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, this);
        auto *value = new ElidedLabel(m_theme, TextStyle::Detail, TextLabel::Shade::Text, Qt::ElideRight, this);
        const auto row = static_cast<int>(m_labels.size());
        m_layout->addWidget(key, row, 0);
        m_layout->addWidget(value, row, 1);
        m_labels.append({key, value});
    }
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const auto &[key, value] = rows.at(i);
        m_labels.at(i).first->setText(key);
        m_labels.at(i).second->setFullText(value);
        m_labels.at(i).second->setAccessibleName(key + u": "_s + m_labels.at(i).second->text());
    }
}

KeyValueGrid::Rows KeyValueGrid::rows() const
{
    Rows rows;
    for (const auto &[key, value] : m_labels) {
        rows.append({key->text(), value->text()});
    }
    return rows;
}
