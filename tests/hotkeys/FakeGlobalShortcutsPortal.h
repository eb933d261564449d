#pragma once

// A stand-in for the desktop portal's GlobalShortcuts on a test's own bus, for
// no real portal runs on this machine. It answers the way a portal does: a
// Request path at once, its Response signal after; sessions under
// .../session/SENDER/TOKEN; the bound shortcuts with a trigger_description;
// signals sent to the caller alone. It records what it was asked, and runs on
// a thread of its own, as a portal in another process would.
#include <QDBusConnection>
#include <QList>
#include <QMutex>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QVariantMap>

#include <utility>
#include <vector>

namespace quilo::test {

class FakeGlobalShortcutsPortal {
public:
    // How a request is answered: Response 0 with results, 1, 2, or never.
    enum class Answer { Grant, Cancel, Refuse, Silence };

    struct Shortcut {
        QString id;
        QVariantMap options;
    };
    struct Binding {
        QString session;
        QList<Shortcut> shortcuts;
    };
    // What the portal was asked, in order.
    struct Record {
        std::vector<QVariantMap> sessionRequests; // CreateSession's options
        std::vector<Binding> bindings;
        QStringList openedSessions;
        QStringList closedSessions; // by the client's Close
    };

    explicit FakeGlobalShortcutsPortal(const QString& busAddress);
    ~FakeGlobalShortcutsPortal();
    FakeGlobalShortcutsPortal(const FakeGlobalShortcutsPortal&) = delete;
    FakeGlobalShortcutsPortal& operator=(const FakeGlobalShortcutsPortal&) = delete;

    void setBindAnswer(Answer answer);
    // Another program has this trigger: shortcuts asking for it stay without one.
    void holdTrigger(const QString& trigger);

    Record record() const;

    // Signals to the client that opened the last session.
    void activate(const QString& session, const QString& shortcutId);
    void deactivate(const QString& session, const QString& shortcutId);
    void closeFromPortalSide(const QString& session);

private:
    class Service;
    friend class Service;

    void sendToClient(const QString& path, const QString& interface, const QString& name, const QVariantList& args);

    QDBusConnection connection_;
    QThread thread_;
    Service* service_;

    mutable QMutex mutex_;
    Answer bindAnswer_ = Answer::Grant;
    QSet<QString> heldTriggers_;
    Record record_;
    QSet<QString> endedSessions_; // closed by either side
    QString client_;
};

} // namespace quilo::test
