// PortParser, by the first byte one of its two formats. No field holds white space but a name; what is read was
// printed.

#include "Check.h"

#include "Services/Ports/PortParser.h"

namespace
{

bool isOneWord(const QString &text)
{
    return !text.contains(u' ') && !text.contains(u'\t') && !text.contains(u'\n');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArrayView output(data, static_cast<qsizetype>(size));
    PortParser::parseSSAddress(output);
    if (output.empty()) {
        return 0;
    }
    const bool isSS = output.front() % 2 == 0;
    output = output.sliced(1);
    const QList<PortInfo> ports = PortParser::parsePorts(output, isSS);
    FUZZ_CHECK(ports.size() <= output.size() / 9); // five columns of one character and the blanks between them
    for (const PortInfo &port : ports) {
        FUZZ_CHECK(!port.protocolType.isEmpty() && !port.state.isEmpty());
        for (const QString &text : {port.protocolType, port.state, port.localAddress, port.localPort,
                                    port.foreignAddress, port.foreignPort}) {
            FUZZ_CHECK(isOneWord(text));
        }
        FUZZ_CHECK(!port.processName.contains(u'\n') && !port.processName.contains(u"  "));
        FUZZ_CHECK(!port.localPort.contains(u'%') && !port.localAddress.contains(u'%'));
    }
    return 0;
}
