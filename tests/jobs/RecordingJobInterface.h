#pragma once

#include "jobs/JobUserInterface.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>

namespace quilo::test {

// A job's user interface that writes down every call in order, answers the
// folder panel as told, and lets a test act at the moment a file's window
// is shown (press Stop, touch the file, start another job).
class RecordingJobInterface final : public JobUserInterface {
public:
    std::optional<QString> panelAnswer;
    std::function<void(int fileNumber)> onShowWindow;

    QStringList calls() const
    {
        std::lock_guard lock(mutex_);
        return calls_;
    }
    FolderPanelRequest lastPanel() const
    {
        std::lock_guard lock(mutex_);
        return panel_;
    }

    void activate() override { record("activate"); }
    void beep() override { record("beep"); }
    void runAlert(const QString& title, const QString& message, const QString& button) override
    {
        record("alert " + title + " | " + message + " | " + button);
    }
    std::optional<QString> runFolderPanel(const FolderPanelRequest& request) override
    {
        {
            std::lock_guard lock(mutex_);
            panel_ = request;
        }
        record("panel");
        return panelAnswer;
    }
    void centerWindow() override { record("center"); }
    void showWindow() override
    {
        record("show");
        if (onShowWindow)
            onShowWindow(++shown_);
    }
    void closeWindow() override { record("close"); }
    void setTitle(const QString& title) override { record("title " + title); }
    void setFileName(const QString& name) override { record("file " + name); }
    void setPicture(std::shared_ptr<const Image> picture) override
    {
        record(picture ? QString("picture %1x%2").arg(picture->pixelsWide()).arg(picture->pixelsHigh())
                       : QString("picture none"));
    }
    void setProgressMaximum(double maximum) override { record(QString("maximum %1").arg(maximum)); }
    void setProgressValue(double value) override { record(QString("progress %1").arg(value)); }

private:
    void record(const QString& call)
    {
        std::lock_guard lock(mutex_);
        calls_ << call;
    }

    mutable std::mutex mutex_;
    QStringList calls_;
    FolderPanelRequest panel_;
    int shown_ = 0;
};

} // namespace quilo::test
