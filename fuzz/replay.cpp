// Runs the inputs of a folder through a fuzz target, once each: what the ordinary test run does with the corpus.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv)
{
    int count = 0;
    for (int at = 1; at < argc; ++at) {
        for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[at])) {
            if (!entry.is_regular_file()) {
                continue;
            }
            std::ifstream input(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
