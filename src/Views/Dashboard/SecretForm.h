#pragma once

#include <QWidget>

class QLineEdit;

/// A field for a secret with a button "Connect". The field is cleared as soon as the secret has been handed over, and
/// when the form is hidden.
class SecretForm : public QWidget
{
    Q_OBJECT

public:
    explicit SecretForm(QWidget *parent = nullptr);

    /// `name` is what is asked for: "Password".
    void setSecretName(const QString &name);

    QLineEdit &field() const { return *m_field; }

Q_SIGNALS:
    void submitted(const QString &secret);

protected:
    void hideEvent(QHideEvent *event) override;

private:
    void submit();

    QLineEdit *m_field;
};
