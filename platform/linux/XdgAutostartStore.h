#pragma once

#include "prefs/AutostartStore.h"

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace quilo {

// The XDG autostart folder as the list of login items: one desktop file per
// item in $XDG_CONFIG_HOME/autostart (~/.config/autostart when that is unset
// or not absolute). Every file named *.desktop is an item, whatever it holds.
//
// Order: XDG sessions start their autostart entries in no set order, so the
// list is the files in the byte order of their names. Unchanged items keep
// their files and so their places; a new item is named after its program
// ("quilo.desktop"), then "quilo-2.desktop", "quilo-3.desktop" and so on when
// the name is taken by an item that stays, and is read back where that name
// sorts.
//
// Items read remember their file ("Desktop File"). Writing touches only what
// changed: a file whose item comes back equal is left byte for byte, a
// changed item's file and a new item's are replaced atomically, and the file
// of an item that is gone is removed. Other files in the folder are never
// touched.
//
// GLib looks for the program of an Exec line before it turns "%%" into '%', so
// no Exec line can name a program whose path holds a '%': a new item for one
// names a symbolic link to it instead, in
// $XDG_DATA_HOME/quilo/login-items/<file name less .desktop>/ (under
// ~/.local/share when that is unset), which goes when the item's file goes.
class XdgAutostartStore final : public AutostartStore {
public:
    // The session's folders, looked up now.
    XdgAutostartStore();

    const std::filesystem::path& folder() const { return folder_; }

    QList<AutostartEntry> readEntries() override;
    bool writeEntries(const QList<AutostartEntry>& entries) override;

private:
    // The items as read now, by file name.
    using ItemFiles = std::map<std::string, AutostartEntry>;

    ItemFiles readItemFiles() const;
    std::string fileNameFor(const AutostartEntry& entry, const ItemFiles& files, const std::set<std::string>& kept,
                            const std::set<std::string>& claimed) const;
    bool writeItemFile(const std::string& name, const AutostartEntry& entry) const;
    bool removeItemFile(const std::string& name) const;
    std::optional<QString> launchLinkFor(const std::string& name, const QString& program) const;

    std::filesystem::path folder_;
    std::filesystem::path linksFolder_;
};

} // namespace quilo
