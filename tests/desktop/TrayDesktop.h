#pragma once

// The tray application as a person's desktop runs it: the real quilo program
// and a real tray host (trayer) as processes (ChildProgram) on the test's X server, watched
// through their logs and the X server's window tree, driven through xdotool.
#include "tests/desktop/DesktopUser.h"
#include "tests/support/Files.h"
#include "tests/support/Process.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace quilo::test {

// A window as xwininfo reports it, with its place on the screen.
struct XWindow {
    std::string id;
    std::string name;
    QRect frame;
};

// The windows under `parent` in the X server's tree (xwininfo -tree).
inline std::vector<XWindow> childWindows(const std::string& parent)
{
    std::vector<XWindow> windows;
    std::istringstream lines(commandOutput("xwininfo -tree -id " + parent + " 2>/dev/null"));
    // 0x200006 "Quilo": ("quilo" "Quilo")  22x22+0+0  +1001+1
    const std::regex child(R"re(^\s+(0x[0-9a-f]+) (?:"([^"]*)"|\(has no name\)).*?(\d+)x(\d+)[+-]-?\d+[+-]-?\d+\s+\+(-?\d+)\+(-?\d+))re");
    std::string line;
    std::smatch m;
    while (std::getline(lines, line))
        if (std::regex_search(line, m, child))
            windows.push_back({m[1], m[2], QRect(std::stoi(m[5]), std::stoi(m[6]), std::stoi(m[3]), std::stoi(m[4]))});
    return windows;
}

// Whether a window of that exact name is on the screen (mapped).
inline bool windowShown(const std::string& name)
{
    return !xWindowsNamed(name, "--onlyvisible").empty();
}

// The first window with that exact name, if any (xdotool's search).
inline std::string firstWindowNamed(const std::string& name)
{
    std::istringstream ids(xWindowsNamed(name));
    std::string id;
    std::getline(ids, id);
    return id;
}

// Where a window is on the screen (xdotool's geometry).
inline QRect windowFrame(const std::string& window)
{
    const std::string geometry = commandOutput("xdotool getwindowgeometry --shell " + window);
    const std::regex field(R"((X|Y|WIDTH|HEIGHT)=(-?\d+))");
    std::map<std::string, int> values;
    for (std::sregex_iterator m(geometry.begin(), geometry.end(), field), end; m != end; ++m)
        values[(*m)[1]] = std::stoi((*m)[2]);
    return QRect(values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]);
}

} // namespace quilo::test
