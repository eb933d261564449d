// A file-manager action's request: a job on the files it hands over, with
// the progress window, alerts and folder panel, as the tray application runs
// it from its menu.
#include "cli/Command.h"

#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "jobs/ClipboardSelection.h"
#include "jobs/CreatingThumbnailsController.h"
#include "jobs/WindowJobInterface.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <map>

namespace quilo::cli {
namespace {

const std::map<std::string, int> kKindByAction{
    {"create-thumbnails", kCreateThumbnails},
    {"restore-thumbnails", kRestoreThumbnails},
    {"save-as-icns", kSaveAsICNS},
};

// Qt ends the process with a core dump when it finds no display; say it first.
bool displayAvailable()
{
    return std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY") || std::getenv("QT_QPA_PLATFORM");
}

int runWithWindow(int kind, const QStringList& paths)
{
    static int argc = 1;
    static char name[] = "quilo";
    static char* argv[] = {name, nullptr};
    QApplication application(argc, argv);
    QApplication::setApplicationName("Quilo");
    QApplication::setQuitOnLastWindowClosed(false); // the job ends the process, not its windows

    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    defaults.registerDefaults(booleanFactoryDefaults());
    ClipboardSelection clipboard;
    FileManagerSelection selection(paths, clipboard);
    WindowJobInterface ui;
    CreatingThumbnailsController controller(ui, selection, defaults);
    QObject::connect(&ui.window(), &CreatingThumbnailsWindow::stopRequested, &ui.window(),
                     [&controller] { controller.stopCreatingThumbnailsButton(); });
    controller.setJobFinishedHandler(
        [&application] { QMetaObject::invokeMethod(&application, &QApplication::quit, Qt::QueuedConnection); });
    controller.startThumbActionForType(kind);
    QApplication::exec();
    controller.waitUntilFinished();
    return ui.alerted() ? kExitFailure : kExitSuccess;
}

int request(const Arguments& arguments)
{
    if (arguments.positionals.empty()) {
        std::fprintf(stderr, "quilo request: name the action\n");
        return kExitUsage;
    }
    const auto kind = kKindByAction.find(arguments.positionals.front());
    if (kind == kKindByAction.end()) {
        std::fprintf(stderr, "quilo request: unknown action '%s'\n", arguments.positionals.front().c_str());
        return kExitUsage;
    }
    if (!displayAvailable()) {
        std::fprintf(stderr, "quilo request: no display to show the progress window on; "
                             "quilo %s runs the same job on a terminal\n",
                     kind->first.c_str());
        return kExitFailure;
    }
    QStringList paths;
    for (auto path = arguments.positionals.begin() + 1; path != arguments.positionals.end(); ++path)
        paths << QString::fromStdString(*path);
    return runWithWindow(kind->second, paths);
}

constexpr const char* kHelp = R"(Usage: quilo request ACTION [--] [FILE...]

Runs one of the tray application's jobs on the files, taken as the file
manager's selection (in its order), with Quilo's progress window, its Stop
button, alerts and folder panel. Without files, the files a file manager
copied to the clipboard are the selection. The file-manager actions that
quilo install-file-manager-actions installs run this. ACTION is one of:

  create-thumbnails   Create Thumbnails
  restore-thumbnails  Restore Thumbnails
  save-as-icns        Save as ICNS Files (asks where to save them)

An empty selection, or a file that is not a picture, gets its alert and the
job does nothing. The exit status is 0 when the job ran, 1 when it was
refused or there is no display, 2 for a wrong command line.
)";

} // namespace

const Command& requestCommand()
{
    static const Command command{"request", "run a job with its progress window (file-manager actions)", kHelp,
                                 {}, &request};
    return command;
}

} // namespace quilo::cli
