#include "TerminalEmulator/View/Pasting.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

#include <algorithm>

namespace vt
{

namespace
{

QString tr(const char *text, int count = -1)
{
    return QCoreApplication::translate("vt::Pasting", text, nullptr, count);
}

bool isControl(QChar each)
{
    return each.unicode() < 0x20 || (each.unicode() >= 0x7f && each.unicode() < 0xa0);
}

/// The first lines with control characters made visible.
QString preview(const QString &text)
{
    constexpr qsizetype MaxLength = 600;
    constexpr qsizetype MaxLines = 8;
    QString shown = text.left(MaxLength);
    shown.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    QStringList lines = shown.split(QLatin1Char('\n'));
    const bool cut = text.size() > MaxLength || lines.size() > MaxLines;
    lines.resize(std::min(lines.size(), MaxLines));
    shown = lines.join(QLatin1Char('\n'));
    for (QChar &each : shown) {
        // U+2400 and on are pictures of the control codes.
        each = isControl(each) && each != QLatin1Char('\n')
                   ? (each.unicode() < 0x20 ? QChar(0x2400 + each.unicode()) : QChar(0x2421))
                   : each;
    }
    return cut ? shown + QStringLiteral("\n\u2026") : shown;
}

} // namespace

bool isRiskyPaste(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar each) { return isControl(each) && each != QLatin1Char('\t'); });
}

QString shellQuoted(const QString &name)
{
    const bool plain = !name.isEmpty() && std::all_of(name.begin(), name.end(), [](QChar each) {
        return (each.unicode() < 0x80 && each.isLetterOrNumber()) || QStringLiteral("/._-+,@%:").contains(each);
    });
    if (plain) {
        return name;
    }
    QString inner = name;
    inner.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QLatin1Char('\'') + inner + QLatin1Char('\'');
}

QString pasteText(const QMimeData &data)
{
    QStringList names;
    const QList<QUrl> urls = data.urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile()) {
            names.append(shellQuoted(url.toLocalFile()));
        }
    }
    return names.isEmpty() ? data.text() : names.join(QLatin1Char(' ')) + QLatin1Char(' ');
}

void askToPaste(QWidget *parent, const QString &text, const std::function<void(bool)> &answer)
{
    auto *box = new QMessageBox(QMessageBox::Question, tr("Paste"), QString(), QMessageBox::Cancel, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setTextFormat(Qt::PlainText);
    const qsizetype lines = text.count(QLatin1Char('\n')) + (text.endsWith(QLatin1Char('\n')) ? 0 : 1);
    box->setText(lines > 1 ? tr("Paste %n lines? Each may run as a command at once.", static_cast<int>(lines))
                           : tr("Paste text with control characters? It may run at once."));
    box->setInformativeText(preview(text));
    QPushButton *paste = box->addButton(tr("Paste"), QMessageBox::AcceptRole);
    box->setDefaultButton(QMessageBox::Cancel);
    box->setEscapeButton(QMessageBox::Cancel);
    QObject::connect(box, &QMessageBox::finished, parent,
                     [box, paste, answer] { answer(box->clickedButton() == paste); });
    box->open();
}

} // namespace vt
