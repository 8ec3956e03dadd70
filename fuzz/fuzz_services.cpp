// ServiceParser. Every record has a description of one line; no status is left open.

#include "Check.h"

#include "Services/Parsers/ServiceParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView output(data, static_cast<qsizetype>(size));
    const QList<ServiceInfo> services = ServiceParser::parse(output);
    FUZZ_CHECK(services.size() <= output.size() / 9); // five columns of one character and the blanks between them
    for (const ServiceInfo &service : services) {
        FUZZ_CHECK(service.status != ServiceStatus::Unknown);
        FUZZ_CHECK(!service.name.contains(u' ') && !service.name.startsWith(u'●') && !service.name.contains(u'\n'));
        FUZZ_CHECK(!service.description.isEmpty() && !service.description.contains(u"  ") &&
                   !service.description.contains(u'\n'));
    }
    return 0;
}
