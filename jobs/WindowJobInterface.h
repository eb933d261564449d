#pragma once

#include "jobs/CreatingThumbnailsWindow.h"
#include "jobs/JobUserInterface.h"

#include <atomic>
#include <functional>

namespace quilo {

// A job's user interface in Qt widgets: the progress window, alerts and the
// folder panel. Made on the GUI thread; the job calls it from its own thread,
// and every call is handed to the GUI thread: queued for the progress, which
// the job need not wait for, blocking for the modal alert and panel, whose
// answers it needs.
class WindowJobInterface final : public JobUserInterface {
public:
    WindowJobInterface();
    ~WindowJobInterface() override;

    CreatingThumbnailsWindow& window() { return *window_; }
    // Whether the job ended in an alert.
    bool alerted() const { return alerted_; }

    void activate() override;
    void beep() override;
    void runAlert(const QString& title, const QString& message, const QString& button) override;
    std::optional<QString> runFolderPanel(const FolderPanelRequest& request) override;
    void centerWindow() override;
    void showWindow() override;
    void closeWindow() override;
    void setTitle(const QString& title) override;
    void setFileName(const QString& name) override;
    void setPicture(std::shared_ptr<const Image> picture) override;
    void setProgressMaximum(double maximum) override;
    void setProgressValue(double value) override;

private:
    void later(std::function<void()> call);
    void andWait(const std::function<void()>& call);

    std::unique_ptr<CreatingThumbnailsWindow> window_;
    std::atomic<bool> alerted_{false};
};

} // namespace quilo
