// A file-manager action's request: handed to the Quilo running in the user's
// session, which runs the job with its progress window, alerts and folder
// panel as it does from its menu. A Quilo is started for it if none runs.
#include "cli/Command.h"

#include "app/InstanceClient.h"
#include "app/QuiloMain.h"
#include "foundation/QuiloKeys.h"

#include <QCoreApplication>

#include <cstdio>
#include <filesystem>
#include <map>

namespace quilo::cli {
namespace {

const std::map<std::string, int> kKindByAction{
    {"create-thumbnails", kCreateThumbnails},
    {"restore-thumbnails", kRestoreThumbnails},
    {"save-as-icns", kSaveAsICNS},
};

// The running Quilo has a working folder of its own: relative paths are
// made whole here, where they mean something.
std::optional<QStringList> wholePaths(const std::vector<std::string>& given)
{
    QStringList paths;
    for (const std::string& path : given) {
        std::error_code error;
        // An empty path stays empty, for the request to refuse.
        const std::string whole = path.empty() ? path : std::filesystem::absolute(path, error).string();
        if (error)
            return std::nullopt;
        paths << QString::fromStdString(whole);
    }
    return paths;
}

// This very program, which with no arguments is the tray application.
QString thisProgram()
{
    std::error_code error;
    return QString::fromStdString(std::filesystem::read_symlink("/proc/self/exe", error).string());
}

int handOver(const InstanceRequest& request)
{
    static int argc = 1;
    static char name[] = "quilo";
    static char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv); // for the socket and the detached start

    const auto reply = handOverStartingInstance(request, thisProgram());
    if (!reply) {
        std::fprintf(stderr, "quilo request: no running Quilo answered, and none started for the request listened "
                             "within %d seconds\n",
                     int(std::chrono::duration_cast<std::chrono::seconds>(kStartTimeout).count()));
        return kExitFailure;
    }
    if (*reply == MessageCode::Busy) {
        std::fprintf(stderr, "quilo request: the running Quilo is busy with another job; try again once it has "
                             "finished\n");
        return kExitFailure;
    }
    if (*reply == MessageCode::Refused) {
        std::fprintf(stderr, "quilo request: the running Quilo refused the request\n");
        return kExitFailure;
    }
    return kExitSuccess;
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
    const auto paths = wholePaths({arguments.positionals.begin() + 1, arguments.positionals.end()});
    if (!paths) {
        std::fprintf(stderr, "quilo request: the working folder is gone, so the files cannot be found\n");
        return kExitFailure;
    }
    QString error;
    const auto request = InstanceRequest::runJob(kind->second, *paths, &error);
    if (!request) {
        std::fprintf(stderr, "quilo request: %s\n", error.toLocal8Bit().constData());
        return kExitUsage;
    }
    if (!displayAvailable()) {
        std::fprintf(stderr, "quilo request: no display to show the progress window on; "
                             "quilo %s runs the same job on a terminal\n",
                     kind->first.c_str());
        return kExitFailure;
    }
    return handOver(*request);
}

constexpr const char* kHelp = R"(Usage: quilo request ACTION [--] [FILE...]

Hands one of the tray application's jobs to the Quilo running in this
session, with the files as the file manager's selection (in its order); it
runs the job with its progress window, Stop button, alerts and folder panel.
When no Quilo runs, this starts one and hands the job over as soon as it
listens. Without files, the files a file manager copied to the clipboard are
the selection. The file-manager actions that quilo
install-file-manager-actions installs run this. ACTION is one of:

  create-thumbnails   Create Thumbnails
  restore-thumbnails  Restore Thumbnails
  save-as-icns        Save as ICNS Files (asks where to save them)

An empty selection, or a file that is not a picture, gets its alert and the
job does nothing. The exit status is 0 when the running Quilo took the job,
1 when there is no display or no Quilo took it (none answered, or the
running one is busy with another job), 2 for a wrong command line.
)";

} // namespace

const Command& requestCommand()
{
    static const Command command{"request", "hand a job to the running Quilo (file-manager actions)", kHelp, {},
                                 &request};
    return command;
}

} // namespace quilo::cli
