#pragma once

// The user-defaults keys and the action names, defined once for every layer.
#include <QString>
#include <QVariantMap>

namespace quilo {

// The running version, as the update check compares it.
inline constexpr char kApplicationVersion[] = QUILO_VERSION;
// The project's home page, which the About box names.
inline constexpr char kHomePage[] = QUILO_HOMEPAGE;

inline const QString RTZCheckForUpdatesAtLaunchKey = QStringLiteral("Check for updates at launch");
inline const QString RTZMaintainImageModificationDatesKey = QStringLiteral("Maintain image modification dates");
// Registered and never read: thumbnails get no shadow.
inline const QString RTZAddDropShadowToNewThumbnailsKey = QStringLiteral("Add a drop shadow to new thumbnails");
inline const QString RTZCreateThumbnailsForNewICNSFilesKey = QStringLiteral("Create thumbnails for new icns files");
inline const QString RTZHotKeysKey = QStringLiteral("Hot Keys");
inline const QString RTZLastCheckForUpdatesKey = QStringLiteral("Last checked for updates");
// Defined and used by nothing.
inline const QString RTZVersionAtLastRunKey = QStringLiteral("Application version on last quit");

inline const QString RTZHotKey_CreateThumbnails = QStringLiteral("Create Thumbnails");
inline const QString RTZHotKey_RestoreThumbnails = QStringLiteral("Restore Thumbnails");
inline const QString RTZHotKey_SaveAsICNS = QStringLiteral("Save as ICNS Files");

// The factory defaults of the boolean keys, in the order they are registered.
inline QVariantMap booleanFactoryDefaults()
{
    return {{RTZCheckForUpdatesAtLaunchKey, true},
            {RTZMaintainImageModificationDatesKey, true},
            {RTZAddDropShadowToNewThumbnailsKey, false},
            {RTZCreateThumbnailsForNewICNSFilesKey, true}};
}

// The job kinds; 2 is Save as ICNS and 3 Restore, not the order of the menu.
enum ThumbActionType : int {
    kCreateThumbnails = 1,
    kSaveAsICNS = 2,
    kRestoreThumbnails = 3,
};

} // namespace quilo
