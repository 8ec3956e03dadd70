#include "Views/Shell/LabelEditor.h"

#include "Views/Components/FlowLayout.h"
#include "Views/Components/Labels.h"
#include "Views/Components/Pill.h"
#include "Views/Components/PlainText.h"
#include "Views/Shell/AddEditServerViewModel.h"
#include "Views/Shell/LabelTone.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QCompleter>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kRingRoom = 2; // around a pill
constexpr int kRemoveWidth = 20;

} // namespace

/// A pill that can be pressed. One that removes something is pressed at its cross only.
class LabelEditor::Chip : public QAbstractButton
{
public:
    enum class Purpose { Remove, Add };

    Chip(const Theme &theme, Purpose purpose, const QString &text, ToneName tone, QWidget *parent)
        : QAbstractButton(parent)
        , m_theme(theme)
        , m_purpose(purpose)
        , m_tone(tone)
    {
        setFont(theme.font(TextStyle::Caption));
        setText(text);
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_Hover);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }

    QSize sizeHint() const override
    {
        return Pill::sizeFor(words(), font()) + QSize(2 * kRingRoom, 2 * kRingRoom + 2);
    }

protected:
    bool hitButton(const QPoint &place) const override
    {
        const bool isRight =
            layoutDirection() == Qt::LeftToRight ? place.x() >= width() - kRemoveWidth : place.x() < kRemoveWidth;
        return rect().contains(place) && (m_purpose == Purpose::Add || isRight);
    }

    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        const QRect pill = rect().adjusted(kRingRoom, kRingRoom, -kRingRoom, -kRingRoom);
        Pill::paint(painter, pill, words(), font(), m_theme.tone(m_tone));
        if (hasFocus()) {
            TarnwellStyle::drawFocusRing(painter, QRectF(rect()), height() / 2.0, m_theme.tokens().accent.color);
        }
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        if (m_purpose == Purpose::Remove && (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace)) {
            click();
            return;
        }
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            click();
            return;
        }
        QAbstractButton::keyPressEvent(event);
    }

private:
    QString words() const { return m_purpose == Purpose::Remove ? text() + u" ×"_s : text(); }

    const Theme &m_theme;
    Purpose m_purpose;
    ToneName m_tone;
};

LabelEditor::LabelEditor(const Theme &theme, AddEditServerViewModel &model, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_model(model)
    , m_flow(new FlowLayout(4))
    , m_more(new Chip(theme, Chip::Purpose::Add, tr("+ add"), ToneName::Gray, this))
    , m_entry(new QWidget(this))
    , m_key(new QLineEdit(m_entry))
    , m_value(new QLineEdit(m_entry))
    , m_add(new QPushButton(tr("Add"), m_entry))
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_more->setAccessibleName(tr("Add label"));
    m_flow->addWidget(m_more);
    connect(m_more, &QAbstractButton::clicked, this, &LabelEditor::startAdding);

    m_key->setPlaceholderText(tr("Key"));
    m_key->setAccessibleName(tr("Label key"));
    m_value->setPlaceholderText(tr("Value"));
    m_value->setAccessibleName(tr("Label value"));
    auto *completer = new QCompleter(AddEditServerViewModel::suggestedLabelKeys(), m_key);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    m_key->setCompleter(completer);
    m_key->installEventFilter(this);
    m_value->installEventFilter(this);
    connect(m_key, &QLineEdit::textChanged, &model, &AddEditServerViewModel::setNewLabelKey);
    connect(m_value, &QLineEdit::textChanged, &model, &AddEditServerViewModel::setNewLabelValue);
    connect(m_add, &QAbstractButton::clicked, &model, &AddEditServerViewModel::addLabel);

    auto *fields = new QHBoxLayout;
    fields->setSpacing(8);
    fields->addWidget(m_key, 2);
    fields->addWidget(m_value, 3);
    fields->addWidget(m_add);
    auto *entry = new QVBoxLayout(m_entry);
    entry->setContentsMargins(0, 0, 0, 0);
    entry->setSpacing(3);
    entry->addLayout(fields);
    entry->addWidget(new TextLabel(theme, TextStyle::Small, tr("Common labels: environment, team, region, role"),
                                   TextLabel::Shade::Dim, m_entry));
    m_entry->hide();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 4, 0, 0);
    column->setSpacing(6);
    column->addLayout(m_flow);
    column->addWidget(m_entry);
    setFocusProxy(m_more);
    connect(&model, &AddEditServerViewModel::changed, this, &LabelEditor::showState);
    showState();
}

