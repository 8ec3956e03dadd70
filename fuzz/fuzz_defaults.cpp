// The defaults file. What is taken is written as JSON that holds the same entries.

#include "Check.h"

#include "Models/DefaultsText.h"

#include <nlohmann/json.hpp>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView input(data, static_cast<qsizetype>(size));
    const std::optional<QList<DefaultsEntry>> entries = readDefaults(input);
    if (!entries) {
        return 0;
    }
    const QByteArray written = writeDefaults(*entries);
    const std::optional<QList<DefaultsEntry>> again = readDefaults(written);
    FUZZ_CHECK(again.has_value());
    FUZZ_CHECK(*again == *entries);
    FUZZ_CHECK(writeDefaults(*again) == written);

    constexpr size_t kDepthTheLibraryCompares = 4096; // it compares trees by recursion
    if (size < kDepthTheLibraryCompares && !input.contains("\"data\"")) {
        const auto before = nlohmann::json::parse(input.data(), input.data() + input.size(), nullptr, false);
        const auto after = nlohmann::json::parse(written.begin(), written.end(), nullptr, false);
        FUZZ_CHECK(before == after);
    }
    return 0;
}
