#include "Models/Json/Reader.h"

#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;

namespace Json
{

namespace
{

using Library = nlohmann::json;

template<class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};

// Walks the tables along the parser's events. The records' nesting is that of the tables; what lies below an unknown
// key is only counted, so that no input can exhaust the stack.
class Decoder final : public nlohmann::json_sax<Library>
{
public:
    Decoder(const ValueReader &reader, void *value)
        : m_root{&reader, value}
    {
    }

    QString failure() const { return m_failure; }

    bool null() override { return scalar(nullptr); }

    bool boolean(bool value) override { return scalar(value); }

    bool number_integer(number_integer_t value) override { return scalar(qint64{value}); }

    bool number_unsigned(number_unsigned_t value) override { return scalar(quint64{value}); }

    bool number_float(number_float_t value, const string_t &) override { return scalar(value); }

    bool string(string_t &value) override { return scalar(std::string_view(value)); }

    bool binary(binary_t &) override { return fail("a JSON value"); }

    bool start_object(size_t) override
    {
        return open([](const ValueReader &reader) { return reader.isRecord() || reader.insert; });
    }

    bool start_array(size_t) override
    {
        return open([](const ValueReader &reader) { return reader.append != nullptr; });
    }

    bool key(string_t &name) override;
    bool end_object() override;

    bool end_array() override
    {
        close();
        return true;
    }

    bool parse_error(size_t position, const std::string &, const nlohmann::detail::exception &) override
    {
        m_failure = u"not valid JSON at byte %1"_s.arg(position);
        return false;
    }

private:
    struct Target {
        const ValueReader *reader;
        void *value;
    };

    struct Frame {
        Target target;
        quint64 seen = 0;       // records: a bit for each field
        size_t field = 0;       // records: the one that was named last
        qsizetype count = 0;    // lists: elements begun
        void *member = nullptr; // maps and records: where the next value goes; null to pass over it
    };

    Target nextTarget();
    bool scalar(const Scalar &value);
    template<class Predicate>
    bool open(Predicate takes);
    void close();
    bool fail(const char *wanted);
    QString place() const;
    static size_t fieldIndex(const Frame &frame, std::string_view name);

    Target m_root;
    std::vector<Frame> m_frames;
    qsizetype m_skippedDepth = 0;
    QString m_failure;
};

// A target without a value is one to pass over.
Decoder::Target Decoder::nextTarget()
{
    if (m_frames.empty()) {
        return m_root;
    }
    Frame &frame = m_frames.back();
    const ValueReader &reader = *frame.target.reader;
    if (reader.append) {
        ++frame.count;
        return {reader.element, reader.append(frame.target.value)};
    }
    const ValueReader *value = reader.isRecord() ? reader.fields[frame.field].value : reader.element;
    return {value, frame.member};
}

bool Decoder::scalar(const Scalar &value)
{
    if (m_skippedDepth > 0) {
        return true;
    }
    const Target target = nextTarget();
    if (!target.value) {
        return true;
    }
    if (target.reader->isNullable() && std::holds_alternative<std::nullptr_t>(value)) {
        return true;
    }
    void *to = target.reader->engage ? target.reader->engage(target.value) : target.value;
    return (target.reader->assign && target.reader->assign(to, value)) || fail(target.reader->wanted);
}

template<class Predicate>
bool Decoder::open(Predicate takes)
{
    if (m_skippedDepth > 0) {
        ++m_skippedDepth;
        return true;
    }
    Target target = nextTarget();
    if (!target.value) {
        ++m_skippedDepth;
        return true;
    }
    if (!takes(*target.reader)) {
        return fail(target.reader->wanted);
    }
    if (target.reader->engage) {
        target.value = target.reader->engage(target.value);
    }
    m_frames.push_back({target});
    return true;
}

void Decoder::close()
{
    if (m_skippedDepth > 0) {
        --m_skippedDepth;
    } else {
        m_frames.pop_back();
    }
}

// Keys mostly come in the order of the table: the one after the last is tried first.
size_t Decoder::fieldIndex(const Frame &frame, std::string_view name)
{
    const std::span fields = frame.target.reader->fields;
    const size_t next = frame.seen == 0 ? 0 : frame.field + 1;
    if (next < fields.size() && fields[next].key == name) {
        return next;
    }
    size_t index = 0;
    while (index < fields.size() && fields[index].key != name) {
        ++index;
    }
    return index;
}

bool Decoder::key(string_t &name)
{
    if (m_skippedDepth > 0) {
        return true;
    }
    Frame &frame = m_frames.back();
    if (frame.target.reader->insert) {
        frame.member = frame.target.reader->insert(frame.target.value, name);
        return true;
    }
    const size_t index = fieldIndex(frame, name);
    if (index == frame.target.reader->fields.size()) {
        frame.member = nullptr;
        return true;
    }
    frame.field = index;
    if (frame.seen & (quint64{1} << index)) {
        return fail("each key once");
    }
    frame.seen |= quint64{1} << index;
    frame.member = frame.target.reader->fields[index].address(frame.target.value);
    return true;
}

bool Decoder::end_object()
{
    if (m_skippedDepth == 0) {
        Frame &frame = m_frames.back();
        const ValueReader &reader = *frame.target.reader;
        for (size_t i = 0; i < reader.fields.size(); ++i) {
            if (reader.fields[i].isRequired && !(frame.seen & (quint64{1} << i))) {
                frame.field = i;
                return fail("a value");
            }
        }
        if (reader.finish) {
            reader.finish(frame.target.value);
        }
    }
    close();
    return true;
}

bool Decoder::fail(const char *wanted)
{
    m_failure = u"expected %1 at %2"_s.arg(QLatin1StringView(wanted), place());
    return false;
}

// Only keys of the tables are named: a message never carries text of the input.
QString Decoder::place() const
{
    QString path = u"$"_s;
    for (const Frame &frame : m_frames) {
        const ValueReader &reader = *frame.target.reader;
        if (reader.append && frame.count > 0) {
            path += u"[%1]"_s.arg(frame.count - 1);
        } else if (reader.isRecord()) {
            const std::string_view key = reader.fields[frame.field].key;
            path += u'.' + QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
        } else if (reader.insert) {
            path += u".*"_s;
        }
    }
    return path;
}

} // namespace

