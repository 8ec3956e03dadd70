#pragma once

#include "Views/Components/ModalWindow.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QList>

class QPushButton;

/// A question in a window-modal sheet: a title, plain text, more widgets if need be, and buttons from left to right.
/// It is shown with open() and deletes itself when it is closed.
class AlertDialog : public ModalWindow
{
    Q_OBJECT

public:
    struct Button {
        QString text;
        ButtonKind kind = ButtonKind::Normal;
    };

    struct Content {
        QString title;
        QString text;
        QList<Button> buttons;
        qsizetype safeButton = 0; ///< what Return, Escape and closing mean, and what has the keyboard at first
        QWidget *extra = nullptr; ///< below the text; the dialog owns it
    };

    static constexpr int kContentWidth = 432; ///< what title, text and more have

    AlertDialog(const Theme &theme, const Content &content, QWidget *parent);

    QList<QPushButton *> buttons() const { return m_buttons; }

    void reject() override;

Q_SIGNALS:
    /// Once, with the place of the button in the list.
    void answered(qsizetype button);

private:
    void answer(qsizetype button);

    QList<QPushButton *> m_buttons;
    qsizetype m_safeButton;
    bool m_isAnswered = false;
};
