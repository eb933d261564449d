#pragma once

// A home of a test's own for the file managers' menu entries, and readers
// of what is installed there that are no part of Quilo: GLib's key files,
// as Nemo and KIO read theirs, and xmllint.
#include "tests/cli/RunQuilo.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <optional>

namespace quilo::test {

namespace fs = std::filesystem;

struct Action {
    std::string label, word;
};
inline const std::vector<Action> kActions{{"Create Thumbnails", "create-thumbnails"},
                                          {"Restore Thumbnails", "restore-thumbnails"},
                                          {"Save as ICNS Files", "save-as-icns"}};

inline bool isExecutable(const fs::path& path)
{
    return (fs::status(path).permissions() & fs::perms::owner_exec) != fs::perms::none;
}

// A string value as GLib reads it, escapes undone.
inline std::optional<std::string> keyFileValue(const fs::path& file, const std::string& group, const char* key)
{
    GKeyFile* keys = g_key_file_new();
    std::optional<std::string> value;
    if (g_key_file_load_from_file(keys, file.c_str(), G_KEY_FILE_NONE, nullptr))
        if (gchar* found = g_key_file_get_string(keys, group.c_str(), key, nullptr)) {
            value = found;
            g_free(found);
        }
    g_key_file_free(keys);
    return value;
}

inline std::string xpath(const fs::path& file, const std::string& expression)
{
    std::string value = shell("xmllint --xpath " + sq(expression) + " " + sq(file) + " 2>&1").output;
    if (!value.empty() && value.back() == '\n')
        value.pop_back();
    return value;
}

class FileManagerActions : public ::testing::Test {
protected:
    FileManagerActions() { fs::create_directories(home_); }

    // A home of the test's own, with nothing of the system's: no file
    // manager on PATH, no system-wide Thunar actions.
    std::string environment() const
    {
        return "export HOME=" + sq(home_) + " XDG_DATA_HOME=" + sq(data_) + " XDG_CONFIG_HOME=" + sq(config_)
            + " XDG_CONFIG_DIRS=" + sq(system_) + " PATH=" + sq(programs_) + ";";
    }
    Outcome run(const std::string& arguments) const { return quilo(arguments, environment()); }

    fs::path script(const char* fileManager, const Action& action) const
    {
        return std::string_view(fileManager) == "nautilus" ? data_ / "nautilus/scripts/Quilo" / action.label
                                                           : config_ / "caja/scripts/Quilo" / action.label;
    }
    fs::path nemoAction(const Action& action) const
    {
        return data_ / "nemo/actions" / ("quilo-" + action.word + ".nemo_action");
    }
    fs::path serviceMenu() const { return data_ / "kio/servicemenus/quilo.desktop"; }
    fs::path uca() const { return config_ / "Thunar/uca.xml"; }

    // The command line each entry runs, before the selection goes in.
    std::string nemoExec(const Action& action) const
    {
        return keyFileValue(nemoAction(action), "Nemo Action", "Exec").value_or("");
    }
    std::string dolphinExec(const Action& action) const
    {
        return keyFileValue(serviceMenu(), "Desktop Action " + action.word, "Exec").value_or("");
    }
    std::string thunarCommand(const Action& action) const
    {
        return xpath(uca(), "string(//action[unique-id='quilo-" + action.word + "']/command)");
    }

    TemporaryDirectory directory_;
    fs::path home_ = directory_ / "home", data_ = directory_ / "data", config_ = directory_ / "config";
    fs::path system_ = directory_ / "etc", programs_ = directory_ / "bin";
};

} // namespace quilo::test
