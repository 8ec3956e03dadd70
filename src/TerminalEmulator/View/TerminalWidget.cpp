#include "TerminalEmulator/View/TerminalWidget.h"

#include "TerminalEmulator/View/TerminalAccessible.h"
#include "TerminalEmulator/View/TerminalWidgetState.h"

#include <QEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QPalette>

#include <algorithm>
#include <cmath>
#include <utility>

namespace vt
{

namespace
{

constexpr int MaxGrid = 1000;
constexpr QRgb AnsiOnDark[] = {0x17191e, 0xe5534b, 0x57ab5a, 0xc69026, 0x3a78d8, 0xb083f0, 0x39a5b0, 0xc6cdd6,
                               0x6e7681, 0xff7b72, 0x7bc47f, 0xe0b341, 0x7db4ff, 0xcfa8ff, 0x5ccbd6, 0xffffff};
constexpr QRgb AnsiOnLight[] = {0x1f2328, 0xb42318, 0x1a7f37, 0x8a6100, 0x0b5cad, 0x7c3aa5, 0x0f7285, 0x8b929b,
                                0x57606a, 0xd1372b, 0x2c974b, 0xa87800, 0x2f7fd6, 0x9a55c4, 0x218ba0, 0xb4bac1};

Rgb toEngine(const QColor &color)
{
    return {static_cast<uint8_t>(color.red()), static_cast<uint8_t>(color.green()),
            static_cast<uint8_t>(color.blue())};
}

QColor mixed(const QColor &one, const QColor &other, double share)
{
    const auto mix = [share](int a, int b) { return qRound(a * share + b * (1 - share)); };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue())};
}

Options options()
{
    Options result;
    result.allowClipboardWrite = true; // an event, about which the delegate is asked
    return result;
}

QString plainText(const std::string &utf8, qsizetype limit)
{
    QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(std::min<size_t>(utf8.size(), 1 << 16)));
    erase_if(text, [](QChar each) {
        return each.category() == QChar::Other_Control || each.category() == QChar::Other_Format;
    });
    text.truncate(limit);
    return text;
}

} // namespace

TerminalWidget::State::State(TerminalWidget *owner)
    : widget(owner)
    , terminal(options())
    , feeder([this](std::string_view bytes) { consume(bytes); }, [this] { Q_EMIT widget->outputWanted(); }, owner)
    , font(QFontDatabase::systemFont(QFontDatabase::FixedFont))
    , finder(terminal, owner)
    , announcer(owner)
{
    selectTimer.setInterval(SelectInterval);
    scrollBar = new OverlayScrollBar(owner);
    linkLabel = new QLabel(owner);
    linkLabel->setTextFormat(Qt::PlainText);
    linkLabel->setAutoFillBackground(true);
    linkLabel->setContentsMargins(8, 3, 8, 3);
    linkLabel->hide();
    QObject::connect(&selectTimer, &QTimer::timeout, owner, [this] { scrollWhileSelecting(); });
    QObject::connect(scrollBar, &QAbstractSlider::valueChanged, owner,
                     [this](int value) { scrollTo(terminal.firstLine() + value); });
    QObject::connect(&finder, &Finder::changed, owner, [this] {
        requestFrame();
        Q_EMIT widget->searchChanged(finder.count(), finder.index());
    });
    baseSize = font.pointSizeF() > 0 ? font.pointSizeF() : 10;
    font.setPointSizeF(baseSize);
    for (QTimer *each : {&frameTimer, &resizeTimer, &bellTimer}) {
        each->setSingleShot(true);
    }
    frameTimer.setTimerType(Qt::PreciseTimer);
    resizeTimer.setInterval(ResizeDelay);
    bellTimer.setInterval(BellDuration);
    QObject::connect(&frameTimer, &QTimer::timeout, owner, [this] { frame(); });
    QObject::connect(&resizeTimer, &QTimer::timeout, owner, [this] { applySize(); });
    QObject::connect(&bellTimer, &QTimer::timeout, owner, [this] { widget->update(); });
}

