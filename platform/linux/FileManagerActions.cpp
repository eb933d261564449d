#include "platform/linux/FileManagerActions.h"

#include "foundation/AtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <pwd.h>
#include <unistd.h>

namespace quilo::filemanager {
namespace {

namespace fs = std::filesystem;

fs::path homeFolder()
{
    if (const char* home = std::getenv("HOME"); home && *home)
        return home;
    const passwd* user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

// The XDG rules: unset, empty or relative means the default.
fs::path xdgFolder(const char* variable, const fs::path& fallback)
{
    const char* value = std::getenv(variable);
    if (!value || *value != '/')
        return fallback;
    return value;
}

std::vector<fs::path> xdgFolderList(const char* variable, const char* fallback)
{
    const char* value = std::getenv(variable);
    const std::string list = value && *value ? value : fallback;
    std::vector<fs::path> folders;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(':', start), list.size());
        if (end > start && list[start] == '/')
            folders.emplace_back(list.substr(start, end - start));
        start = end + 1;
    }
    return folders;
}

} // namespace

const std::array<Action, 3>& actions()
{
    static const std::array<Action, 3> all{{
        {"Create Thumbnails", "create-thumbnails", "Give the selected pictures their thumbnails as custom icons",
         "image-x-generic"},
        {"Restore Thumbnails", "restore-thumbnails", "Take the custom icons off the selected pictures", "edit-undo"},
        {"Save as ICNS Files", "save-as-icns", "Save the thumbnails of the selected pictures as .icns files",
         "document-save-as"},
    }};
    return all;
}

Setup setupFromEnvironment(std::string quilo)
{
    const fs::path home = homeFolder();
    return {xdgFolder("XDG_DATA_HOME", home / ".local/share"), xdgFolder("XDG_CONFIG_HOME", home / ".config"),
            xdgFolderList("XDG_CONFIG_DIRS", "/etc/xdg"), std::move(quilo)};
}

const std::vector<FileManager>& fileManagers()
{
    static const std::vector<FileManager> all{nautilus(), nemo(), caja(), dolphin(), thunar()};
    return all;
}

std::string shellQuoted(std::string_view word)
{
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string desktopExecQuoted(std::string_view word)
{
    std::string quoted = "\"";
    for (const char c : word) {
        if (c == '"' || c == '`' || c == '$' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

std::string keyFileEscaped(std::string_view value)
{
    std::string escaped;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c == '\\')
            escaped += "\\\\";
        else if (c == '\n')
            escaped += "\\n";
        else if (c == '\r')
            escaped += "\\r";
        else if (c == '\t')
            escaped += "\\t";
        else if (c == ' ' && i == 0) // leading blanks are trimmed otherwise
            escaped += "\\s";
        else
            escaped += c;
    }
    return escaped;
}

std::string percentsDoubled(std::string_view text)
{
    std::string doubled;
    for (const char c : text)
        doubled += c == '%' ? std::string("%%") : std::string(1, c);
    return doubled;
}

bool writeFile(const fs::path& path, std::string_view content, bool executable, Result& result)
{
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error) {
        result.error = "cannot make the folder " + path.parent_path().string() + ": " + error.message();
        return false;
    }
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(content.data());
    if (!writeFileAtomically(path, {bytes, content.size()}, executable)) {
        result.error = "cannot write " + path.string() + ": " + std::strerror(errno);
        return false;
    }
    result.written.push_back(path);
    return true;
}

bool removeFile(const fs::path& path, Result& result)
{
    std::error_code error;
    if (fs::remove(path, error))
        result.removed.push_back(path);
    if (error)
        result.error = "cannot remove " + path.string() + ": " + error.message();
    return !error;
}

void removeFolderIfEmpty(const fs::path& folder)
{
    ::rmdir(folder.c_str()); // fails, as it should, when something is left in it
}

} // namespace quilo::filemanager
