// The thumbnail jobs from the command line: the same driver as the tray
// application's, with the paths given as the file manager's selection.
#include "cli/Command.h"
#include "cli/TerminalJobInterface.h"

#include "foundation/Log.h"
#include "foundation/PathNames.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "jobs/CreatingThumbnailsController.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace quilo::cli {
namespace {

constexpr const char* kCommonOptions = R"(
The paths are taken as a file manager's selection, and like every Quilo job
this one walks them from the last to the first. Every path must name a picture
(by its extension), or nothing is done.

  --keep-dates     put each picture's modification date back afterwards
  --no-keep-dates  leave it at the time of the change
                   (default: the "Maintain image modification dates" preference)

Paths that do not exist are left out. A picture that cannot be read gets
clear icons. The job ends with a line that counts what became of the
pictures; a file whose icon could not be changed is named with the reason.

Ctrl-C stops the job after the picture in hand. The exit status is 0 when
every picture was done, 1 when the job was refused (no pictures, or a path
that is not a picture) or a file could not be changed, 130 when stopped by
Ctrl-C, 2 for a wrong command line.
)";

constexpr int kExitInterrupted = 130; // as a shell reports a command ended by Ctrl-C

std::atomic<CreatingThumbnailsController*> runningJob{nullptr};
std::atomic<bool> interrupted{false};

// Ctrl-C is the Stop button: the picture in hand is finished first.
void stopOnInterrupt(int)
{
    interrupted = true;
    if (CreatingThumbnailsController* job = runningJob.load())
        job->stopCreatingThumbnailsButton();
    std::signal(SIGINT, SIG_DFL); // a second Ctrl-C ends Quilo at once
}

int runJob(const char* command, int kind, const char* doneWith, const Arguments& arguments,
           std::optional<QString> destination = {})
{
    if (arguments.positionals.empty()) {
        std::fprintf(stderr, "quilo %s: name at least one picture\n", command);
        return kExitUsage;
    }
    if (arguments.flag("keep-dates") && arguments.flag("no-keep-dates")) {
        std::fprintf(stderr, "quilo %s: --keep-dates or --no-keep-dates, not both\n", command);
        return kExitUsage;
    }
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    defaults.registerDefaults(booleanFactoryDefaults());
    if (arguments.flag("keep-dates") || arguments.flag("no-keep-dates"))
        defaults.setVolatileOverride(arguments.flag("keep-dates"), RTZMaintainImageModificationDatesKey);

    QStringList paths;
    for (const std::string& path : arguments.positionals)
        paths << qStringFromPath(path);
    GivenSelection selection(paths);
    const bool onTerminal = ::isatty(STDERR_FILENO) != 0;
    TerminalJobInterface ui(command, doneWith, std::move(destination), onTerminal);
    // The progress line shows each file; the log's line for it goes to the
    // system log alone rather than a second time beside it.
    const LogSink previous = onTerminal ? setLogSink(writeToSystemLog) : LogSink();
    CreatingThumbnailsController controller(ui, selection, defaults);
    runningJob = &controller;
    std::signal(SIGINT, stopOnInterrupt);
    controller.startThumbActionForType(kind);
    controller.waitUntilFinished();
    std::signal(SIGINT, SIG_DFL);
    runningJob = nullptr;
    if (onTerminal)
        setLogSink(previous);
    if (ui.alerted())
        return kExitFailure;
    ui.printSummary();
    if (interrupted)
        return kExitInterrupted;
    return ui.failures() > 0 ? kExitFailure : kExitSuccess;
}

const AcceptedArguments kJobArguments{{}, {"keep-dates", "no-keep-dates"}};

int createThumbnails(const Arguments& arguments)
{
    return runJob("create-thumbnails", kCreateThumbnails, "with icons", arguments);
}
int restoreThumbnails(const Arguments& arguments)
{
    return runJob("restore-thumbnails", kRestoreThumbnails, "with icons taken off", arguments);
}

int saveAsIcns(const Arguments& arguments)
{
    const auto output = arguments.option("output");
    if (!output) {
        std::fprintf(stderr, "quilo save-as-icns: name the folder with --output DIR\n");
        return kExitUsage;
    }
    if (!makeOutputDirectory("save-as-icns", *output))
        return kExitFailure;
    return runJob("save-as-icns", kSaveAsICNS, "done", arguments, qStringFromPath(*output));
}

const std::string kCreateHelp = std::string(R"(Usage: quilo create-thumbnails PICTURE... [--keep-dates|--no-keep-dates]

Gives each picture its thumbnails as its custom icon (see quilo set-icon), as
the tray application's "Create Thumbnails" does.
)") + kCommonOptions;

const std::string kRestoreHelp = std::string(R"(Usage: quilo restore-thumbnails PICTURE...
                                [--keep-dates|--no-keep-dates]

Takes each picture's custom icon off, as the tray application's "Restore
Thumbnails" does.
)") + kCommonOptions;

const std::string kSaveHelp = std::string(R"(Usage: quilo save-as-icns PICTURE... --output DIR
                          [--keep-dates|--no-keep-dates]

The tray application's "Save as ICNS Files", with DIR as the chosen folder,
quirks included: each picture's .icns file holds the thumbnails of the
picture done before it (so the first gets none), and the pictures get their
thumbnails as custom icons; with "Create thumbnails for new icns files" off,
nothing is written. For plain .icns files of each picture, use quilo icns.
)") + kCommonOptions;

} // namespace

const Command& createThumbnailsCommand()
{
    static const Command command{"create-thumbnails", "give pictures their thumbnails as custom icons (a job)",
                                 kCreateHelp.c_str(), kJobArguments, &createThumbnails};
    return command;
}

const Command& restoreThumbnailsCommand()
{
    static const Command command{"restore-thumbnails", "take pictures' custom icons off (a job)",
                                 kRestoreHelp.c_str(), kJobArguments, &restoreThumbnails};
    return command;
}

const Command& saveAsIcnsCommand()
{
    static const Command command{"save-as-icns", "the Save as ICNS Files job, into a folder", kSaveHelp.c_str(),
                                 {{"output"}, {"keep-dates", "no-keep-dates"}}, &saveAsIcns};
    return command;
}

} // namespace quilo::cli
