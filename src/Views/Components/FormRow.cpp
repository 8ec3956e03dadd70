#include "Views/Components/FormRow.h"

#include "Views/Components/Labels.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>

namespace
{

constexpr int kLabelWidth = 130;
constexpr int kGap = 12;

/// Words in the colour of a failure.
class ErrorLabel : public TextLabel
{
public:
    ErrorLabel(const Theme &theme, QWidget *parent)
        : TextLabel(theme, TextStyle::Small, {}, Shade::Text, parent)
        , m_theme(theme)
    {
        follow();
        connect(&theme, &Theme::changed, this, &ErrorLabel::follow);
    }

private:
    void follow()
    {
        QPalette colors = palette();
        colors.setColor(foregroundRole(), m_theme.tokens().red.text);
        setPalette(colors);
    }

    const Theme &m_theme;
};

} // namespace

FormRow::FormRow(const Theme &theme, const QString &label, QWidget *field, QWidget *parent)
    : QWidget(parent)
    , m_field(field)
    , m_line(new QHBoxLayout)
    , m_column(new QVBoxLayout)
    , m_hint(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Dim, this))
    , m_error(new ErrorLabel(theme, this))
{
    auto *name = new TextLabel(theme, TextStyle::Detail, label, TextLabel::Shade::Dim, this);
    name->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    name->setFixedWidth(kLabelWidth);
    // In line with the field, whatever stands below it.
    name->setMinimumHeight(std::min(field->sizeHint().height(), Metrics::kControlHeight));
    name->setBuddy(field);
    if (field->accessibleName().isEmpty()) {
        field->setAccessibleName(label.endsWith(u':') ? label.chopped(1) : label);
    }

    m_line->setSpacing(8);
    const bool isWide = field->sizePolicy().expandingDirections() & Qt::Horizontal;
    m_line->addWidget(field, isWide ? 1 : 0);
    if (!isWide) {
        m_line->addStretch(1);
    }
    m_column->setSpacing(3);
    m_column->addLayout(m_line);
    for (TextLabel *words : {m_hint, static_cast<TextLabel *>(m_error)}) {
        words->setWordWrap(true);
        words->hide();
        m_column->addWidget(words);
    }

    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(kGap);
    line->addWidget(name, 0, Qt::AlignTop);
    line->addLayout(m_column, 1);
}

void FormRow::addWidget(QWidget *widget)
{
    m_line->addWidget(widget);
}

void FormRow::setHint(const QString &hint)
{
    m_hint->setText(hint);
    m_hint->setVisible(!hint.isEmpty());
    m_field->setAccessibleDescription(hint);
}

void FormRow::setError(const QString &error)
{
    if (error == m_error->text()) {
        return;
    }
    m_error->setText(error);
    m_error->setVisible(!error.isEmpty());
    setFieldIsWrong(*m_field, !error.isEmpty());
    m_field->setAccessibleDescription(error.isEmpty() ? m_hint->text() : error);
}

QString FormRow::error() const
{
    return m_error->text();
}
