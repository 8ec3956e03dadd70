// Runs a fuzz target over the files of the folders that are given, without a fuzzer: each input that once mattered is
// part of the ordinary test run. Fails when a folder holds nothing.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace
{

bool replay(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.good() && !file.eof()) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    // A block of exactly this size, so that reading one byte behind the input is noticed.
    const auto input = std::make_unique<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), input.get());
    LLVMFuzzerTestOneInput(input.get(), bytes.size());
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    if (LLVMFuzzerInitialize && LLVMFuzzerInitialize(&argc, &argv) != 0) {
        return 1;
    }
    for (int i = 1; i < argc; ++i) {
        size_t count = 0;
        std::error_code error;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[i], error)) {
            if (entry.is_regular_file()) {
                std::fprintf(stderr, "%s\n",
                             entry.path().filename().c_str()); // the last one named is the one that fails
                if (!replay(entry.path())) {
                    return 1;
                }
                ++count;
            }
        }
        if (count == 0) {
            std::fprintf(stderr, "no inputs in %s\n", argv[i]);
            return 1;
        }
        std::fprintf(stderr, "%zu inputs from %s\n", count, argv[i]);
    }
    return argc > 1 ? 0 : 1;
}
