#include "Views/Components/AlertDialog.h"

#include "Views/Components/Labels.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace
{

constexpr int kMargin = 24;

} // namespace

AlertDialog::AlertDialog(const Theme &theme, const Content &content, QWidget *parent)
    : ModalWindow(theme, content.title, parent)
    , m_safeButton(content.safeButton)
{
    setAccessibleDescription(content.text);

    auto *title = new TextLabel(theme, TextStyle::Title, content.title, TextLabel::Shade::Text, this);
    title->setWordWrap(true);
    auto *text = new TextLabel(theme, TextStyle::Body, content.text, TextLabel::Shade::Text, this);
    text->setWordWrap(true);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, 20, kMargin, 20);
    column->setSpacing(12);
    column->addWidget(title);
    column->addWidget(text);
    if (content.extra) {
        column->addWidget(content.extra);
    }
    column->addSpacing(8);

    auto *line = new QHBoxLayout;
    line->setSpacing(8);
    line->addStretch();
    for (qsizetype i = 0; i < content.buttons.size(); ++i) {
        auto *button = new QPushButton(content.buttons.at(i).text, this);
        setButtonKind(*button, content.buttons.at(i).kind);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, i] { answer(i); });
        line->addWidget(button);
        m_buttons.append(button);
    }
    column->addLayout(line);
    m_buttons.at(m_safeButton)->setDefault(true);
    m_buttons.at(m_safeButton)->setFocus();
    setFixedWidth(kContentWidth + 2 * kMargin);
}

void AlertDialog::reject()
{
    answer(m_safeButton);
}

void AlertDialog::answer(qsizetype button)
{
    if (!std::exchange(m_isAnswered, true)) {
        done(static_cast<int>(button));
        Q_EMIT answered(button);
    }
}
