#include "cli/TerminalJobInterface.h"

#include <cstdio>

namespace quilo::cli {
namespace {

constexpr int kBarWidth = 24;

} // namespace

TerminalJobInterface::TerminalJobInterface(const char* command, std::optional<QString> destination, bool onTerminal)
    : command_(command)
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

} // namespace quilo::cli
