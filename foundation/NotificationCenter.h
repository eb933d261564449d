#pragma once

#include <QMutex>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <functional>
#include <vector>

namespace quilo {

struct Notification {
    QString name;
    QVariant object;
    QVariantMap userInfo;
};

// Named notifications, delivered synchronously on the posting thread to
// every observer of that name, in the order they were added.
class NotificationCenter {
public:
    using Handler = std::function<void(const Notification&)>;

    static NotificationCenter& defaultCenter();

    // `observer` identifies the registration for removal; the handler runs
    // for every notification of that name, from any sender.
    void addObserver(const void* observer, const QString& name, Handler handler);
    void removeObserver(const void* observer);
    void postNotificationName(const QString& name, const QVariant& object = {}, const QVariantMap& userInfo = {});

private:
    struct Registration {
        const void* observer;
        QString name;
        Handler handler;
    };
    std::vector<Registration> registrations_;
    QMutex mutex_;
};

} // namespace quilo
