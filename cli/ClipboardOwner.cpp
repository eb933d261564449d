#include "cli/ClipboardOwner.h"

#include "iconfamily/IconFamily.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quilo::cli {
namespace {

constexpr char kOwns = '1';
constexpr char kFailed = '0';
// Time for a loaded machine to open the display; past it the owner is given up.
constexpr int kConfirmTimeoutMs = 30'000;

// Nothing of the command's own stays open in the owner: a caller reading the
// command's output to its end must not wait for the owner too, nor find its
// working folder busy. Qt aborts when the display cannot be opened; that
// leaves no core file behind.
void detach(int reportTo)
{
    ::setsid();
    // Failing to move leaves it in the working folder: no worse than before.
    [[maybe_unused]] const int moved = ::chdir("/");
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    const int nothing = ::open("/dev/null", O_RDWR);
    for (int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nothing, standard);
    if (nothing > STDERR_FILENO)
        ::close(nothing);
    if (reportTo > 3)
        ::close_range(3, unsigned(reportTo) - 1, 0);
    ::close_range(unsigned(reportTo) + 1, ~0u, 0);
}

void report(int reportTo, char answer)
{
    while (::write(reportTo, &answer, 1) < 0 && errno == EINTR) {
    }
    ::close(reportTo);
}

// Qt's own idea of ownership can lag behind the display server's: after
// another program took over, it may still say yes for good. The content it
// hands out, though, follows the server's answer to who owns the clipboard.
bool stillOurs(QClipboard* clipboard, const QMimeData* ours)
{
    return clipboard->ownsClipboard() && clipboard->mimeData() == ours;
}

// The owner's life: put the family, say whether the clipboard is ours, and
// serve it until another program takes it.
int serve(const IconFamily& family, int reportTo)
{
    detach(reportTo);
    static int argc = 1;
    static char name[] = "quilo";
    static char* argv[] = {name, nullptr};
    QGuiApplication application(argc, argv);
    family.putOnScrap();
    QClipboard* clipboard = QGuiApplication::clipboard();
    const QMimeData* ours = clipboard->ownsClipboard() ? clipboard->mimeData() : nullptr;
    if (!ours) {
        report(reportTo, kFailed);
        return 1;
    }
    QObject::connect(clipboard, &QClipboard::changed, &application, [clipboard, ours](QClipboard::Mode mode) {
        if (mode == QClipboard::Clipboard && !stillOurs(clipboard, ours))
            QCoreApplication::quit();
    });
    report(reportTo, kOwns);
    return QGuiApplication::exec();
}

// The owner's answer: kOwns, kFailed, or nothing when it died or hangs.
char awaitAnswer(int from)
{
    pollfd ready{from, POLLIN, 0};
    int polled;
    while ((polled = ::poll(&ready, 1, kConfirmTimeoutMs)) < 0 && errno == EINTR) {
    }
    char answer = 0;
    if (polled == 1 && ::read(from, &answer, 1) != 1)
        answer = 0;
    return answer;
}

} // namespace

bool keepOnClipboard(const IconFamily& family, std::string& error)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        error = "cannot make a pipe";
        return false;
    }
    const pid_t owner = ::fork();
    if (owner < 0) {
        ::close(ends[0]);
        ::close(ends[1]);
        error = "cannot start the process that holds the clipboard";
        return false;
    }
    if (owner == 0) {
        ::close(ends[0]);
        ::_exit(serve(family, ends[1]));
    }
    ::close(ends[1]);
    const char answer = awaitAnswer(ends[0]);
    ::close(ends[0]);
    if (answer == kOwns)
        return true; // the owner lives on in its own session
    if (answer == 0)
        ::kill(owner, SIGKILL); // hung, or already dead
    ::waitpid(owner, nullptr, 0);
    error = answer == kFailed ? "the display refused to make Quilo the clipboard's owner"
                              : "could not open the display";
    return false;
}

} // namespace quilo::cli
