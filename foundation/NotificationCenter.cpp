#include "foundation/NotificationCenter.h"

#include <QMutexLocker>

#include <algorithm>

namespace quilo {

NotificationCenter& NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(const void* observer, const QString& name, Handler handler)
{
    QMutexLocker lock(&mutex_);
    registrations_.push_back({observer, name, std::move(handler)});
}

void NotificationCenter::removeObserver(const void* observer)
{
    QMutexLocker lock(&mutex_);
    std::erase_if(registrations_, [&](const Registration& r) { return r.observer == observer; });
}

void NotificationCenter::postNotificationName(const QString& name, const QVariant& object, const QVariantMap& userInfo)
{
    // Handlers run unlocked, on a copy: one may add or remove observers.
    std::vector<Handler> handlers;
    {
        QMutexLocker lock(&mutex_);
        for (const Registration& r : registrations_)
            if (r.name == name)
                handlers.push_back(r.handler);
    }
    const Notification notification{name, object, userInfo};
    for (const Handler& handler : handlers)
        handler(notification);
}

} // namespace quilo
