#include "Views/Shell/HostKeyDialog.h"

#include "Helpers/OneShot.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/Labels.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

using Answer = OneShot<bool>::Completer;

enum ConflictButton : qsizetype { CopyCommand, RetryConnection, Cancel };

enum CopiedButton : qsizetype { RetryAfterCopy, CancelAfterCopy };

QString translated(const char *text)
{
    return QCoreApplication::translate("HostKeyDialog", text);
}

// The window in use, else any main one; null without windows.
QWidget *hostWindow()
{
    if (QWidget *active = QApplication::activeWindow()) {
        return active->window();
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->isVisible() && window->windowType() == Qt::Window) {
            return window;
        }
    }
    return nullptr;
}

QWidget *commandWithHint(const Theme &theme, const HostKeyConflict &conflict)
{
    auto *extra = new QWidget;
    auto *command = new QLineEdit(conflict.command, extra);
    command->setObjectName(u"command"_s);
    command->setAccessibleName(translated("Command"));
    command->setReadOnly(true);
    command->setFont(theme.font(TextStyle::Mono));
    command->setCursorPosition(0);
    auto *hint = new TextLabel(theme, TextStyle::Detail, conflict.hint, TextLabel::Shade::Dim, extra);
    hint->setWordWrap(true);

    auto *column = new QVBoxLayout(extra);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addWidget(command);
    column->addWidget(hint);
    return extra;
}

void askAfterCopy(const Theme &theme, QWidget *window, const Answer &done)
{
    AlertDialog::Content content;
    content.title = translated("Command Copied");
    content.text = translated("The ssh-keygen command has been copied to your clipboard. Run it in Terminal, then "
                              "click \"Retry Connection\".");
    content.buttons = {{translated("Retry Connection")}, {translated("Cancel")}};
    content.safeButton = CancelAfterCopy;
    auto *dialog = new AlertDialog(theme, content, window);
    QObject::connect(dialog, &AlertDialog::answered, dialog,
                     [done](qsizetype button) { done.complete(button == RetryAfterCopy); });
    dialog->open();
}

// The dialog's connection holds the answer: when the dialog goes away unanswered, so does the question.
void ask(const Theme &theme, const HostKeyConflict &conflict, const Answer &done)
{
    QWidget *window = hostWindow();
    AlertDialog::Content content;
    content.title = conflict.title;
    content.text = conflict.body;
    content.buttons = {{translated("Copy Command")}, {translated("Retry Connection")}, {translated("Cancel")}};
    content.safeButton = Cancel;
    content.extra = commandWithHint(theme, conflict);
    auto *dialog = new AlertDialog(theme, content, window);
    const QPointer<QWidget> owner(window);
    QObject::connect(dialog, &AlertDialog::answered, dialog,
                     [&theme, owner, done, command = conflict.command](qsizetype button) {
                         if (button == CopyCommand) {
                             QApplication::clipboard()->setText(command);
                             askAfterCopy(theme, owner, done);
                         } else {
                             done.complete(button == RetryConnection);
                         }
                     });
    dialog->open();
}

} // namespace

HostKeyDialog::HostKeyDialog(const Theme &theme)
    : m_theme(theme)
{
}

QCoro::Task<bool> HostKeyDialog::askToRetry(HostKeyConflict conflict)
{
    OneShot<bool> answer(false);
    ask(m_theme, conflict, answer.completer());
    return answer.wait();
}