TerminalWidget::TerminalWidget(QWidget *parent)
    : QWidget(parent)
    , m_state(std::make_unique<State>(this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAttribute(Qt::WA_KeyCompression, false);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAcceptDrops(true);
    setCursor(Qt::IBeamCursor);
    TerminalAccessible::install();
    setContentsMargins(12, 8, 12, 8);
    setAccessibleName(tr("Terminal"));
    m_state->applyColors();
    m_state->makeFont();
}

TerminalWidget::~TerminalWidget() = default;

void TerminalWidget::setDelegate(TerminalDelegate *delegate)
{
    m_state->delegate = delegate;
}

// ---- output ------------------------------------------------------------------------------------------------------

void TerminalWidget::feed(QByteArrayView bytes)
{
    m_state->feeder.feed(bytes);
}

void TerminalWidget::feedText(const QString &text)
{
    feed(text.toUtf8());
}

bool TerminalWidget::wantsOutput() const
{
    return m_state->feeder.isReady();
}

qsizetype TerminalWidget::pendingOutput() const
{
    return m_state->feeder.pending();
}

void TerminalWidget::flushOutput()
{
    m_state->feeder.flush();
}

void TerminalWidget::reset()
{
    m_state->feeder.clear();
    m_state->terminal.reset();
    m_state->terminal.clearHistory();
    m_state->follows = true;
    m_state->applyColors();
}

void TerminalWidget::clear()
{
    m_state->terminal.clearAbove();
    m_state->follows = true;
    m_state->invalidate();
}

void TerminalWidget::clearScrollback()
{
    m_state->terminal.clearHistory();
    m_state->follows = true;
    m_state->invalidate();
}

void TerminalWidget::State::consume(std::string_view bytes)
{
    static constexpr std::string_view EndOfHolding = "\x1b[?2026l";
    while (!bytes.empty()) {
        size_t size = bytes.size();
        if (terminal.isSynchronizing()) {
            // What the application wanted to be seen is drawn before it goes on.
            const size_t end = bytes.find(EndOfHolding);
            size = end != std::string_view::npos ? end + EndOfHolding.size() : size;
        }
        terminal.feed(bytes.substr(0, size));
        taken += static_cast<qsizetype>(size);
        bytes.remove_prefix(size);
        if (heldBack.isValid() && !terminal.isSynchronizing() && sinceFrame.elapsed() >= FrameInterval) {
            frame();
        }
    }
    if (terminal.hasReplies()) {
        const std::string replies = terminal.takeReplies();
        if (delegate) {
            delegate->terminalReplies(QByteArray(replies.data(), static_cast<qsizetype>(replies.size())));
        }
    }
    const std::string *lastTitle = nullptr;
    const std::string *lastDirectory = nullptr;
    const std::vector<Event> events = terminal.takeEvents();
    for (const Event &event : events) {
        // Of these only the last counts, and each that is told costs the host far more than it cost to send.
        if (event.kind == Event::Kind::Title) {
            lastTitle = &event.text;
        } else if (event.kind == Event::Kind::WorkingDirectory) {
            lastDirectory = &event.text;
        } else {
            handle(event);
        }
    }
    if (lastTitle) {
        setTitle(plainText(*lastTitle, MaxTitle));
    }
    if (lastDirectory) {
        Q_EMIT widget->workingDirectoryChanged(plainText(*lastDirectory, 4096));
    }
    finder.noteOutput();
    requestFrame();
}

void TerminalWidget::State::send(const std::string &bytes)
{
    if (delegate && !bytes.empty()) {
        delegate->terminalSends(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
    }
}

void TerminalWidget::State::handle(const Event &event)
{
    switch (event.kind) {
    case Event::Kind::Bell:
        if (!sinceBell.isValid() || sinceBell.elapsed() > BellPause) {
            sinceBell.start();
            bellTimer.start();
            widget->update();
            Q_EMIT widget->bellRang();
        }
        break;
    case Event::Kind::Notification:
        Q_EMIT widget->notified(plainText(event.target, MaxTitle), plainText(event.text, 1024));
        break;
    case Event::Kind::ClipboardWrite:
        writeClipboard(event.text, event.target);
        break;
    case Event::Kind::Resized:
        invalidate();
        break;
    default:
        break;
    }
}

void TerminalWidget::State::setTitle(const QString &text)
{
    if (std::exchange(title, text) != text) {
        Q_EMIT widget->titleChanged(title);
    }
}

// ---- size --------------------------------------------------------------------------------------------------------

int TerminalWidget::columns() const
{
    return m_state->terminal.columns();
}

int TerminalWidget::rows() const
{
    return m_state->terminal.rows();
}

void TerminalWidget::resizeGrid(int columns, int rows)
{
    m_state->resizeTimer.stop();
    m_state->setGrid(columns, rows);
}

void TerminalWidget::setScrollbackLimit(int rows)
{
    m_state->terminal.setScrollback(rows);
    m_state->invalidate();
}

QSize TerminalWidget::sizeHint() const
{
    const qreal ratio = devicePixelRatioF();
    const QMargins margins = contentsMargins();
    return QSize(static_cast<int>(std::ceil(columns() * m_state->cells->width() / ratio)),
                 static_cast<int>(std::ceil(rows() * m_state->cells->height() / ratio)))
        .grownBy(margins);
}

void TerminalWidget::State::setGrid(int columns, int rows)
{
    columns = std::clamp(columns, 1, MaxGrid);
    rows = std::clamp(rows, 1, MaxGrid);
    if (columns == terminal.columns() && rows == terminal.rows()) {
        return;
    }
    const int64_t fromEnd = terminal.screenTop() - topLine();
    terminal.resize(columns, rows);
    if (!follows) {
        scrollTo(terminal.screenTop() - fromEnd);
    }
    invalidate();
    if (delegate) {
        delegate->terminalResized(columns, rows, QSize(columns * cells->width(), rows * cells->height()));
    }
    // The size of a picture that is not on show any more is not worth a frame's delay.
    frame();
}

/// The grid that fits into the widget.
void TerminalWidget::State::applySize()
{
    resizeTimer.stop();
    const QRect room = widget->contentsRect();
    const qreal ratio = widget->devicePixelRatioF();
    const int columns = static_cast<int>(room.width() * ratio) / cells->width();
    const int rows = static_cast<int>(room.height() * ratio) / cells->height();
    // Before it is laid out a widget has sizes that mean nothing.
    if (columns >= 2 && rows >= 1 && widget->testAttribute(Qt::WA_WState_Created)) {
        setGrid(columns, rows);
    }
}

QRect TerminalWidget::State::gridRect() const
{
    const qreal ratio = widget->devicePixelRatioF();
    const QPointF corner = QPointF(widget->contentsRect().topLeft()) * ratio;
    return {corner.toPoint(), QSize(terminal.columns() * cells->width(), terminal.rows() * cells->height())};
}

QRect TerminalWidget::State::cellRect(int row, int column, int columns) const
{
    const QPoint corner = gridRect().topLeft();
    return {corner.x() + column * cells->width(), corner.y() + row * cells->height(), columns * cells->width(),
            cells->height()};
}

QRegion TerminalWidget::State::toWidget(const QRegion &device) const
{
    const qreal ratio = widget->devicePixelRatioF();
    QRegion result;
    for (const QRect &each : device) {
        result +=
            QRectF(each.x() / ratio, each.y() / ratio, each.width() / ratio, each.height() / ratio).toAlignedRect();
    }
    return result;
}

// ---- look --------------------------------------------------------------------------------------------------------

void TerminalWidget::setTerminalFont(const QFont &font)
{
    m_state->font = font;
    m_state->baseSize = font.pointSizeF() > 0 ? font.pointSizeF() : QFontInfo(font).pointSizeF();
    m_state->font.setPointSizeF(m_state->baseSize);
    m_state->makeFont();
    Q_EMIT fontSizeChanged(m_state->baseSize);
}

QFont TerminalWidget::terminalFont() const
{
    return m_state->font;
}

void TerminalWidget::setLineHeight(qreal factor)
{
    m_state->lineHeight = std::clamp(factor, 0.8, 2.0);
    m_state->makeFont();
}

void TerminalWidget::zoom(int points)
{
    const qreal size = std::clamp<qreal>(m_state->font.pointSizeF() + points, MinFontSize, MaxFontSize);
    if (!qFuzzyCompare(size, m_state->font.pointSizeF())) {
        m_state->font.setPointSizeF(size);
        m_state->makeFont();
        Q_EMIT fontSizeChanged(size);
    }
}

void TerminalWidget::resetZoom()
{
    m_state->font.setPointSizeF(m_state->baseSize);
    m_state->makeFont();
    Q_EMIT fontSizeChanged(m_state->baseSize);
}

void TerminalWidget::State::makeFont()
{
    cells = std::make_unique<CellFont>(font, widget->devicePixelRatioF(), lineHeight);
    painter = std::make_unique<RowPainter>(terminal, *cells, viewColors);
    terminal.setCellSize(cells->width(), cells->height());
    widget->updateGeometry();
    invalidate();
    applySize();
}

void TerminalWidget::setColors(const TerminalColors &colors)
{
    m_state->colors = colors;
    m_state->applyColors();
}

TerminalColors TerminalWidget::colors() const
{
    return m_state->colors;
}

void TerminalWidget::State::applyColors()
{
    const QPalette palette = widget->palette();
    const QColor text = colors.foreground.isValid() ? colors.foreground : palette.color(QPalette::Text);
    const QColor base = colors.background.isValid() ? colors.background : palette.color(QPalette::Base);
    const bool dark = qGray(base.rgb()) < qGray(text.rgb());
    const QColor cursor = colors.cursor.isValid() ? colors.cursor : text;
    terminal.setDefaultColors(toEngine(text), toEngine(base), toEngine(cursor));
    for (size_t index = 0; index < 16; ++index) {
        const QColor own = QColor::fromRgb(dark ? AnsiOnDark[index] : AnsiOnLight[index]);
        terminal.setDefaultIndexedColor(static_cast<int>(index), toEngine(colors.ansi ? (*colors.ansi)[index] : own));
    }
    viewColors.selection =
        colors.selection.isValid() ? colors.selection : mixed(QColor(0x3b, 0x82, 0xf6), base, dark ? 0.45 : 0.28);
    viewColors.hit = dark ? QColor(0xb8, 0x8a, 0x1e) : QColor(0xff, 0xe0, 0x8a);
    viewColors.currentHit = QColor(0xff, 0x9b, 0x3d);
    viewColors.hitText = QColor(0x14, 0x16, 0x1a);
    scrollBar->setColor(text);
    QPalette label;
    label.setColor(QPalette::Window, mixed(text, base, 0.12));
    label.setColor(QPalette::WindowText, text);
    linkLabel->setPalette(label);
    invalidate();
}

void TerminalWidget::redisplay()
{
    m_state->invalidate();
    if (isVisible()) {
        m_state->draw(QDeadlineTimer::Forever);
    }
}

// ---- search ------------------------------------------------------------------------------------------------------

bool TerminalWidget::setSearch(const SearchQuery &query)
{
    const bool good = m_state->finder.set(query);
    // What is on show is searched from its end backwards: the newest is what one looks for.
    const int64_t last = m_state->topLine() + rows() - 1;
    if (m_state->finder.isActive() && m_state->finder.move(false, {last, columns()})) {
        m_state->reveal(*m_state->finder.current());
    }
    return good;
}

void TerminalWidget::findNext()
{
    if (m_state->finder.move(true, {m_state->topLine(), 0})) {
        m_state->reveal(*m_state->finder.current());
    }
}

void TerminalWidget::findPrevious()
{
    if (m_state->finder.move(false, {m_state->topLine() + rows() - 1, columns()})) {
        m_state->reveal(*m_state->finder.current());
    }
}

int TerminalWidget::hitCount() const
{
    return m_state->finder.count();
}

int TerminalWidget::currentHit() const
{
    return m_state->finder.index();
}

// ---- state -------------------------------------------------------------------------------------------------------

int TerminalWidget::scrollPosition() const
{
    return static_cast<int>(m_state->terminal.screenTop() - m_state->topLine());
}

void TerminalWidget::scrollTo(int rowsFromEnd)
{
    m_state->scrollTo(m_state->terminal.screenTop() - rowsFromEnd);
}

void TerminalWidget::scrollBy(int rows)
{
    m_state->scrollTo(m_state->topLine() + rows);
}

QString TerminalWidget::title() const
{
    return m_state->title;
}

QRect TerminalWidget::cellRect(int row, int column) const
{
    return m_state->toWidget(m_state->cellRect(row, column)).boundingRect();
}

QPoint TerminalWidget::cellAt(QPoint point) const
{
    const Position at = m_state->positionAt(point);
    return {at.column, static_cast<int>(at.line - m_state->topLine())};
}

const Terminal &TerminalWidget::terminal() const
{
    return m_state->terminal;
}

} // namespace vt
