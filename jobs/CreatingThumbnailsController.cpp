#include "jobs/CreatingThumbnailsController.h"

#include "foundation/LocalizedStrings.h"
#include "foundation/Log.h"
#include "foundation/PathNames.h"
#include "foundation/UserDefaults.h"
#include "iconfamily/ChangeNotifier.h"
#include "iconfamily/ImageFileTypes.h"
#include "iconfamily/PictureLoader.h"
#include "jobs/ModificationDate.h"

#include <QFileInfo>

#include <algorithm>

namespace quilo {

// What one run keeps from file to file. The slot holds the last family made
// for a picture and outlives that picture: a Save-as-ICNS job writes each
// file's .icns from it before making the file's own, so every .icns holds
// the thumbnails of the file before.
struct CreatingThumbnailsController::Job {
    int kind = 0;
    bool maintainDates = false;
    QString destination;
    std::unique_ptr<IconFamily> slot;
};

namespace {

QString titleForKind(int kind)
{
    switch (kind) {
    case kCreateThumbnails:
        return localizedString("Creating Thumbnails...");
    case kSaveAsICNS:
        return localizedString("Creating .icns Files...");
    case kRestoreThumbnails:
        return localizedString("Restoring Thumbnails...");
    default:
        return {};
    }
}

std::filesystem::path fsPath(const QString& path) { return std::filesystem::path(pathFromQString(path)); }

// /a/b/Photo.jpg into /x gives /x/Photo.icns.
QString icnsPathFor(const QString& picture, const QString& destination)
{
    const std::filesystem::path name = fsPath(picture).filename();
    return qStringFromPath((fsPath(destination) / name.stem()).string() + ".icns");
}

} // namespace

CreatingThumbnailsController::CreatingThumbnailsController(JobUserInterface& ui, SelectionSource& selection,
                                                           UserDefaults& defaults)
    : ui_(ui)
    , selection_(selection)
    , defaults_(defaults)
{
}

CreatingThumbnailsController::~CreatingThumbnailsController() { waitUntilFinished(); }

void CreatingThumbnailsController::startThumbActionForType(int kind)
{
    if (currentlyProcessing_.exchange(true))
        return;
    if (thread_.joinable())
        thread_.join(); // a job that has ended but whose thread was not collected yet
    thread_ = std::thread([this, kind] {
        processThumbsForType(kind);
        if (jobFinished_)
            jobFinished_();
    });
}

void CreatingThumbnailsController::waitUntilFinished()
{
    if (thread_.joinable())
        thread_.join();
}

// Files gone since they were selected (or copied) are left out, as the
// file manager would no longer list them.
QStringList CreatingThumbnailsController::getFinderSelections()
{
    QStringList paths;
    for (const QString& path : selection_.selectedPaths()) {
        std::error_code error;
        if (std::filesystem::exists(fsPath(path), error))
            paths.prepend(path);
    }
    return paths;
}

void CreatingThumbnailsController::processThumbsForType(int kind)
{
    Job job;
    job.kind = kind;
    job.maintainDates = defaults_.boolForKey(RTZMaintainImageModificationDatesKey);
    const QStringList paths = getFinderSelections();
    if (!selectionIsUsable(paths))
        return;
    if (kind == kSaveAsICNS) {
        const auto destination = chooseDestination(paths);
        if (!destination)
            return;
        job.destination = *destination;
    }
    ui_.centerWindow();
    ui_.setTitle(titleForKind(kind));
    ui_.setProgressMaximum(double(paths.size()));
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if (stopProcessing_)
            break;
        ui_.setProgressValue(double(i + 1)); // the bar moves before the file's work
        processFile(job, paths[i]);
    }
    closeWindowAndResetUI();
    closeWindowAndResetUI();
}

// The alerts before any work. False when the job ends here.
bool CreatingThumbnailsController::selectionIsUsable(const QStringList& paths)
{
    if (paths.isEmpty()) {
        ui_.activate();
        ui_.beep();
        ui_.runAlert("No Image Files Selected",
                     "Please select (highlight) one or more image files in the Finder before using Quilo.", "OK");
        closeWindowAndResetUI();
        return false;
    }
    const bool allImages = std::all_of(paths.begin(), paths.end(), [](const QString& path) {
        return isImageFileType(pathFromQString(path));
    });
    if (!allImages) {
        ui_.activate();
        ui_.beep();
        ui_.runAlert("Not an Image", "One or more of the selected files is not an image and will not be processed.",
                     "OK");
        currentlyProcessing_ = false; // the whole job is abandoned; the window was never shown
        return false;
    }
    return true;
}

std::optional<QString> CreatingThumbnailsController::chooseDestination(const QStringList& paths)
{
    FolderPanelRequest request;
    request.title = "Where would you like to save your new .icns files?";
    request.prompt = "Choose";
    request.startFolder = QFileInfo(paths.first()).path();
    ui_.activate();
    const auto chosen = ui_.runFolderPanel(request);
    if (!chosen) {
        logLine("Canceled creating ICNS files.");
        closeWindowAndResetUI();
        return std::nullopt;
    }
    logFormat("Saving ICNS files to: %s", pathFromQString(*chosen).c_str());
    return chosen;
}

void CreatingThumbnailsController::processFile(Job& job, const QString& path)
{
    const auto file = fsPath(path);
    const auto savedDate = job.maintainDates ? modificationDate(file) : std::nullopt;
    if (isImageFileType(file.native())) {
        logFormat("Processing %s", file.c_str());
        ui_.setFileName(QFileInfo(path).fileName());
        // Taking icons off needs no picture, and a hostile one costs nothing.
        std::shared_ptr<const Image> picture;
        if (job.kind != kRestoreThumbnails) {
            PictureLoadResult loaded = imageWithContentsOfFile(file);
            if (loaded.image)
                picture = std::make_shared<const Image>(std::move(*loaded.image));
        }
        ui_.setPicture(picture);
        ui_.activate();
        ui_.showWindow();
        FileOutcome outcome{path, picture != nullptr || job.kind == kRestoreThumbnails, true};
        if (job.kind == kCreateThumbnails) {
            outcome.changed = createThumbnail(job, path, picture.get(), &outcome.failure);
        } else if (job.kind == kRestoreThumbnails) {
            outcome.changed = IconFamily::removeCustomIconFromFile(file, &outcome.failure);
        } else if (job.kind == kSaveAsICNS) {
            if (job.slot)
                outcome.changed = job.slot->writeToFile(fsPath(icnsPathFor(path, job.destination)));
            if (defaults_.boolForKey(RTZCreateThumbnailsForNewICNSFilesKey))
                outcome.changed = createThumbnail(job, path, picture.get(), &outcome.failure) && outcome.changed;
        }
        changeNotifier().noteFileSystemChanged(file);
        ui_.fileFinished(outcome);
    }
    if (savedDate)
        setModificationDate(file, *savedDate);
}

// A picture that could not be read gets clear thumbnails, which fill the
// slot like any others.
bool CreatingThumbnailsController::createThumbnail(Job& job, const QString& path, const Image* picture,
                                                   ForkFailure* failure)
{
    job.slot = IconFamily::iconFamilyWithThumbnailsOfImage(picture ? *picture : Image());
    return job.slot->setAsCustomIconForFile(fsPath(path), false, failure);
}

void CreatingThumbnailsController::closeWindowAndResetUI()
{
    ui_.closeWindow();
    ui_.setPicture(nullptr);
    ui_.setProgressValue(0.0);
    stopProcessing_ = false;
    currentlyProcessing_ = false;
}

} // namespace quilo
