#include "Models/DefaultsText.h"

#include "Models/Json/Reader.h"
#include "Models/Json/Writer.h"

#include <QHash>
#include <charconv>
#include <nlohmann/json.hpp>
#include <vector>

namespace
{

using Library = nlohmann::json;

std::optional<QByteArray> bytesOfBase64(std::string_view base64)
{
    auto decoded =
        QByteArray::fromBase64Encoding(QByteArray::fromRawData(base64.data(), static_cast<qsizetype>(base64.size())),
                                       QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional(*std::move(decoded)) : std::nullopt;
}

struct CutText {
    std::string_view base64;
    QByteArray bytes;
};

// JSON with its long base64 texts cut out: "*cut 0" stands for the first, and so on.
struct ShortenedJson {
    QByteArray json;
    std::vector<CutText> cut;
};

constexpr std::string_view kCutMark = "*cut ";

// The library handles each byte of a text several times; what we know to be base64 is spared that, which halves the
// time that thousands of stored servers take to load. The bytes {"data":" are structure wherever they stand in valid
// JSON, since the quotation mark would end a text around them, so the rest is valid exactly if the whole is. Nothing
// where a mark could be taken for a text of the file.
std::optional<ShortenedJson> shortened(QByteArrayView json)
{
    constexpr QByteArrayView kBegin("{\"data\":\"");
    constexpr qsizetype kLong = 1024;
    ShortenedJson result;
    qsizetype copied = 0;
    for (qsizetype at = json.indexOf(kBegin); at >= 0; at = json.indexOf(kBegin, at)) {
        at += kBegin.size();
        const qsizetype end = json.indexOf('"', at);
        if (end - at < kLong) {
            continue;
        }
        const std::string_view base64(json.data() + at, static_cast<size_t>(end - at));
        if (std::optional<QByteArray> bytes = bytesOfBase64(base64)) {
            result.json += json.sliced(copied, at - copied);
            result.json += QByteArray(kCutMark.data(), kCutMark.size()) + QByteArray::number(result.cut.size());
            result.cut.push_back({base64, *std::move(bytes)});
            copied = end;
        }
        at = end;
    }
    result.json += json.sliced(copied);
    const bool isAmbiguous = json.contains(QByteArrayView(kCutMark.data(), kCutMark.size())) ||
                             result.json.contains("\\u"); // an escape could spell the mark
    return result.cut.empty() || isAmbiguous ? std::nullopt : std::optional(std::move(result));
}

// Takes the entries of the outermost object. A value that is a container is copied as text, event by event, which
// needs no stack whatever its depth.
class DefaultsReader final : public nlohmann::json_sax<Library>
{
public:
    explicit DefaultsReader(std::vector<CutText> cut)
        : m_cut(std::move(cut))
    {
    }

    QList<DefaultsEntry> takeEntries() { return std::move(m_entries); }

    bool null() override { return other("null"); }

    bool boolean(bool value) override
    {
        return m_depth > 1 ? other(value ? "true" : "false") : add(DefaultsValue(value));
    }

    bool number_integer(number_integer_t value) override { return integer(value); }

    bool number_unsigned(number_unsigned_t value) override
    {
        return std::in_range<qint64>(value) ? integer(static_cast<qint64>(value)) : other(std::to_string(value));
    }

    bool number_float(number_float_t, const string_t &text) override { return other(text); }

    bool string(string_t &value) override;

    bool binary(binary_t &) override { return false; }

    bool start_object(size_t) override
    {
        if (m_depth++ == 0) {
            return true;
        }
        open('{');
        m_state = m_depth == 2 ? State::MayBeBytes : State::IsOther;
        return true;
    }

    bool start_array(size_t) override
    {
        ++m_depth;
        open('[');
        m_state = State::IsOther;
        return m_depth > 1; // the outermost value must be an object
    }

    bool key(string_t &name) override;

    bool end_object() override
    {
        close('}');
        return true;
    }

    bool end_array() override
    {
        close(']');
        return true;
    }

    bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &) override { return false; }

private:
    // What a container below the outermost object has turned out to be so far.
    enum class State { MayBeBytes, HasDataKey, IsBytes, IsOther };

    bool add(DefaultsValue value);
    bool integer(qint64 value);
    bool other(std::string_view text);
    void open(char bracket);
    void close(char bracket);
    void separate();

    CutText *cutText(std::string_view text);

    std::vector<CutText> m_cut;
    QList<DefaultsEntry> m_entries;
    QHash<QString, qsizetype> m_places;
    QString m_key;
    Json::Writer m_text; // of the container being copied
    bool m_needsComma = false;
    State m_state = State::IsOther;
    QByteArray m_bytes;
    size_t m_depth = 0;
};

bool DefaultsReader::add(DefaultsValue value)
{
    if (m_depth != 1) {
        return false; // the outermost value is no object
    }
    const auto place = m_places.constFind(m_key);
    if (place != m_places.constEnd()) {
        m_entries[*place].value = std::move(value);
    } else {
        m_places.insert(m_key, m_entries.size());
        m_entries.append({m_key, std::move(value)});
    }
    return true;
}

bool DefaultsReader::integer(qint64 value)
{
    return m_depth > 1 ? other(std::to_string(value)) : add(DefaultsValue(value));
}

bool DefaultsReader::other(std::string_view text)
{
    if (m_depth <= 1) {
        return add(OtherJson{QByteArray(text.data(), static_cast<qsizetype>(text.size()))});
    }
    separate();
    m_text.raw(text);
    m_needsComma = true;
    return true;
}

bool DefaultsReader::string(string_t &value)
{
    if (m_depth <= 1) {
        return add(Json::textOf(value));
    }
    CutText *cut = cutText(value);
    if (m_state == State::HasDataKey) {
        std::optional<QByteArray> bytes = cut ? std::optional(std::move(cut->bytes)) : bytesOfBase64(value);
        if (bytes) {
            m_state = State::IsBytes;
            m_bytes = *std::move(bytes);
            return true;
        }
    }
    m_state = State::IsOther;
    separate();
    m_text.text(Json::textOf(cut ? cut->base64 : value));
    m_needsComma = true;
    return true;
}

CutText *DefaultsReader::cutText(std::string_view text)
{
    if (m_cut.empty() || text.substr(0, kCutMark.size()) != kCutMark) {
        return nullptr;
    }
    size_t index = 0;
    std::from_chars(text.data() + kCutMark.size(), text.data() + text.size(), index);
    return &m_cut.at(index);
}

bool DefaultsReader::key(string_t &name)
{
    if (m_depth == 1) {
        m_key = Json::textOf(name);
        return true;
    }
    if (m_state == State::IsBytes) { // another key behind the data: no bytes after all
        m_text.text(QString::fromLatin1(m_bytes.toBase64()));
        m_needsComma = true;
    }
    m_state = m_state == State::MayBeBytes && name == "data" ? State::HasDataKey : State::IsOther;
    separate();
    m_text.text(Json::textOf(name));
    m_text.raw(":");
    return true;
}

void DefaultsReader::open(char bracket)
{
    separate();
    m_text.raw({&bracket, 1});
}

void DefaultsReader::close(char bracket)
{
    if (m_depth > 1) {
        m_text.raw({&bracket, 1});
        m_needsComma = true;
    }
    if (--m_depth == 1) {
        const QByteArray text = std::exchange(m_text, {}).take();
        m_needsComma = false;
        add(m_state == State::IsBytes ? DefaultsValue(std::exchange(m_bytes, {})) : DefaultsValue(OtherJson{text}));
    }
}

void DefaultsReader::separate()
{
    if (std::exchange(m_needsComma, false)) {
        m_text.raw(",");
    }
}

struct ValueWriter {
    Json::Writer &to;