void LabelEditor::startAdding()
{
    m_entry->show();
    m_key->setFocus(Qt::OtherFocusReason);
}

QList<QAbstractButton *> LabelEditor::chips() const
{
    return {m_chips.cbegin(), m_chips.cend()};
}

void LabelEditor::showState()
{
    const AddEditServerViewModel::Form &form = m_model.form();
    for (const auto &[field, text] : {std::pair{m_key, form.newLabelKey}, {m_value, form.newLabelValue}}) {
        if (field->text() != text) {
            field->setText(text);
        }
    }
    const auto &invalid = m_model.invalidFields();
    setFieldIsWrong(*m_key, invalid.contains(AddEditServerViewModel::Field::NewLabelKey));
    setFieldIsWrong(*m_value, invalid.contains(AddEditServerViewModel::Field::NewLabelValue));
    m_add->setEnabled(!form.newLabelKey.trimmed().isEmpty() && !form.newLabelValue.trimmed().isEmpty());

    QStringList labels;
    for (const auto &[key, value] : form.labels.asKeyValueRange()) {
        labels.append(PlainText::oneLine(key + u':' + value));
    }
    QStringList shown;
    for (const Chip *chip : m_chips) {
        shown.append(chip->text());
    }
    if (labels == shown) {
        return;
    }
    int focused = -1;
    for (int i = 0; i < m_chips.size(); ++i) {
        focused = m_chips.at(i)->hasFocus() ? i : focused;
        m_flow->removeWidget(m_chips.at(i));
        m_chips.at(i)->hide();
        m_chips.at(i)->deleteLater();
    }
    m_chips.clear();
    QWidget *before = m_more->previousInFocusChain();
    for (const auto &[key, value] : form.labels.asKeyValueRange()) {
        const QString label = labels.at(m_chips.size());
        auto *chip = new Chip(m_theme, Chip::Purpose::Remove, label, labelTone(label), this);
        chip->setAccessibleName(tr("Remove label %1").arg(label));
        PlainText::setToolTip(*chip, tr("Remove label %1").arg(label));
        connect(chip, &QAbstractButton::clicked, &m_model,
                [&model = m_model, removed = key] { model.removeLabel(removed); });
        m_flow->insertWidget(static_cast<int>(m_chips.size()), chip);
        chip->show();
        setTabOrder(before, chip);
        before = chip;
        m_chips.append(chip);
    }
    setTabOrder(before, m_more);
    if (focused >= 0) {
        takeFocusFrom(focused);
    }
    updateGeometry();
}

void LabelEditor::takeFocusFrom(int index)
{
    QWidget *next = index < m_chips.size() ? static_cast<QWidget *>(m_chips.at(index)) : m_more;
    next->setFocus(Qt::OtherFocusReason);
}

// Return in one of the fields takes the label over, and only without one it is the sheet's.
bool LabelEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *press = static_cast<QKeyEvent *>(event);
        const bool isReturn = press->key() == Qt::Key_Return || press->key() == Qt::Key_Enter;
        if (isReturn && m_add->isEnabled()) {
            m_model.addLabel();
            m_key->setFocus(Qt::OtherFocusReason);
            return true;
        }
        if (isReturn && watched == m_key && !m_key->text().trimmed().isEmpty()) {
            m_key->completer()->popup()->hide();
            m_value->setFocus(Qt::OtherFocusReason);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