QString textOf(std::string_view utf8)
{
    constexpr std::string_view kMark = "\xef\xbb\xbf"; // QString::fromUtf8 drops it
    QString marks;
    while (utf8.substr(0, kMark.size()) == kMark) {
        marks += QChar(QChar::ByteOrderMark);
        utf8.remove_prefix(kMark.size());
    }
    const QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    return marks.isEmpty() ? text : marks + text;
}

std::optional<qint64> integerOf(const Scalar &scalar)
{
    return std::visit(
        Overloaded{[](qint64 value) { return std::optional(value); },
                   [](quint64 value) {
                       return std::in_range<qint64>(value) ? std::optional(static_cast<qint64>(value)) : std::nullopt;
                   },
                   [](double value) {
                       // Both ends are powers of two and so exact; the upper one is out already.
                       const bool fits = value >= -0x1p63 && value < 0x1p63 && std::trunc(value) == value;
                       return fits ? std::optional(static_cast<qint64>(value)) : std::nullopt;
                   },
                   [](auto) { return std::optional<qint64>(); }},
        scalar);
}

std::optional<double> numberOf(const Scalar &scalar)
{
    return std::visit(Overloaded{[](qint64 value) { return std::optional(static_cast<double>(value)); },
                                 [](quint64 value) { return std::optional(static_cast<double>(value)); },
                                 [](double value) { return std::optional(value); },
                                 [](auto) { return std::optional<double>(); }},
                      scalar);
}

std::optional<QUuid> uuidOf(const Scalar &scalar)
{
    const auto *text = std::get_if<std::string_view>(&scalar);
    if (!text || text->size() != 36) {
        return std::nullopt;
    }
    for (size_t i = 0; i < text->size(); ++i) {
        const char c = (*text)[i];
        const bool isHyphenPlace = i == 8 || i == 13 || i == 18 || i == 23;
        const bool isHex = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        if (isHyphenPlace ? c != '-' : !isHex) {
            return std::nullopt;
        }
    }
    return QUuid::fromString(QLatin1StringView(text->data(), static_cast<qsizetype>(text->size())));
}

bool read(QByteArrayView json, const ValueReader &reader, void *value, QString *failure)
{
    Decoder decoder(reader, value);
    QString reason;
    try {
        // The library takes a NUL for the end of its input; JSON never holds one.
        const qsizetype end = json.indexOf('\0');
        if (Library::sax_parse(json.data(), json.data() + json.size(), &decoder) && end < 0) {
            return true;
        }
        reason = decoder.failure().isEmpty() ? u"not valid JSON at byte %1"_s.arg(end + 1) : decoder.failure();
    } catch (const std::exception &) {
        reason = u"out of memory"_s;
    }
    if (failure) {
        *failure = reason;
    }
    return false;
}

} // namespace Json
