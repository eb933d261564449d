#include "cli/TerminalJobInterface.h"

#include "cli/Command.h"
#include "cli/CustomIconProblems.h"
#include "foundation/PathNames.h"

#include <cstdio>
#include <string>

namespace quilo::cli {
namespace {

constexpr int kBarWidth = 24;

} // namespace

TerminalJobInterface::TerminalJobInterface(const char* command, const char* doneWith,
                                           std::optional<QString> destination, bool onTerminal)
    : command_(command)
    , doneWith_(doneWith)
    , destination_(std::move(destination))
    , onTerminal_(onTerminal)
{
}

void TerminalJobInterface::beep()
{
    if (onTerminal_)
        std::fputc('\a', stderr);
}

void TerminalJobInterface::runAlert(const QString& title, const QString& message, const QString&)
{
    alerted_ = true;
    std::fprintf(stderr, "quilo %s: %s: %s\n", command_, title.toUtf8().constData(), message.toUtf8().constData());
}

std::optional<QString> TerminalJobInterface::runFolderPanel(const FolderPanelRequest&) { return destination_; }

void TerminalJobInterface::setTitle(const QString& title)
{
    std::fprintf(stderr, "%s\n", title.toUtf8().constData());
}

void TerminalJobInterface::setFileName(const QString& name)
{
    const QByteArray shown = name.toUtf8();
    if (!onTerminal_) {
        std::fprintf(stderr, "[%d/%d] %s\n", value_, maximum_, shown.constData());
        return;
    }
    const int filled = maximum_ > 0 ? kBarWidth * value_ / maximum_ : 0;
    std::fprintf(stderr, "\r\033[K[%.*s%*s] %d/%d %s", filled, "########################", kBarWidth - filled, "",
                 value_, maximum_, shown.constData());
    lineOpen_ = true;
}

void TerminalJobInterface::closeWindow()
{
    if (lineOpen_)
        std::fputc('\n', stderr);
    lineOpen_ = false;
}

void TerminalJobInterface::fileFinished(const FileOutcome& outcome)
{
    if (outcome.changed) {
        ++(outcome.pictureRead ? done_ : unreadable_);
        return;
    }
    ++failed_;
    const std::filesystem::path path(pathFromQString(outcome.path));
    std::fprintf(stderr, "%squilo %s: %s: %s\n", lineOpen_ ? "\r\033[K" : "", command_,
                 displayPath(path.string()).c_str(), displayPath(explainCustomIconFailure(outcome.failure)).c_str());
    lineOpen_ = false;
}

void TerminalJobInterface::printSummary() const
{
    const int finished = done_ + unreadable_ + failed_;
    std::string line = std::to_string(maximum_) + (maximum_ == 1 ? " picture: " : " pictures: ")
                       + std::to_string(done_) + " " + doneWith_;
    if (unreadable_ > 0)
        line += ", " + std::to_string(unreadable_) + " unreadable, given clear icons";
    if (failed_ > 0)
        line += ", " + std::to_string(failed_) + " could not be changed";
    if (finished < maximum_)
        line += ", stopped after " + std::to_string(finished);
    std::fprintf(stderr, "%s\n", line.c_str());
}

} // namespace quilo::cli
