#include "platform/linux/XdgAutostartStore.h"

#include "foundation/AtomicFile.h"
#include "foundation/Log.h"
#include "platform/linux/XdgAutostartEntry.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace quilo {
namespace {

namespace fs = std::filesystem;

// Desktop files are a few hundred bytes; a larger one is read only this far.
constexpr qint64 kLargestFileRead = 1 << 20;

// The XDG rules: a relative XDG_CONFIG_HOME or XDG_DATA_HOME is invalid and
// ignored.
fs::path sessionFolder(const char* variable, const char* fallback)
{
    const char* folder = std::getenv(variable);
    if (folder && folder[0] == '/')
        return folder;
    return fs::path(QFile::encodeName(QDir::homePath()).toStdString()) / fallback;
}

bool isItemFile(const fs::directory_entry& file)
{
    std::error_code ignored;
    const std::string name = file.path().filename().string();
    return name.size() > 8 && name.ends_with(".desktop") && file.is_regular_file(ignored);
}

QByteArray readText(const fs::path& path)
{
    QFile file(QFile::decodeName(path.c_str()));
    return file.open(QIODevice::ReadOnly) ? file.read(kLargestFileRead) : QByteArray();
}

// The program's file name with anything unusual in a file name made a '-'.
std::string fileNameStem(const AutostartEntry& entry)
{
    const QString program = entry.value(AutostartKey::Path).toString().section('/', -1);
    std::string stem;
    for (const QChar c : program) {
        const bool plain = c.isLetterOrNumber() && c.unicode() < 0x80;
        stem += plain || c == '.' || c == '_' || c == '-' ? char(c.unicode()) : '-';
    }
    return stem.empty() || stem.starts_with('.') ? "item" + stem : stem;
}

} // namespace

XdgAutostartStore::XdgAutostartStore()
    : folder_(sessionFolder("XDG_CONFIG_HOME", ".config") / "autostart")
    , linksFolder_(sessionFolder("XDG_DATA_HOME", ".local/share") / "quilo" / "login-items")
{
}

XdgAutostartStore::ItemFiles XdgAutostartStore::readItemFiles() const
{
    ItemFiles files;
    std::error_code error;
    for (fs::directory_iterator file(folder_, error), end; !error && file != end; file.increment(error)) {
        if (!isItemFile(*file))
            continue;
        const std::string name = file->path().filename().string();
        AutostartEntry entry = autostartEntryFromDesktopFile(readText(file->path()));
        entry[AutostartKey::DesktopFile] = QString::fromStdString(name);
        files.emplace(name, std::move(entry));
    }
    return files;
}

QList<AutostartEntry> XdgAutostartStore::readEntries()
{
    QList<AutostartEntry> entries;
    for (auto& [name, entry] : readItemFiles())
        entries.append(std::move(entry));
    return entries;
}

bool XdgAutostartStore::writeEntries(const QList<AutostartEntry>& entries)
{
    const ItemFiles files = readItemFiles();
    // The files that items still read from keep them; the others' names are
    // free for new items.
    std::set<std::string> kept;
    for (const AutostartEntry& entry : entries) {
        const std::string readFrom = entry.value(AutostartKey::DesktopFile).toString().toStdString();
        if (files.contains(readFrom))
            kept.insert(readFrom);
    }
    std::set<std::string> claimed;
    bool succeeded = true;
    for (const AutostartEntry& entry : entries) {
        const std::string name = fileNameFor(entry, files, kept, claimed);
        claimed.insert(name);
        const auto file = files.find(name);
        if (file == files.end() || file->second != entry)
            succeeded = writeItemFile(name, entry) && succeeded;
    }
    for (const auto& [name, entry] : files) {
        if (!claimed.contains(name))
            succeeded = removeItemFile(name) && succeeded;
    }
    return succeeded;
}

// The file an item was read from while it is still there and no earlier item
// took it; otherwise a new name after the item's program, which may be that
// of a file whose item is gone.
std::string XdgAutostartStore::fileNameFor(const AutostartEntry& entry, const ItemFiles& files,
                                           const std::set<std::string>& kept,
                                           const std::set<std::string>& claimed) const
{
    const std::string readFrom = entry.value(AutostartKey::DesktopFile).toString().toStdString();
    if (files.contains(readFrom) && !claimed.contains(readFrom))
        return readFrom;
    const std::string stem = fileNameStem(entry);
    std::string name = stem + ".desktop";
    for (int number = 2; kept.contains(name) || claimed.contains(name); ++number)
        name = stem + '-' + std::to_string(number) + ".desktop";
    return name;
}

bool XdgAutostartStore::writeItemFile(const std::string& name, const AutostartEntry& entry) const
{
    const fs::path path = folder_ / name;
    std::optional<QString> launchPath = QString();
    const QString program = entry.value(AutostartKey::Path).toString();
    if (isNewAutostartEntry(entry)) {
        std::error_code ignored; // a link of an item that this file held before
        fs::remove_all(linksFolder_ / fs::path(name).stem(), ignored);
        if (program.contains('%'))
            launchPath = launchLinkFor(name, program);
    }
    if (!launchPath)
        return false;
    const std::optional<QByteArray> text = desktopFileFromAutostartEntry(entry, *launchPath);
    if (!text) {
        logFormat("XdgAutostartStore: Could not write %s: the item names no program", path.c_str());
        return false;
    }
    std::error_code error;
    fs::create_directories(folder_, error);
    const auto bytes = std::span(reinterpret_cast<const std::uint8_t*>(text->constData()), std::size_t(text->size()));
    if (error || !writeFileAtomically(path, bytes)) {
        logFormat("XdgAutostartStore: Could not write %s: %s", path.c_str(),
                  error ? error.message().c_str() : std::strerror(errno));
        return false;
    }
    return true;
}

// A link of its own for the item in file `name`; nullopt, logged, when there
// can be none without a '%'.
std::optional<QString> XdgAutostartStore::launchLinkFor(const std::string& name, const QString& program) const
{
    const fs::path folder = linksFolder_ / fs::path(name).stem();
    const fs::path link = folder / QFile::encodeName(program.section('/', -1).replace('%', '_')).toStdString();
    std::error_code error;
    if (link.string().find('%') != std::string::npos)
        error = std::make_error_code(std::errc::invalid_argument);
    if (!error)
        fs::create_directories(folder, error);
    if (!error)
        fs::create_symlink(QFile::encodeName(program).toStdString(), link, error);
    if (error) {
        logFormat("XdgAutostartStore: Could not make %s, the link that starts a program whose path holds a '%%': %s",
                  link.c_str(), error.message().c_str());
        return std::nullopt;
    }
    return QFile::decodeName(link.c_str());
}

bool XdgAutostartStore::removeItemFile(const std::string& name) const
{
    const fs::path path = folder_ / name;
    std::error_code error;
    std::error_code ignored; // most items have no link
    fs::remove_all(linksFolder_ / fs::path(name).stem(), ignored);
    fs::remove(path, error);
    if (error)
        logFormat("XdgAutostartStore: Could not remove %s: %s", path.c_str(), error.message().c_str());
    return !error;
}

std::unique_ptr<AutostartStore> makeAutostartStore() { return std::make_unique<XdgAutostartStore>(); }

} // namespace quilo
