#include "hotkeys/QuiloApplication.h"

#include "foundation/NotificationCenter.h"
#include "hotkeys/SystemDefinedEvent.h"

#include <QTimer>

namespace quilo {

QuiloApplication::QuiloApplication(int& argc, char** argv, const DelegateFactory& makeDelegate,
                                   const RegistrarFactory& makeRegistrar)
    : QApplication(argc, argv)
    , registrar_(makeRegistrar())
{
    registrar_->setEventHandler([this](const HotKeyEvent& event) { postHotKeyEvent(event); });
    delegate_ = makeDelegate();
    QTimer::singleShot(0, this, [this] {
        if (delegate_)
            delegate_->applicationDidFinishLaunching();
    });
}

// The delegate goes first: its windows and hot keys need the application.
QuiloApplication::~QuiloApplication() { delegate_.reset(); }

QuiloApplication& QuiloApplication::sharedApplication() { return *static_cast<QuiloApplication*>(instance()); }

EventHotKeyRef QuiloApplication::registerHotKey(std::int16_t keyCode, std::int32_t modifier,
                                                const QString& description)
{
    // The identifier means nothing on this path: presses are found by reference.
    const EventHotKeyRef ref = registrar_->registerEventHotKey(keyCode, modifier, EventHotKeyID{});
    if (ref != 0)
        targetDict_.insert(ref, description);
    return ref;
}

void QuiloApplication::unregisterHotKey(EventHotKeyRef ref)
{
    registrar_->unregisterEventHotKey(ref);
    targetDict_.remove(ref);
}

bool QuiloApplication::notify(QObject* receiver, QEvent* event)
{
    if (event->type() == SystemDefinedEvent::systemDefinedType())
        sendEvent(*static_cast<SystemDefinedEvent*>(event));
    return QApplication::notify(receiver, event);
}

void QuiloApplication::sendEvent(const SystemDefinedEvent& event)
{
    if (event.subtype() != SystemDefinedEvent::kHotKeyPressed)
        return;
    const auto entry = targetDict_.constFind(EventHotKeyRef(event.data1()));
    if (entry == targetDict_.constEnd())
        return;
    NotificationCenter::defaultCenter().postNotificationName(
        QStringLiteral("RTZHotKeyPressed"), QVariant::fromValue(static_cast<QObject*>(this)),
        {{QStringLiteral("KeyDescription"), *entry}});
}

// The registrar's presses reach the application as events in its queue, the
// way the system delivers them.
void QuiloApplication::postHotKeyEvent(const HotKeyEvent& event)
{
    const auto subtype = event.transition == HotKeyTransition::Pressed ? SystemDefinedEvent::kHotKeyPressed
                                                                       : SystemDefinedEvent::kHotKeyReleased;
    postEvent(this, new SystemDefinedEvent(subtype, long(event.ref)));
}

} // namespace quilo
