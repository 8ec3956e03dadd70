#pragma once

#include <QWidget>

class QHBoxLayout;
class QVBoxLayout;
class TextLabel;
class Theme;

/// One line of a form: its label at the left, right-aligned with those of all rows, and the fields beside it. Below
/// the fields there is room for a hint, and for what is wrong.
class FormRow : public QWidget
{
    Q_OBJECT

public:
    /// `label` with its colon. The label's own text is the accessible name of `field` where that has none.
    FormRow(const Theme &theme, const QString &label, QWidget *field, QWidget *parent = nullptr);

    /// A widget beside the field.
    void addWidget(QWidget *widget);

    void setHint(const QString &hint);

    /// Marks the field, until it is called with an empty text.
    void setError(const QString &error);

    QString error() const;

    QWidget *field() const { return m_field; }

private:
    QWidget *m_field;
    QHBoxLayout *m_line;
    QVBoxLayout *m_column;
    TextLabel *m_hint;
    TextLabel *m_error;
};
