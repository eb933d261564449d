#pragma once

#include "iconfamily/ForkStore.h"
#include "iconfamily/Image.h"

#include <QString>

#include <memory>
#include <optional>

namespace quilo {

// What the open panel of a Save-as-ICNS job asks.
struct FolderPanelRequest {
    QString title;
    QString prompt;
    QString startFolder;
    bool canChooseDirectories = true;
    bool canChooseFiles = true;
    bool canCreateDirectories = true;
};

// What became of one file of a job.
struct FileOutcome {
    QString path;
    bool pictureRead = true; // false: it was given clear thumbnails
    bool changed = true;     // false: its icon or .icns file could not be written
    ForkFailure failure;     // what kept its icon from being written
};

// How a job reaches its user: the progress window's controls, alerts, the
// folder panel, a beep. The job calls it from its own thread; a graphical
// interface hands the calls to its GUI thread, blocking for the modal ones.
class JobUserInterface {
public:
    virtual ~JobUserInterface() = default;

    // Brings the application to the front.
    virtual void activate() = 0;
    virtual void beep() = 0;
    // Modal; returns when the user answered.
    virtual void runAlert(const QString& title, const QString& message, const QString& button) = 0;
    // Modal; the chosen path, or nullopt when the user cancelled.
    virtual std::optional<QString> runFolderPanel(const FolderPanelRequest& request) = 0;

    virtual void centerWindow() = 0;
    virtual void showWindow() = 0;
    virtual void closeWindow() = 0;
    virtual void setTitle(const QString& title) = 0;
    virtual void setFileName(const QString& name) = 0;
    // Null clears the picture.
    virtual void setPicture(std::shared_ptr<const Image> picture) = 0;
    virtual void setProgressMaximum(double maximum) = 0;
    virtual void setProgressValue(double value) = 0;
    // After each file's work; the window has nothing to say about it.
    virtual void fileFinished(const FileOutcome&) {}
};

} // namespace quilo
