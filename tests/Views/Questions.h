#pragma once

#include "Views/Components/AlertDialog.h"

#include <QPushButton>

/// Presses the button with this text in the question that is open below `window`; false if there is none.
inline bool answerQuestion(const QObject &window, const QString &text)
{
    for (const AlertDialog *dialog : window.findChildren<AlertDialog *>()) {
        for (QPushButton *button : dialog->buttons()) {
            if (button->isVisible() && button->text() == text) {
                button->click();
                return true;
            }
        }
    }
    return false;
}
