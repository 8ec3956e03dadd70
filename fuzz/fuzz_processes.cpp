// ProcessParser. Every record has a number for its process and whole columns of one line.

#include "Check.h"

#include "Services/Parsers/ProcessParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView output(data, static_cast<qsizetype>(size));
    const QList<ProcessInfo> processes = ProcessParser::parse(output);
    FUZZ_CHECK(processes.size() <= output.size() / 21); // eleven columns of one character and the blanks between them
    for (const ProcessInfo &process : processes) {
        for (const QString &column :
             {process.pid, process.user, process.cpu, process.memory, process.rssMemoryKB, process.startTime}) {
            FUZZ_CHECK(!column.isEmpty() && !column.contains(u' ') && !column.contains(u'\n'));
        }
        FUZZ_CHECK(process.pidInt() != 0 || process.pid.contains(u'0'));
        FUZZ_CHECK(!process.command.isEmpty() && !process.command.contains(u"  ") &&
                   !process.command.contains(u'\n'));
    }
    return 0;
}
