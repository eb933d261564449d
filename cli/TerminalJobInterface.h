#pragma once

#include "jobs/JobUserInterface.h"

#include <QString>

#include <atomic>
#include <optional>

namespace quilo::cli {

// A job's user interface on a terminal: alerts go to stderr as their title
// and message, the progress is a bar redrawn in place on a terminal and a
// plain line per file otherwise, a file that could not be changed is named
// with the reason, and the folder panel answers with the folder given on the
// command line. `doneWith` says what a file that went well has
// ("with icons").
class TerminalJobInterface final : public JobUserInterface {
public:
    TerminalJobInterface(const char* command, const char* doneWith, std::optional<QString> destination,
                         bool onTerminal);

    bool alerted() const { return alerted_; }
    int failures() const { return failed_; }
    // "26 pictures: 21 with icons, 5 unreadable, given clear icons"
    void printSummary() const;

    void activate() override {}
    void beep() override;
    void runAlert(const QString& title, const QString& message, const QString& button) override;
    std::optional<QString> runFolderPanel(const FolderPanelRequest& request) override;
    void centerWindow() override {}
    void showWindow() override {}
    void closeWindow() override;
    void setTitle(const QString& title) override;
    void setFileName(const QString& name) override;
    void setPicture(std::shared_ptr<const Image>) override {}
    void setProgressMaximum(double maximum) override { maximum_ = int(maximum); }
    void setProgressValue(double value) override { value_ = int(value); }
    void fileFinished(const FileOutcome& outcome) override;

private:
    const char* command_;
    const char* doneWith_;
    std::optional<QString> destination_;
    bool onTerminal_;
    int maximum_ = 0;
    int value_ = 0;
    bool lineOpen_ = false;
    int done_ = 0;
    int unreadable_ = 0;
    int failed_ = 0;
    std::atomic<bool> alerted_{false};
};

} // namespace quilo::cli
