#pragma once

#include "foundation/UserDefaults.h"
#include "prefs/UpdateAlert.h"

#include <QString>
#include <QUrl>
#include <QVariantMap>

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>

namespace quilo {

inline const QString RTZUpdateFinishedCheckingNotification = QStringLiteral("RTZUpdate finished checking for updates");

// Tells the user whether a release other than the running one is published:
// fetches the update document (a property list keyed by application name,
// each entry with a "Current Version" and a "Download URL"), compares the
// versions as plain strings and answers with an alert, the download page or
// no more automatic checks. One object per check; only the user defaults
// keep anything from it.
class RTZUpdate {
public:
    static std::unique_ptr<RTZUpdate> updateForApplication(const QString& application, const QUrl& atURL,
                                                           UserDefaults& defaults
                                                           = UserDefaults::standardUserDefaults());

    RTZUpdate(const QString& application, const QUrl& atURL, UserDefaults& defaults);
    RTZUpdate(const RTZUpdate&) = delete; // its alert runner refers to it
    RTZUpdate& operator=(const RTZUpdate&) = delete;

    const QString& application() const { return application_; }
    void setApplication(const QString& application) { application_ = application; }
    const QUrl& dictURL() const { return dictURL_; }
    void setDictURL(const QUrl& dictURL) { dictURL_ = dictURL; }

    // How alerts are shown (a QMessageBox unless set; an empty runner puts
    // it back) and how long the fetch may take in all.
    void setAlertRunner(AlertRunner runAlert);
    void setTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }
    // A stop requested here ends the fetch, or the wait for an answer, at
    // once, and the check with it: nothing more is shown, written or posted.
    void setStopToken(std::stop_token stop) { stop_ = std::move(stop); }

    // One whole check, synchronously: fetch, compare, alert, act; then the
    // date of this check and the finished notification, unless the document
    // gave no version at all. `sheetModal` is accepted and has no effect.
    void checkForUpdates(bool userInitiated, const QString& runningAppVersion, const QString& autoCheckKey,
                         const QString& lastCheckKey, bool sheetModal);

    // Opens a web page in the user's browser; an empty address opens nothing,
    // one that is not http or https is logged and ignored.
    void downloadUpdateWithURL(const QString& url);
    void disableAutoCheckWithKey(const QString& key);
    void logLastCheckedDate(const QString& key);
    void broadcastFinishedCheckingForUpdates();

private:
    struct Published {
        std::optional<QString> latest;
        QString downloadURL;
    };

    Published fetchPublished() const;
    bool stopped() const;
    void reportUpToDate(bool userInitiated, const QString& latest);
    void offerUpdate(bool userInitiated, const Published& published, const QString& autoCheckKey);

    QString application_;
    QUrl dictURL_;
    UserDefaults& defaults_;
    AlertRunner runAlert_;
    std::chrono::milliseconds timeout_{25'000};
    std::stop_token stop_;
};

} // namespace quilo