    void operator()(qint64 value) const { to.integer(value); }

    void operator()(bool value) const { to.raw(value ? "true" : "false"); }

    void operator()(const QString &value) const { to.text(value); }

    void operator()(const QByteArray &value) const
    {
        const QByteArray base64 = value.toBase64();
        to.raw("{\"data\":\"");
        to.raw({base64.constData(), static_cast<size_t>(base64.size())});
        to.raw("\"}");
    }

    void operator()(const OtherJson &value) const
    {
        to.raw({value.text.constData(), static_cast<size_t>(value.text.size())});
    }
};

} // namespace

std::optional<QList<DefaultsEntry>> readDefaults(QByteArrayView json)
{
    std::optional<ShortenedJson> rest = shortened(json);
    DefaultsReader reader(rest ? std::move(rest->cut) : std::vector<CutText>());
    const QByteArrayView text = rest ? QByteArrayView(rest->json) : json;
    try {
        // The library takes a NUL for the end of its input; JSON never holds one.
        if (text.contains('\0') || !Library::sax_parse(text.data(), text.data() + text.size(), &reader)) {
            return std::nullopt;
        }
    } catch (const std::exception &) {
        return std::nullopt;
    }
    return reader.takeEntries();
}

QByteArray writeDefaults(const QList<DefaultsEntry> &entries)
{
    Json::Writer writer;
    const char *separator = "{\n";
    for (const DefaultsEntry &entry : entries) {
        writer.raw(separator);
        writer.text(entry.key);
        writer.raw(": ");
        std::visit(ValueWriter{writer}, entry.value);
        separator = ",\n";
    }
    writer.raw(entries.isEmpty() ? "{}\n" : "\n}\n");
    return writer.take();
}
