#pragma once

#include <QMutex>
#include <QSettings>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <memory>

namespace quilo {

// The user's preferences: a persistent store (QSettings in the XDG config
// folder, so XDG_CONFIG_HOME moves it) over a volatile registration domain
// that holds the factory defaults. A key the user never set reads its
// registered value; a dictionary is one value. Safe to use from any thread.
class UserDefaults {
public:
    // The application's own defaults, in the config folder's Quilo/Quilo.conf.
    static UserDefaults& standardUserDefaults();

    // A store in the given file (tests, tools).
    explicit UserDefaults(const QString& fileName);
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    // Adds to the registration domain; a key registered again takes the new value.
    void registerDefaults(const QVariantMap& registrationDictionary);

    QVariant objectForKey(const QString& defaultName) const;
    bool boolForKey(const QString& defaultName) const;
    QString stringForKey(const QString& defaultName) const;
    QVariantMap dictionaryForKey(const QString& defaultName) const;

    void setObject(const QVariant& value, const QString& forKey);
    void setBool(bool value, const QString& forKey);
    void removeObjectForKey(const QString& defaultName);

    // A value for this process alone, over both the user's and the
    // registered one (a command-line option's), never written out.
    void setVolatileOverride(const QVariant& value, const QString& forKey);

    // Writes pending changes out and reads changes made by other processes.
    bool synchronize();

private:
    std::unique_ptr<QSettings> settings_;
    QVariantMap registered_;
    QVariantMap overrides_;
    mutable QMutex mutex_;
};

} // namespace quilo
