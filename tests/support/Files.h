#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <span>
#include <vector>

namespace quilo::test {

inline std::vector<std::uint8_t> readFileBytes(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The names in a folder (not its subfolders' contents), sorted.
inline std::set<std::string> directoryListing(const std::filesystem::path& folder)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

inline void writeFileBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

inline std::string readFileText(const std::filesystem::path& path)
{
    const auto bytes = readFileBytes(path);
    return {bytes.begin(), bytes.end()};
}

// Writes the text, making the file's folders first.
inline void writeFileText(const std::filesystem::path& path, const std::string& text)
{
    std::filesystem::create_directories(path.parent_path());
    writeFileBytes(path, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

} // namespace quilo::test
