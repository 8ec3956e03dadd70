#include "Services/Ports/PortParser.h"

#include "Services/Parsers/SharedText.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

struct Process {
    QString name;
    QString pid;
};

constexpr std::array kHeadings{QByteArrayView("Active"), QByteArrayView("Proto"), QByteArrayView("Netid"),
                               QByteArrayView("State")};

// Netid State Recv-Q Send-Q Local Peer Process; the version without queues of one column less has no process.
enum SSColumn : size_t { SSProtocol, SSState, SSLocal = 4, SSForeign, SSProcess };

// Proto Recv-Q Send-Q Local Foreign State PID/Program
enum NetstatColumn : size_t { NetstatProtocol, NetstatLocal = 3, NetstatForeign, NetstatState, NetstatProcess };

constexpr size_t kMostWords = 7;

bool isHeading(QByteArrayView line)
{
    return std::ranges::any_of(kHeadings, [line](QByteArrayView word) { return line.startsWith(word); });
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

QByteArrayView digitsAt(QByteArrayView text, qsizetype from)
{
    qsizetype to = from;
    while (to < text.size() && isDigit(text[to])) {
        ++to;
    }
    return text.sliced(from, to - from);
}

// Of users:(("nginx",pid=12,fd=6),("nginx",pid=13,fd=6)) the first.
Process firstOfUsers(QByteArrayView text)
{
    static constexpr QByteArrayView kBetween("\",pid=");
    if (!text.contains("users:((")) {
        return {};
    }
    for (qsizetype end = text.indexOf(kBetween); end >= 0; end = text.indexOf(kBetween, end + 1)) {
        const qsizetype quote = end > 0 ? text.lastIndexOf('"', end - 1) : -1;
        const QByteArrayView pid = digitsAt(text, end + kBetween.size());
        if (quote >= 0 && quote + 1 < end && !pid.empty()) {
            return {Text::fromUtf8(text.sliced(quote + 1, end - quote - 1)), Text::fromUtf8(pid)};
        }
    }
    return {};
}

// name=... and pid=..., each wherever it first has a value.
Process namedFields(QByteArrayView text)
{
    static constexpr QByteArrayView kName("name=");
    static constexpr QByteArrayView kPid("pid=");
    const auto isEnd = [](char c) { return c == ',' || c == ')' || Text::isSpace(c); };
    Process process;
    for (qsizetype at = text.indexOf(kName); at >= 0 && process.name.isEmpty(); at = text.indexOf(kName, at + 1)) {
        const QByteArrayView rest = text.sliced(at + kName.size());
        process.name = Text::fromUtf8(rest.first(std::ranges::find_if(rest, isEnd) - rest.begin()));
    }
    for (qsizetype at = text.indexOf(kPid); at >= 0 && process.pid.isEmpty(); at = text.indexOf(kPid, at + 1)) {
        process.pid = Text::fromUtf8(digitsAt(text, at + kPid.size()));
    }
    return process;
}

// "12/nginx"; a third part is dropped.
Process pidAndName(QByteArrayView text)
{
    const auto parts = Text::firstPieces<2>(text, '/');
    return parts.isComplete() ? Process{Text::fromUtf8(parts.field[1]), Text::fromUtf8(parts.field[0])} : Process{};
}

Process processOf(QByteArrayView text)
{
    if (text.empty() || text == "-") {
        return {};
    }
    Process process = firstOfUsers(text);
    if (process.pid.isEmpty()) {
        process = namedFields(text);
    }
    return process.name.isEmpty() && process.pid.isEmpty() ? pidAndName(text) : process;
}

// A zone reaches from "%" to the next colon.
QByteArray withoutZones(QByteArrayView address)
{
    QByteArray kept;
    bool isZone = false;
    for (const char c : address) {
        isZone = c == '%' || (isZone && c != ':');
        if (!isZone) {
            kept += c;
        }
    }
    return kept;
}

class PortLines
{
public:
    void add(QByteArrayView line, bool isSSCommand)
    {
        std::array<QByteArrayView, kMostWords> words{};
        size_t found = 0;
        for (const QByteArrayView word : Text::words(line)) {
            words[found++] = word;
            if (found == words.size()) {
                break;
            }
        }
        if (isSSCommand && found >= SSForeign) {
            // All from the seventh word on is the process, whose name may have blanks in it.
            const QByteArrayView process =
                found > SSProcess ? QByteArrayView(words[SSProcess].begin(), line.end()) : QByteArrayView();
            const size_t shift = found == SSForeign ? 1 : 0;
            append(words[SSProtocol], words[SSLocal - shift], words[SSForeign - shift], words[SSState],
                   processOf(joined(process)));
        } else if (!isSSCommand && found > NetstatState) {
            append(words[NetstatProtocol], words[NetstatLocal], words[NetstatForeign], words[NetstatState],
                   words[NetstatProcess] == "-" ? Process() : pidAndName(words[NetstatProcess]));
        }
    }

    QList<PortInfo> ports;

private:
    // By single blanks; a text without runs of white space is given as it is.
    QByteArrayView joined(QByteArrayView text)
    {
        if (!text.contains("  ") && !text.contains('\t')) {
            return text;
        }
        m_joined.clear();
        for (const QByteArrayView word : Text::words(text)) {
            m_joined += m_joined.isEmpty() ? "" : " ";
            m_joined += word;
        }
        return m_joined;
    }

    void append(QByteArrayView protocol, QByteArrayView local, QByteArrayView foreign, QByteArrayView state,
                const Process &process)
    {
        const auto [localIp, localPort] = PortParser::parseSSAddress(local);
        if (foreign != m_foreignText) { // the same for all that listen
            m_foreignText = foreign;
            m_foreign = PortParser::parseSSAddress(foreign);
        }
        ports.append({.protocolType = m_protocol.of(protocol),
                      .localAddress = localIp,
                      .localPort = localPort,
                      .foreignAddress = m_foreign.ip,
                      .foreignPort = m_foreign.port,
                      .state = m_state.of(state),
                      .processName = process.name,
                      .pid = process.pid});
    }

    SharedText m_protocol;
    SharedText m_state;
    QByteArrayView m_foreignText;
    PortParser::Address m_foreign;
    QByteArray m_joined;
};

} // namespace

QList<PortInfo> PortParser::parsePorts(QByteArrayView from, bool isSSCommand)
{
    PortLines lines;
    for (const QByteArrayView raw : Text::lines(from)) {
        const QByteArrayView line = Text::trimmed(raw);
        if (!line.empty() && !isHeading(line)) {
            lines.add(line, isSSCommand);
        }
        if (lines.ports.size() == kMostPorts) {
            break;
        }
    }
    return lines.ports;
}

PortParser::Address PortParser::parseSSAddress(QByteArrayView address)
{
    if (address == "*" || address == "*:*") {
        return {u"*"_s, u"*"_s};
    }
    QByteArray kept;
    if (address.contains('%')) {
        kept = withoutZones(address);
        address = kept;
    }
    if (address.startsWith('[')) {
        const qsizetype close = address.indexOf(']');
        const qsizetype port = address.indexOf("]:");
        return {Text::fromUtf8(close < 0 ? address.sliced(1) : address.first(close).sliced(1)),
                port < 0 ? QString() : Text::fromUtf8(address.sliced(port + 2))};
    }
    // The last colon also parts ":::22", whose address is "::".
    const qsizetype colon = address.lastIndexOf(':');
    if (colon < 0) {
        return {Text::fromUtf8(address), {}};
    }
    return {Text::fromUtf8(address.first(colon)), Text::fromUtf8(address.sliced(colon + 1))};
}
