#include "Views/Terminal/TerminalFindField.h"

#include "TerminalEmulator/Engine/Terminal.h"
#include "Views/Components/Labels.h"
#include "Views/Terminal/HostedTerminalView.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kFieldWidth = 200;
constexpr int kButtonWidth = 28;

const QColor &dimColor(const Theme &theme)
{
    return theme.tokens().dim;
}

QPushButton *makeButton(IconName icon, const QString &name, const Theme &theme, QWidget *parent)
{
    auto *const button = new QPushButton(parent);
    setButtonKind(*button, ButtonKind::Quiet);
    button->setIcon(Icons::icon(icon, theme));
    button->setIconSize({12, 12});
    button->setFixedSize(kButtonWidth, Metrics::kControlHeight);
    button->setAccessibleName(name);
    button->setToolTip(name);
    return button;
}

} // namespace

TerminalFindField::TerminalFindField(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_field(new QLineEdit(this))
    , m_count(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Dim, this))
    , m_previous(makeButton(IconName::ChevronUp, tr("Previous hit (Return)"), theme, this))
    , m_next(makeButton(IconName::ChevronDown, tr("Next hit (Shift+Return)"), theme, this))
{
    m_field->setPlaceholderText(tr("Find in scrollback"));
    m_field->setAccessibleName(tr("Find in scrollback"));
    m_field->setToolTip(tr("Find in scrollback (Ctrl+Shift+F)"));
    m_field->setClearButtonEnabled(true);
    m_field->addAction(Icons::icon(IconName::Search, theme, dimColor), QLineEdit::LeadingPosition);
    m_field->setFixedWidth(kFieldWidth);
    m_field->installEventFilter(this);

    auto *const line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(4);
    line->addWidget(m_count);
    line->addSpacing(4);
    line->addWidget(m_field);
    line->addWidget(m_previous);
    line->addWidget(m_next);

    connect(m_field, &QLineEdit::textChanged, this, &TerminalFindField::search);
    connect(m_previous, &QPushButton::clicked, this, [this] { find(true); });
    connect(m_next, &QPushButton::clicked, this, [this] { find(false); });
    showCount();
}

void TerminalFindField::setTerminal(HostedTerminalView *terminal)
{
    if (m_terminal == terminal) {
        return;
    }
    if (m_terminal) {
        m_terminal->disconnect(this);
        m_terminal->setSearch({});
    }
    m_terminal = terminal;
    if (m_terminal) {
        connect(m_terminal, &HostedTerminalView::searchChanged, this, &TerminalFindField::showCount);
    }
    search();
}

void TerminalFindField::start()
{
    m_field->setFocus(Qt::ShortcutFocusReason);
    m_field->selectAll();
}

QString TerminalFindField::countText() const
{
    return m_count->text();
}

void TerminalFindField::search()
{
    if (m_terminal) {
        vt::SearchQuery query;
        query.text = m_field->text().toStdString();
        m_terminal->setSearch(query);
    }
    showCount();
}

void TerminalFindField::showCount()
{
    const int hits = m_terminal ? m_terminal->hitCount() : 0;
    const bool isSearching = m_terminal && !m_field->text().isEmpty();
    QString text;
    if (isSearching) {
        const QLocale locale;
        text = hits == 0 ? tr("No hits")
                         : tr("%1 of %2").arg(locale.toString(m_terminal->currentHit()), locale.toString(hits));
    }
    m_count->setText(text);
    m_previous->setVisible(isSearching);
    m_next->setVisible(isSearching);
    m_previous->setEnabled(hits > 0);
    m_next->setEnabled(hits > 0);
}

void TerminalFindField::find(bool isUpwards)
{
    if (m_terminal && isUpwards) {
        m_terminal->findPrevious();
    } else if (m_terminal) {
        m_terminal->findNext();
    }
}

bool TerminalFindField::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_field && event->type() == QEvent::KeyPress) {
        const auto &key = static_cast<const QKeyEvent &>(*event);
        if (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter) {
            find(!key.modifiers().testFlag(Qt::ShiftModifier));
            return true;
        }
        if (key.key() == Qt::Key_Escape) {
            m_field->clear();
            Q_EMIT finished();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
