#include "Views/Shell/ListMessage.h"

#include "Views/Components/Labels.h"

#include <QPushButton>
#include <QVBoxLayout>

ListMessage::ListMessage(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_title(new TextLabel(theme, TextStyle::Emphasis, {}, TextLabel::Shade::Text, this))
    , m_text(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Dim, this))
    , m_button(new QPushButton(this))
{
    for (TextLabel *label : {m_title, m_text}) {
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignHCenter);
        // A word that is wider than the column is cut there; it must not widen the column.
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Minimum);
    }
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(16, 0, 16, 0);
    column->setSpacing(6);
    column->addStretch(2);
    column->addWidget(m_title);
    column->addWidget(m_text);
    column->addSpacing(6);
    column->addWidget(m_button, 0, Qt::AlignHCenter);
    column->addStretch(3);
}

void ListMessage::setMessage(const QString &title, const QString &text, const QString &buttonText)
{
    m_title->setText(title);
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
    m_button->setText(buttonText);
    m_button->setVisible(!buttonText.isEmpty());
    setAccessibleName(title);
    setAccessibleDescription(text);
}

QString ListMessage::title() const
{
    return m_title->text();
}

QString ListMessage::text() const
{
    return m_text->text();
}
