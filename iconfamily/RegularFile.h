#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace quilo {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileStream = std::unique_ptr<std::FILE, CloseFile>;

// Opens a file for reading only when it is a regular file. The open does not
// block (a FIFO or a device named like a picture would wait for a writer for
// ever), and the type is checked on the opened file, so the name cannot be
// swapped in between. Null with the reason in `error` otherwise.
FileStream openRegularFile(const std::filesystem::path& path, std::string& error);

} // namespace quilo
