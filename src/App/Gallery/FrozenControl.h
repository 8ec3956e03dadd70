#pragma once

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QStyleOption>

/// A control that is painted as if it were in `state` (pointed at, pressed, with the keyboard) whether it is or not.
template<typename Control, typename Option>
class FrozenControl : public Control
{
public:
    FrozenControl(const QString &text, QStyle::State state)
        : Control(text)
        , m_state(state)
    {
        this->setFocusPolicy(Qt::NoFocus);
    }

protected:
    void initStyleOption(Option *option) const override
    {
        Control::initStyleOption(option);
        option->state |= m_state;
    }

private:
    QStyle::State m_state;
};

using FrozenButton = FrozenControl<QPushButton, QStyleOptionButton>;
using FrozenCheckBox = FrozenControl<QCheckBox, QStyleOptionButton>;
using FrozenField = FrozenControl<QLineEdit, QStyleOptionFrame>;
