#pragma once

#include "foundation/QuiloKeys.h"
#include "iconfamily/IconFamily.h"
#include "jobs/JobUserInterface.h"
#include "jobs/SelectionSource.h"

#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace quilo {

class UserDefaults;

// Runs one job at a time over the file manager's selection, on a thread of
// its own: makes thumbnail icons, takes them off, or writes .icns files,
// with a progress window and a Stop button that is honoured between files.
class CreatingThumbnailsController {
public:
    CreatingThumbnailsController(JobUserInterface& ui, SelectionSource& selection, UserDefaults& defaults);
    ~CreatingThumbnailsController(); // waits for a running job
    CreatingThumbnailsController(const CreatingThumbnailsController&) = delete;
    CreatingThumbnailsController& operator=(const CreatingThumbnailsController&) = delete;

    // Starts the job of that kind unless one is running; then does nothing.
    void startThumbActionForType(int kind);
    // The Stop button.
    void stopCreatingThumbnailsButton() { stopProcessing_ = true; }
    // Returns when no job thread is left (the command line, tests).
    void waitUntilFinished();
    // Called on the job's thread as each job ends, however it ends.
    void setJobFinishedHandler(std::function<void()> handler) { jobFinished_ = std::move(handler); }

    bool currentlyProcessing() const { return currentlyProcessing_; }

    // The selection as the jobs walk it: the file manager's order reversed.
    QStringList getFinderSelections();

private:
    struct Job;

    void processThumbsForType(int kind);
    bool selectionIsUsable(const QStringList& paths);
    std::optional<QString> chooseDestination(const QStringList& paths);
    void processFile(Job& job, const QString& path);
    bool createThumbnail(Job& job, const QString& path, const Image* picture, ForkFailure* failure);
    void closeWindowAndResetUI();

    JobUserInterface& ui_;
    SelectionSource& selection_;
    UserDefaults& defaults_;
    std::atomic<bool> currentlyProcessing_{false};
    std::atomic<bool> stopProcessing_{false};
    std::function<void()> jobFinished_;
    std::thread thread_;
};

} // namespace quilo
