#include "App/Gallery/Gallery.h"

#include "App/Gallery/FrozenControl.h"
#include "App/Gallery/GalleryTable.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/AutoRefreshToggle.h"
#include "Views/Components/Card.h"
#include "Views/Components/CompactMetricsCard.h"
#include "Views/Components/Disclosure.h"
#include "Views/Components/FormRow.h"
#include "Views/Components/InlineNotice.h"
#include "Views/Components/KeyValueGrid.h"
#include "Views/Components/Labels.h"
#include "Views/Components/NoticeBar.h"
#include "Views/Components/Pill.h"
#include "Views/Components/ProgressLine.h"
#include "Views/Components/RefreshButton.h"
#include "Views/Components/SearchField.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Components/SegmentedControl.h"
#include "Views/Components/Sheet.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/StatsView.h"
#include "Views/Components/UsageBar.h"
#include "Views/Theme/Icons.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kWidth = 1280;
constexpr int kMargin = 24;

const QColor &onAccentColor(const Theme &theme)
{
    return theme.tokens().onAccent;
}

QHBoxLayout &addLine(QVBoxLayout &group)
{
    auto *line = new QHBoxLayout;
    line->setSpacing(12);
    group.addLayout(line);
    return *line;
}

} // namespace

Gallery::Gallery(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_column(new QVBoxLayout(this))
{
    setWindowTitle(tr("Components"));
    setFixedWidth(kWidth);
    m_column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    m_column->setSpacing(20);
    m_column->setSizeConstraint(QLayout::SetNoConstraint); // the picture is as high as what stands in it
    addButtons();
    addFields();
    addForms();
    addHandledControls();
    addMarks();
    addFigures();
    addCharts();
    addDisclosures();
    addHeaders();
    addGroup(tr("Table")).addWidget(new GalleryTable(theme));
    addPages();
    m_column->addStretch();
}

QVBoxLayout &Gallery::addGroup(const QString &title)
{
    auto *group = new QVBoxLayout;
    group->setSpacing(8);
    group->addWidget(new TextLabel(m_theme, TextStyle::Emphasis, title, TextLabel::Shade::Dim));
    m_column->addLayout(group);
    return *group;
}

void Gallery::addButtons()
{
    QVBoxLayout &group = addGroup(tr("Buttons"));
    for (const bool isEnabled : {true, false}) {
        QHBoxLayout &line = addLine(group);
        const std::pair<QString, ButtonKind> kinds[]{{tr("Normal"), ButtonKind::Normal},
                                                     {tr("Primary"), ButtonKind::Primary},
                                                     {tr("Danger"), ButtonKind::Danger},
                                                     {tr("Quiet"), ButtonKind::Quiet}};
        for (const auto &[text, kind] : kinds) {
            auto *button = new QPushButton(text);
            setButtonKind(*button, kind);
            button->setEnabled(isEnabled);
            line.addWidget(button);
        }
        auto *add = new QPushButton(tr("New Record"));
        setButtonKind(*add, ButtonKind::Primary);
        add->setIcon(Icons::icon(IconName::Add, m_theme, &onAccentColor));
        add->setEnabled(isEnabled);
        line.addWidget(add);
        auto *refresh = new RefreshButton(m_theme);
        refresh->setEnabled(isEnabled);
        line.addWidget(refresh);
        line.addStretch();
        if (isEnabled) {
            auto *turning = new RefreshButton(m_theme, tr("Refresh records"));
            turning->setRefreshing(true);
            line.insertWidget(line.count() - 1, turning);
            auto *question = new QPushButton(tr("Show a question"));
            connect(question, &QPushButton::clicked, this,
                    [this] { GalleryWindows::question(m_theme, this)->open(); });
            line.addWidget(question);
            auto *sheet = new QPushButton(tr("Show a sheet"));
            connect(sheet, &QPushButton::clicked, this, [this] { GalleryWindows::sheet(m_theme, this)->open(); });
            line.addWidget(sheet);
        }
    }
}

void Gallery::addFields()
{
    QVBoxLayout &group = addGroup(tr("Fields and switches"));
    QHBoxLayout &line = addLine(group);
    line.addWidget(new SearchField(m_theme, tr("Search records...")));
    auto *full = new SearchField(m_theme, tr("Search what is there..."));
    full->setText(u"nginx"_s);
    line.addWidget(full);
    const std::pair<QString, bool> fields[]{{tr("Field"), true}, {tr("Disabled field"), false}};
    for (const auto &[text, isEnabled] : fields) {
        auto *field = new QLineEdit(text);
        field->setAccessibleName(text);
        field->setEnabled(isEnabled);
        line.addWidget(field);
    }
    QHBoxLayout &second = addLine(group);
    const QStringList options{tr("All"), tr("High CPU"), tr("High Memory"), tr("System")};
    auto *filter = new SegmentedControl(m_theme, tr("Filter"), options);
    filter->setCurrent(1);
    second.addWidget(filter);
    auto *disabled = new SegmentedControl(m_theme, tr("Disabled filter"), {tr("Local"), tr("Server")});
    disabled->setEnabled(false);
    second.addWidget(disabled);
    for (const bool isChecked : {true, false}) {
        auto *toggle = new AutoRefreshToggle(m_theme);
        toggle->setChecked(isChecked);
        second.addWidget(toggle);
    }
    auto *off = new QCheckBox(tr("Disabled switch"));
    off->setChecked(true);
    off->setEnabled(false);
    second.addWidget(off);
    second.addStretch();
}

void Gallery::addForms()
{
    QHBoxLayout &line = addLine(addGroup(tr("Rows of a form: with a hint, wrong, not to be changed")));
    auto *hinted = new FormRow(m_theme, tr("Name:"), new QLineEdit(u"web-01"_s));
    hinted->setHint(tr("Shown in the list"));
    auto *wrong = new FormRow(m_theme, tr("Host:"), new QLineEdit(u"-web"_s));
    wrong->setError(tr("Invalid host address format"));
    auto *fixed = new QLineEdit(tr("Using saved password"));
    fixed->setReadOnly(true);
    for (FormRow *row : {hinted, wrong, new FormRow(m_theme, tr("Password:"), fixed)}) {
        line.addWidget(row, 1, Qt::AlignTop);
    }
}

void Gallery::addHandledControls()
{
    QVBoxLayout &group = addGroup(tr("Under the hand: pointed at, pressed, with the focus"));
    const std::pair<QString, QStyle::State> states[]{{tr("Pointed at"), QStyle::State_MouseOver},
                                                     {tr("Pressed"), QStyle::State_MouseOver | QStyle::State_Sunken},
                                                     {tr("Focus"), QStyle::State_HasFocus}};
    QHBoxLayout &buttons = addLine(group);
    for (const auto kind : {ButtonKind::Normal, ButtonKind::Primary, ButtonKind::Danger, ButtonKind::Quiet}) {
        for (const auto &[text, state] : states) {
            auto *button = new FrozenButton(text, state);
            setButtonKind(*button, kind);
            buttons.addWidget(button);
        }
    }
    buttons.addStretch();
    QHBoxLayout &others = addLine(group);
    for (const bool isChecked : {false, true}) {
        for (const auto &[text, state] : states) {
            auto *box = new FrozenCheckBox(text, state);
            box->setChecked(isChecked);
            others.addWidget(box);
        }
    }
    for (const bool isWrong : {false, true}) {
        const QString text = isWrong ? tr("Wrong, with the focus") : tr("With the focus");
        auto *field = new FrozenField(text, QStyle::State_HasFocus);
        field->setAccessibleName(text);
        setFieldIsWrong(*field, isWrong);
        others.addWidget(field);
    }
    others.addStretch();
}

void Gallery::addMarks()
{
    QVBoxLayout &group = addGroup(tr("States"));
    const std::pair<QString, ToneName> tones[]{{tr("Accent"), ToneName::Accent}, {tr("Running"), ToneName::Green},
                                               {tr("Failed"), ToneName::Red},    {tr("Paused"), ToneName::Orange},
                                               {tr("Info"), ToneName::Blue},     {tr("Production"), ToneName::Purple},
                                               {tr("Created"), ToneName::Gray}};
    QHBoxLayout &line = addLine(group);
    for (const auto dot : {Pill::Dot::With, Pill::Dot::Without}) {
        for (const auto &[text, tone] : tones) {
            auto *pill = new Pill(m_theme, dot);
            pill->setState(text, tone);
            line.addWidget(pill);
        }
    }
    line.addStretch();
    auto *notices = new NoticeBar(m_theme);
    notices->add(tr("The settings were written by a newer version; what it does not know is kept as it is."));
    group.addWidget(notices);
    QHBoxLayout &notes = addLine(group);
    const std::tuple<ToneName, QString, QString> outcomes[]{
        {ToneName::Orange, tr("Checking the connection..."), {}},
        {ToneName::Green, tr("The connection works."), {}},
        {ToneName::Red, tr("The connection failed."), u"ssh: connect to host web-01 port 22: No route to host"_s}};
    for (const auto &[tone, text, detail] : outcomes) {
        auto *note = new InlineNotice(m_theme);
        note->setNotice(tone, text, detail);
        notes.addWidget(note, 1);
    }
    auto *progress = new ProgressLine(m_theme);
    progress->setActive(true);
    group.addWidget(progress);
}

void Gallery::addFigures()
{
    QHBoxLayout &line = addLine(addGroup(tr("Figures")));
    auto *facts = new Card(m_theme, tr("System Information"));
    auto *grid = new KeyValueGrid(m_theme);
    grid->setRows({{tr("Hostname"), u"web-01"_s},
                   {tr("OS"), u"Debian GNU/Linux 12 (bookworm)"_s},
                   {tr("Uptime"), u"up 6 weeks, 2 days, 4 hours"_s},
                   {tr("Load Avg"), u"0.42 0.51 0.47"_s}});
    facts->content().addWidget(grid);
    facts->content().addStretch();
    line.addWidget(facts, 1);
    auto *space = new Card(m_theme, tr("Filesystems"));
    const std::tuple<QString, QString, double> disks[]{
        {u"/"_s, u"24G / 78G"_s, 31}, {u"/var"_s, u"142G / 196G"_s, 76}, {u"/home"_s, u"389G / 420G"_s, 93}};
    for (const auto &[name, figures, percent] : disks) {
        auto *bar = new UsageBar(m_theme);
        bar->setUsage(name, figures, u"(%1%)"_s.arg(percent), percent);
        space->content().addWidget(bar);
    }
    space->content().addStretch();
    line.addWidget(space, 1);
    auto *stats = new QVBoxLayout;
    const Stat samples[]{{tr("Total"), u"214"_s, {}}, {tr("Errors"), u"4"_s, ToneName::Red}, {tr("8 items"), {}, {}}};
    for (const Stat &sample : samples) {
        auto *view = new StatsView(m_theme);
        view->setStat(sample);
        stats->addWidget(view, 0, Qt::AlignLeft);
    }
    stats->addStretch();
    line.addLayout(stats);
}

void Gallery::addCharts()
{
    QHBoxLayout &line = addLine(addGroup(tr("Charts: one figure, a warning, legends, no values yet")));
    QList<double> received;
    QList<double> sent;
    for (int i = 0; i < MetricChart::kSamples; ++i) {
        received.append(2.4 + 1.4 * std::sin(i / 7.0) + 0.7 * std::sin(i / 2.1));
        sent.append(0.9 + 0.5 * std::sin(i / 5.0 + 2));
    }
    for (const bool isWarning : {false, true}) {
        auto *one = new CompactMetricsCard(m_theme, tr("Memory"), CompactMetricsCard::LegendStyle::OneLine);
        one->chart().setFormat([](double value) { return u"%1%"_s.arg(value * 10, 0, 'f', 1); });
        one->chart().setMaximum(isWarning ? 4.2 : 10);
        one->chart().setSamples({{{}, ToneName::Purple, true}}, {received});
        one->setFigure(isWarning ? u"92.3%"_s : u"61.9%"_s, isWarning);
        one->setFootnote(tr("19.2 of 31.0 GiB"));
        line.addWidget(one, 2);
    }
    for (const auto style : {CompactMetricsCard::LegendStyle::OneLine, CompactMetricsCard::LegendStyle::TwoLines}) {
        auto *two = new CompactMetricsCard(m_theme, tr("Network"), style);
        two->chart().setFormat([](double value) { return tr("%1 MB/s").arg(value, 0, 'f', 1); });
        two->chart().setAutomaticMaximum(1);
        two->chart().setSamples({{tr("Receive"), ToneName::Green, true}, {tr("Transmit"), ToneName::Blue, false}},
                                {received, sent});
        two->setLegend(
            {{tr("Receive"), ToneName::Green, tr("4.2 MB/s")},
             {tr("Transmit"), ToneName::Blue, tr("1.1 MB/s"), style == CompactMetricsCard::LegendStyle::TwoLines}});
        line.addWidget(two, style == CompactMetricsCard::LegendStyle::OneLine ? 3 : 2);
    }
    auto *empty = new CompactMetricsCard(m_theme, tr("CPU"), CompactMetricsCard::LegendStyle::OneLine);
    empty->setFigure(u"--"_s);
    line.addWidget(empty, 2);
}

void Gallery::addDisclosures()
{
    QHBoxLayout &line = addLine(addGroup(tr("Parts that open")));
    for (const bool isExpanded : {false, true}) {
        auto *part = new Disclosure(m_theme, tr("Storage Devices"), Disclosure::Frame::Card, [this](QWidget *owner) {
            return new TextLabel(m_theme, TextStyle::Body, tr("What stands in it"), TextLabel::Shade::Dim, owner);
        });
        part->setCount(5);
        part->setExpanded(isExpanded);
        connect(part, &Disclosure::toggleRequested, part, &Disclosure::setExpanded);
        line.addWidget(part, 1, Qt::AlignTop);
    }
}

void Gallery::addHeaders()
{
    QVBoxLayout &group = addGroup(tr("Section headers: wide, and where there is less room"));
    for (const int width : {kWidth - 2 * kMargin, 872, 617}) {
        auto *header = new SectionHeader(m_theme, tr("Processes"));
        header->addSearch(tr("Search processes..."));
        header->addFilter(tr("Filter"), {tr("All"), tr("High CPU"), tr("High Memory"), tr("My Processes"),
                                         tr("System"), tr("Services")});
        header->addAutoRefresh();
        header->addRefresh();
        header->setFixedWidth(width);
        QHBoxLayout &line = addLine(group);
        line.addWidget(header);
        line.addStretch();
    }
}

void Gallery::addPages()
{
    QHBoxLayout &line = addLine(addGroup(tr("Instead of content")));
    for (const auto state : {StatePage::State::Loading, StatePage::State::Error, StatePage::State::Empty}) {
        auto *page = new StatePage(m_theme, new QWidget);
        if (state == StatePage::State::Loading) {
            page->showLoading({tr("Loading records..."), {}, {}});
        } else if (state == StatePage::State::Error) {
            page->showError({tr("Failed to Load Records"), tr("Unable to retrieve the list"),
                             u"ssh: connect to host web-01 port 22: Connection refused"_s});
        } else {
            page->showEmpty({tr("No Results"), tr("No records match 'nginx'"), {}, IconName::Search});
        }
        // A layout around it would give it the height that its words could want.
        auto *room = new QWidget;
        room->setFixedSize(400, 300);
        page->setParent(room);
        page->resize(room->size());
        line.addWidget(room);
    }
}

QImage Gallery::picture()
{
    const qreal ratio = devicePixelRatioF();
    const std::unique_ptr<ModalWindow> question(GalleryWindows::question(m_theme, nullptr));
    const std::unique_ptr<ModalWindow> sheet(GalleryWindows::sheet(m_theme, nullptr));
    question->fitToContent();
    sheet->fitToContent();
    resize(kWidth, m_column->totalHeightForWidth(kWidth));
    m_column->activate();
    resize(kWidth, m_column->itemAt(m_column->count() - 2)->geometry().bottom() + 1 + kMargin);
    const int below = std::max(question->height(), sheet->height()) + 2 * kMargin;
    QImage picture(QSize(width(), height() + below) * ratio, QImage::Format_RGB32);
    picture.setDevicePixelRatio(ratio);
    picture.fill(m_theme.tokens().window);
    QPainter painter(&picture);
    painter.drawPixmap(0, 0, grab());
    const QRect ground(0, height(), width(), below);
    painter.fillRect(ground, m_theme.tokens().scrim);
    painter.drawPixmap(kMargin * 2, height() + kMargin, question->grab());
    painter.drawPixmap(width() - kMargin * 2 - sheet->width(), height() + kMargin, sheet->grab());
    return picture;
}

ModalWindow *GalleryWindows::question(const Theme &theme, QWidget *parent)
{
    return new AlertDialog(theme,
                           {.title = Gallery::tr("Kill Process"),
                            .text = Gallery::tr("Are you sure you want to kill process 1733 (/usr/bin/node)?"),
                            .buttons = {{Gallery::tr("Cancel")}, {Gallery::tr("Kill Process"), ButtonKind::Danger}},
                            .safeButton = 0},
                           parent);
}

ModalWindow *GalleryWindows::sheet(const Theme &theme, QWidget *parent)
{
    auto *sheet = new Sheet(theme, Gallery::tr("Edit Record"), parent);
    auto *name = new FormRow(theme, Gallery::tr("Name:"), new QLineEdit(u"web-01"_s));
    name->setHint(Gallery::tr("Shown in the list"));
    sheet->body().addWidget(name);
    auto *host = new FormRow(theme, Gallery::tr("Host:"), new QLineEdit(u"-web"_s));
    host->setError(Gallery::tr("Invalid host address format"));
    sheet->body().addWidget(host);
    sheet->body().addWidget(
        new SegmentedControl(theme, Gallery::tr("Authentication"),
                             {Gallery::tr("Password"), Gallery::tr("Private Key"), Gallery::tr("SSH Agent")}),
        0, Qt::AlignLeft);
    sheet->addButton(Gallery::tr("Test Connection"), Sheet::Side::Left);
    auto *cancel = sheet->addButton(Gallery::tr("Cancel"), Sheet::Side::Right);
    auto *save = sheet->addButton(Gallery::tr("Save"), Sheet::Side::Right, ButtonKind::Primary);
    QObject::connect(cancel, &QPushButton::clicked, sheet, &QDialog::reject);
    QObject::connect(save, &QPushButton::clicked, sheet, &QDialog::accept);
    sheet->setDefaultButton(save);
    return sheet;
}
