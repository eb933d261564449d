// Feeds saved inputs to a fuzz target without libFuzzer, so the regular build
// keeps every input that once broke the reader (and the seed corpus) passing.
// Arguments are files or directories of files; finding no input is an error,
// so a mistyped path cannot pass unnoticed.
// The target is the library it is linked with.
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

std::vector<std::filesystem::path> inputsIn(const std::filesystem::path& path)
{
    if (!std::filesystem::is_directory(path))
        return {path};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        if (entry.is_regular_file() && entry.path().filename().string().front() != '.')
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& file : inputsIn(argv[i])) {
            std::ifstream in(file, std::ios::binary);
            if (!in) {
                std::fprintf(stderr, "cannot read %s\n", file.c_str());
                return 1;
            }
            const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
            std::printf("%s (%zu bytes)\n", file.c_str(), bytes.size());
            std::fflush(stdout);
            quilo::fuzz::fuzzInput(bytes);
            ++replayed;
        }
    }
    if (replayed == 0) {
        std::fprintf(stderr, "no inputs found\n");
        return 1;
    }
    std::printf("replayed %zu inputs\n", replayed);
    return 0;
}
