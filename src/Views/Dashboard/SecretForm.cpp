#include "Views/Dashboard/SecretForm.h"

#include "Helpers/Secret.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

namespace
{

constexpr int kFieldWidth = 240;

} // namespace

SecretForm::SecretForm(QWidget *parent)
    : QWidget(parent)
    , m_field(new QLineEdit(this))
{
    m_field->setEchoMode(QLineEdit::Password);
    m_field->setMinimumWidth(kFieldWidth);
    auto *button = new QPushButton(tr("Connect"), this);
    setButtonKind(*button, ButtonKind::Primary);
    button->setEnabled(false);
    setFocusProxy(m_field);

    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(8);
    line->addWidget(m_field, 1);
    line->addWidget(button);
    connect(m_field, &QLineEdit::textChanged, button,
            [button](const QString &text) { button->setEnabled(!text.isEmpty()); });
    connect(m_field, &QLineEdit::returnPressed, this, &SecretForm::submit);
    connect(button, &QPushButton::clicked, this, &SecretForm::submit);
}

void SecretForm::setSecretName(const QString &name)
{
    m_field->setPlaceholderText(name);
    m_field->setAccessibleName(name);
}

void SecretForm::submit()
{
    QString secret = m_field->text();
    if (!secret.isEmpty()) {
        m_field->setText({}); // unlike clear(), which keeps the text for an undo
        Q_EMIT submitted(secret);
        wipe(secret);
    }
}

void SecretForm::hideEvent(QHideEvent *event)
{
    m_field->setText({});
    QWidget::hideEvent(event);
}
