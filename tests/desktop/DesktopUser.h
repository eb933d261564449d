#pragma once

// A person at the test's X server: acts from a thread of its own while the
// GUI thread runs its event loop (and the modal loops of alerts and panels),
// looks at widgets through calls handed to the GUI thread, and clicks and
// types through the X server itself (xdotool's XTEST input), as a real user.
#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QEventLoop>
#include <QImage>
#include <QScreen>
#include <QThread>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include <unistd.h>

namespace quilo::test {

// Runs `call` on the GUI thread and waits for it.
inline void onGui(const std::function<void()>& call)
{
    if (QThread::currentThread() == qApp->thread())
        call();
    else
        QMetaObject::invokeMethod(qApp, call, Qt::BlockingQueuedConnection);
}

// Asks `question` on the GUI thread until it holds, for up to `seconds`.
inline bool eventually(const std::function<bool()>& question, double seconds = 30)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < deadline) {
        bool holds = false;
        onGui([&] { holds = question(); });
        if (holds)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

// Runs the user's actions on their own thread while the GUI thread serves
// events; fails the test if they take longer than `seconds`.
inline void actAsUser(const std::function<void()>& actions, int seconds = 120)
{
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, &loop, [&] {
        ADD_FAILURE() << "the user's actions did not finish in " << seconds << " s";
        loop.exit(1);
    });
    std::thread user([&] {
        actions();
        QMetaObject::invokeMethod(&loop, [&loop] { loop.quit(); }, Qt::QueuedConnection);
    });
    const int status = loop.exec();
    if (status != 0)
        std::_Exit(1); // the user thread is stuck in a blocking call; nothing else can be trusted
    user.join();
}

// A visible top-level widget of that type and window title, on the GUI thread.
template <typename Widget>
Widget* topLevel(const QString& title)
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->windowTitle() == title)
            if (auto* typed = qobject_cast<Widget*>(widget))
                return typed;
    return nullptr;
}

// The X windows the server knows by that exact name (xdotool's search).
inline std::string xWindowsNamed(const std::string& name, const std::string& options = "")
{
    // xdotool takes a regular expression: titles like "Save?" or "..." are
    // matched as they are written.
    std::string pattern;
    for (char c : name) {
        if (std::string_view(".^$*+?()[]{}|\\").find(c) != std::string_view::npos)
            pattern += '\\';
        pattern += c;
    }
    return commandOutput("xdotool search " + options + " --name '^" + pattern + "$' 2>/dev/null");
}

// A click at a point of the screen, through the X server.
inline void clickAt(QPoint point, int button = 1)
{
    // A synchronous move to where the pointer already is waits for a motion
    // that never comes, so the pointer comes from one pixel beside.
    const std::string x = std::to_string(point.x()), y = std::to_string(point.y());
    const std::string command = "xdotool mousemove " + std::to_string(point.x() + 1) + " " + y + " mousemove --sync "
        + x + " " + y + " click " + std::to_string(button);
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

// A left click at a widget's centre.
inline void click(QWidget* widget)
{
    QPoint centre;
    onGui([&] { centre = widget->mapToGlobal(widget->rect().center()); });
    clickAt(centre);
}

// Gives the window the keyboard focus: no window manager gives it here, so
// the X server is asked directly.
inline void focusWindow(QWidget* window)
{
    WId id = 0;
    onGui([&] { id = window->winId(); });
    const std::string command = "xdotool windowfocus --sync " + std::to_string(id) + " 2>/dev/null";
    for (int attempt = 0; attempt < 50 && std::system(command.c_str()) != 0; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

inline void typeText(const std::string& text)
{
    const std::string command = "xdotool type --delay 10 '" + text + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

inline void pressKey(const std::string& key)
{
    ASSERT_EQ(std::system(("xdotool key " + key).c_str()), 0);
}

// Another program (xclip) owns the clipboard with this one target, as a file
// manager does after Copy; `scratch` holds the content's file.
inline void putOnClipboard(const std::string& target, const std::string& content,
                           const std::filesystem::path& scratch)
{
    const std::filesystem::path file = scratch / "clipboard";
    if (FILE* out = std::fopen(file.c_str(), "wb")) {
        std::fwrite(content.data(), 1, content.size(), out);
        std::fclose(out);
    }
    const std::string command = "xclip -selection clipboard -t '" + target + "' -i '" + file.string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    // xclip returns before its background copy owns the clipboard.
    const std::string readBack = "xclip -selection clipboard -o -t '" + target + "' 2>/dev/null";
    for (int attempt = 0; attempt < 250 && commandOutput(readBack) != content; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_EQ(commandOutput(readBack), content);
}

inline int distinctColours(const QImage& image)
{
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 2)
        for (int x = 0; x < image.width(); x += 2)
            colours.insert(image.pixel(x, y));
    return int(colours.size());
}

// This program's objects as a screen reader gets them over the session's
// accessibility bus: "role | name | description" a line. From the user's
// thread: the GUI thread answers.
inline std::string screenReaderReads()
{
    return commandOutput(std::string(QUILO_SOURCE_DIR) + "/tests/desktop/atspi-tree.py " + std::to_string(::getpid()));
}

// What the screen shows in that rectangle, read from the root window as
// a person sees it (ImageMagick's import): a window mapped but never painted
// shows here as the black box it is, where a grab of the window itself may not.
inline QImage screenRegion(const QRect& region)
{
    const std::filesystem::path file
        = std::filesystem::temp_directory_path() / ("quilo-screen-" + std::to_string(::getpid()) + ".png");
    const std::string command = "import -window root -crop " + std::to_string(region.width()) + "x"
        + std::to_string(region.height()) + "+" + std::to_string(region.x()) + "+" + std::to_string(region.y())
        + " +repage '" + file.string() + "'";
    QImage shot;
    if (std::system(command.c_str()) == 0)
        shot.load(QString::fromStdString(file.string()));
    std::filesystem::remove(file);
    return shot;
}

// The screen's picture of that rectangle, kept under the build's test
// artefacts once `painted` (a part of it; all of it when empty) shows more
// than a few colours: a loaded machine maps a window some time before it
// draws it, and a window never drawn stays a black box under its frame.
inline QImage keepScreenRegion(const QRect& region, const std::string& name, const QRect& painted = {})
{
    QImage shot;
    const auto blank = [&] { return distinctColours(painted.isEmpty() ? shot : shot.copy(painted)) <= 8; };
    for (int attempt = 0; attempt < 60 && (shot.isNull() || blank()); ++attempt) {
        if (attempt > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            if (QThread::currentThread() == qApp->thread())
                QCoreApplication::processEvents();
        }
        shot = screenRegion(region);
    }
    EXPECT_FALSE(blank()) << name << " stayed blank on the screen";
    const std::filesystem::path folder = QUILO_TEST_ARTIFACTS;
    std::filesystem::create_directories(folder);
    EXPECT_TRUE(shot.save(QString::fromStdString((folder / name).string())));
    return shot;
}

// The window with its frame, as it is on the screen; its own area must be painted.
inline QImage keepScreenshot(QWidget* window, const std::string& name)
{
    QRect frame, content;
    onGui([&] {
        frame = window->frameGeometry();
        content = window->geometry();
    });
    return keepScreenRegion(frame, name, content.translated(-frame.topLeft()));
}

} // namespace quilo::test
