#include "foundation/UserDefaults.h"

#include <QMutexLocker>

namespace quilo {

UserDefaults& UserDefaults::standardUserDefaults()
{
    static UserDefaults defaults(QSettings(QSettings::NativeFormat, QSettings::UserScope, "Quilo", "Quilo").fileName());
    return defaults;
}

UserDefaults::UserDefaults(const QString& fileName)
    : settings_(std::make_unique<QSettings>(fileName, QSettings::NativeFormat))
{
}

void UserDefaults::registerDefaults(const QVariantMap& registrationDictionary)
{
    QMutexLocker lock(&mutex_);
    for (auto it = registrationDictionary.begin(); it != registrationDictionary.end(); ++it)
        registered_.insert(it.key(), it.value());
}

QVariant UserDefaults::objectForKey(const QString& defaultName) const
{
    QMutexLocker lock(&mutex_);
    if (overrides_.contains(defaultName))
        return overrides_.value(defaultName);
    const QVariant stored = settings_->value(defaultName);
    return stored.isValid() ? stored : registered_.value(defaultName);
}

bool UserDefaults::boolForKey(const QString& defaultName) const { return objectForKey(defaultName).toBool(); }

QString UserDefaults::stringForKey(const QString& defaultName) const
{
    const QVariant value = objectForKey(defaultName);
    return value.canConvert<QString>() ? value.toString() : QString();
}

QVariantMap UserDefaults::dictionaryForKey(const QString& defaultName) const
{
    return objectForKey(defaultName).toMap();
}

void UserDefaults::setObject(const QVariant& value, const QString& forKey)
{
    QMutexLocker lock(&mutex_);
    settings_->setValue(forKey, value);
}

void UserDefaults::setBool(bool value, const QString& forKey) { setObject(value, forKey); }

void UserDefaults::removeObjectForKey(const QString& defaultName)
{
    QMutexLocker lock(&mutex_);
    settings_->remove(defaultName);
}

void UserDefaults::setVolatileOverride(const QVariant& value, const QString& forKey)
{
    QMutexLocker lock(&mutex_);
    overrides_.insert(forKey, value);
}

bool UserDefaults::synchronize()
{
    QMutexLocker lock(&mutex_);
    settings_->sync();
    return settings_->status() == QSettings::NoError;
}

} // namespace quilo
