#include "Views/Components/Table/RowActions.h"

#include "Views/Components/AlertDialog.h"
#include "Views/Components/PlainText.h"
#include "Views/Components/Table/TableModel.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QActionGroup>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QPlainTextEdit>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kLongestErrorEntry = 120;
constexpr int kLongestDetail = 20'000;
constexpr int kMostDetailLines = 6;

const QColor &dimColor(const Theme &theme)
{
    return theme.tokens().dim;
}

const QColor &dangerColor(const Theme &theme)
{
    return theme.tokens().red.text;
}

// All of a text of any length, in a few lines.
QWidget *detailField(const Theme &theme, const QString &text)
{
    auto *field = new QPlainTextEdit(text.left(kLongestDetail));
    field->setFont(theme.font(TextStyle::Mono));
    field->setAccessibleName(RowActions::tr("Details"));
    field->setReadOnly(true);
    field->setTabChangesFocus(true);
    field->setWordWrapMode(QTextOption::WrapAnywhere);
    field->setFrameShape(QFrame::NoFrame);
    field->viewport()->setBackgroundRole(QPalette::AlternateBase);
    const QFontMetrics metrics = field->fontMetrics();
    const int room = AlertDialog::kContentWidth - 2 * static_cast<int>(field->document()->documentMargin());
    int lines = 0;
    for (const QStringView line : QStringView(text).left(kLongestDetail).split(u'\n')) {
        lines += 1 + metrics.horizontalAdvance(line.left(1000).toString()) / room;
    }
    field->setFixedHeight(std::min(lines, kMostDetailLines) * metrics.lineSpacing() + 10);
    return field;
}

} // namespace

RowActions::RowActions(const Theme &theme, TableModel &model, QWidget &table)
    : QObject(&table)
    , m_theme(theme)
    , m_model(model)
    , m_table(table)
{
    connect(&model, &TableModel::aboutToClear, this, &RowActions::withdraw);
}

RowActions::~RowActions()
{
    delete m_menu;
    delete m_question;
}

void RowActions::perform(int row, int action)
{
    if (!m_model.isOffered(row, action) || !m_model.isEnabled(row, action)) {
        return;
    }
    const auto run = m_model.prepared(row, action);
    const std::optional<RowQuestion> question = m_model.question(row, action);
    if (question) {
        ask(*question, m_model.actions().at(action).isDestructive, run);
    } else {
        run();
    }
}

void RowActions::performDefault(int row)
{
    for (int action = 0; action < m_model.actions().size(); ++action) {
        if (m_model.actions().at(action).isDefault && m_model.isOffered(row, action)) {
            perform(row, action);
            return;
        }
    }
}

void RowActions::copy(const QList<int> &rows)
{
    if (!rows.isEmpty()) {
        QGuiApplication::clipboard()->setText(m_model.plainText(rows));
    }
}

void RowActions::popUp(const QList<int> &rows, const QPoint &globalPosition)
{
    auto *menu = new QMenu(&m_table);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    m_menu = menu;
    if (rows.size() == 1) {
        addActions(*menu, rows.constFirst());
        menu->addSeparator();
    }
    QAction *copyAction = menu->addAction(Icons::icon(IconName::Clipboard, m_theme, &dimColor), tr("Copy"));
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setEnabled(!rows.isEmpty());
    connect(copyAction, &QAction::triggered, this,
            [text = m_model.plainText(rows)] { QGuiApplication::clipboard()->setText(text); });
    addSortMenu(*menu);
    m_isMenuOpen = true;
    connect(menu, &QMenu::aboutToHide, this, [this] {
        m_isMenuOpen = false;
        Q_EMIT openChanged();
    });
    Q_EMIT openChanged();
    menu->popup(globalPosition);
}

void RowActions::addActions(QMenu &menu, int row)
{
    const QString error = m_model.errorAt(row);
    if (!error.isEmpty()) {
        const QString words = PlainText::oneLine(error).left(kLongestErrorEntry);
        menu.addAction(Icons::icon(IconName::Warning, m_theme, &dangerColor), PlainText::withoutMnemonic(words))
            ->setEnabled(false);
        menu.addSeparator();
    }
    for (int action = 0; action < m_model.actions().size(); ++action) {
        if (!m_model.isOffered(row, action)) {
            continue;
        }
        if (m_model.actions().at(action).startsGroup) {
            menu.addSeparator();
        }
        addAction(menu, row, action);
    }
}

void RowActions::addAction(QMenu &menu, int row, int action)
{
    const ActionLook &look = m_model.actions().at(action);
    auto *entry = menu.addAction(look.label);
    if (look.icon) {
        entry->setIcon(Icons::icon(*look.icon, m_theme, look.isDestructive ? &dangerColor : &dimColor));
    }
    entry->setEnabled(m_model.isEnabled(row, action));
    connect(entry, &QAction::triggered, this, [this, action, identity = m_model.identityAt(row)] {
        const int now = m_model.rowOf(identity);
        if (now >= 0) {
            perform(now, action);
        }
    });
}

void RowActions::addSortMenu(QMenu &menu)
{
    auto *sort = menu.addMenu(tr("Sort By"));
    auto *group = new QActionGroup(sort);
    for (int column = 0; column < m_model.columns().size(); ++column) {
        const ColumnLook &look = m_model.columns().at(column);
        if (look.isSortable) {
            auto *entry = group->addAction(look.title);
            entry->setCheckable(true);
            entry->setChecked(column == m_model.sortColumn());
            connect(entry, &QAction::triggered, this, [this, column] { m_model.sortBy(column); });
        }
    }
    sort->addActions(group->actions());
}

bool RowActions::isOpen() const
{
    return m_isMenuOpen || m_question;
}

// What is open is about records that are gone.
void RowActions::withdraw()
{
    if (m_menu) {
        m_menu->close();
    }
    if (m_question) {
        m_question->reject();
    }
}

void RowActions::ask(const RowQuestion &question, bool isDestructive, const std::function<void()> &run)
{
    QWidget *detail = question.detail.isEmpty() ? nullptr : detailField(m_theme, question.detail);
    auto *dialog =
        new AlertDialog(m_theme,
                        {.title = question.title,
                         .text = question.text,
                         .buttons = {{question.cancel.isEmpty() ? tr("Cancel") : question.cancel},
                                     {question.confirm, isDestructive ? ButtonKind::Danger : ButtonKind::Primary}},
                         .safeButton = 0,
                         .extra = detail},
                        &m_table);
    m_question = dialog;
    Q_EMIT openChanged();
    connect(dialog, &AlertDialog::answered, &m_model, [run, cancelled = question.cancelled](qsizetype button) {
        if (button == 1) {
            run();
        } else if (cancelled) {
            cancelled();
        }
    });
    connect(dialog, &QDialog::finished, this, [this] {
        m_question.clear();
        Q_EMIT openChanged();
    });
    dialog->open();
}
