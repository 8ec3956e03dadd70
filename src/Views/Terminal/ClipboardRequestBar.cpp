#include "Views/Terminal/ClipboardRequestBar.h"

#include "Views/Components/Labels.h"
#include "Views/Components/PlainText.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace
{

constexpr qsizetype kPreview = 200;

} // namespace

ClipboardRequestBar::ClipboardRequestBar(const Theme &theme, QWidget *parent)
    : Panel(theme, &Tokens::surface, Qt::BottomEdge, parent)
    , m_question(new ElidedLabel(theme, TextStyle::Detail, TextLabel::Shade::Text, Qt::ElideRight, this))
    , m_preview(new ElidedLabel(theme, TextStyle::Mono, TextLabel::Shade::Dim, Qt::ElideRight, this))
{
    auto *const refuse = new QPushButton(tr("Don't Copy"), this);
    auto *const once = new QPushButton(tr("Copy"), this);
    auto *const always = new QPushButton(tr("Always in This Terminal"), this);
    connect(refuse, &QPushButton::clicked, this, &ClipboardRequestBar::refused);
    connect(once, &QPushButton::clicked, this, &ClipboardRequestBar::allowedOnce);
    connect(always, &QPushButton::clicked, this, &ClipboardRequestBar::allowedAlways);

    auto *const words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(m_question);
    words->addWidget(m_preview);
    auto *const line = new QHBoxLayout(this);
    line->setContentsMargins(Metrics::kPageMargin, 8, 16, 9);
    line->setSpacing(8);
    line->addLayout(words, 1);
    line->addWidget(refuse);
    line->addWidget(once);
    line->addWidget(always);
    hide();
}

void ClipboardRequestBar::ask(const QString &serverName, const QString &text)
{
    const QString length = QLocale().toString(text.size());
    m_question->setFullText(
        tr("%1 wants to copy a text to the clipboard (%2 characters)").arg(PlainText::oneLine(serverName), length));
    m_preview->setFullText(PlainText::oneLine(text.left(kPreview)));
    setAccessibleName(m_question->text());
    show();
}
