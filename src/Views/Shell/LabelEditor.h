#pragma once

#include <QWidget>

class AddEditServerViewModel;
class FlowLayout;
class QAbstractButton;
class QLineEdit;
class Theme;

/// The labels of a server as pills that can be removed, and the fields for one more.
class LabelEditor : public QWidget
{
    Q_OBJECT

public:
    /// Both outlive the editor.
    LabelEditor(const Theme &theme, AddEditServerViewModel &model, QWidget *parent = nullptr);

    QLineEdit &keyField() const { return *m_key; }

    QLineEdit &valueField() const { return *m_value; }

    /// The pills that stand there, by key.
    QList<QAbstractButton *> chips() const;

    /// Shows the fields for a new label.
    void startAdding();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    class Chip;

    void showState();
    void takeFocusFrom(int index);

    const Theme &m_theme;
    AddEditServerViewModel &m_model;
    FlowLayout *m_flow;
    QList<Chip *> m_chips;
    QAbstractButton *m_more;
    QWidget *m_entry;
    QLineEdit *m_key;
    QLineEdit *m_value;
    QAbstractButton *m_add;
};
