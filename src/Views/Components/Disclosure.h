#pragma once

#include <QWidget>
#include <functional>

class DisclosureHeader;
class QPushButton;
class QVBoxLayout;
class Theme;

/// A part of a page that opens and closes: a line with its title, which is a button, and the content below it. The
/// content is made when it is wanted for the first time.
class Disclosure : public QWidget
{
    Q_OBJECT

public:
    enum class Frame {
        Card, ///< a card around both
        None  ///< the content brings cards of its own
    };

    using MakeContent = std::function<QWidget *(QWidget *parent)>;

    Disclosure(const Theme &theme, const QString &title, Frame frame, MakeContent makeContent,
               QWidget *parent = nullptr);

    /// A number in a pill behind the title; none while it is below 0.
    void setCount(qsizetype count);

    /// Dim words behind the title.
    void setNote(const QString &note);

    bool isExpanded() const { return m_isExpanded; }

    void setExpanded(bool isExpanded);

    /// The button.
    QPushButton &header() const;

    /// Null until it was opened for the first time.
    QWidget *content() const { return m_content; }

Q_SIGNALS:
    /// The operator wants it open, or closed. Nothing changes but by setExpanded().
    void toggleRequested(bool isExpanded);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    Frame m_frame;
    MakeContent m_makeContent;
    DisclosureHeader *m_header;
    QVBoxLayout *m_column;
    QWidget *m_content = nullptr;
    bool m_isExpanded = false;
};
