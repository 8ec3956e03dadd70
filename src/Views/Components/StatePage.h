#pragma once

#include "Views/Theme/IconName.h"

#include <QWidget>
#include <optional>

class QPushButton;
class QStackedLayout;
class StateMessage;
class Theme;

/// The one place that switches between loading, error, empty and content. All of them take the same room.
class StatePage : public QWidget
{
    Q_OBJECT

public:
    enum class State { Loading, Error, Empty, Content };

    struct Message {
        QString title{};
        QString text{};                 ///< what it means, and what to do
        QString detail{};               ///< what the other side said, to be copied; shown in the monospaced font
        std::optional<IconName> icon{}; ///< of an error or of nothing; without one a plain one
        QString explanation{};          ///< what went wrong, to be copied
    };

    StatePage(const Theme &theme, QWidget *content, QWidget *parent = nullptr);

    void showLoading(const Message &message);

    /// With a button "Retry", or the given words.
    void showError(const Message &message, const QString &buttonText = {});

    void showEmpty(const Message &message, const QString &buttonText = {});
    void showContent();

    State state() const { return m_state; }

    /// What is on show; empty texts with content.
    Message message() const;

    /// Of the message on show; not to be asked for while there is none.
    QPushButton &button() const;

Q_SIGNALS:
    /// The button of the error or of the empty page.
    void retryRequested();

private:
    StateMessage &messagePage();
    void present(State state, const Message &message, const QString &buttonText);

    const Theme &m_theme;
    State m_state = State::Content;
    QStackedLayout *m_pages;
    StateMessage *m_message = nullptr; // made when there is the first thing to say
    QWidget *m_content;
};
