#pragma once
#include "HotKeysLib/HotKeyRegistrar.h"
#include "hotkeys/HotKeyRegistration.h"

#include <QApplication>
#include <QHash>

#include <functional>
#include <memory>

namespace quilo {

class SystemDefinedEvent;

// The application's delegate hears once that launching has finished.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching() = 0;
};

// The application object: registers the global hot keys and turns their
// presses into "RTZHotKeyPressed" notifications. Main thread only.
class QuiloApplication final : public QApplication, public HotKeyRegistration {
    Q_OBJECT
public:
    using DelegateFactory = std::function<std::unique_ptr<ApplicationDelegate>()>;
    using RegistrarFactory = std::function<std::unique_ptr<HotKeyRegistrar>()>;

    // Creates the delegate at once; it hears applicationDidFinishLaunching
    // when the main loop starts.
    QuiloApplication(int& argc, char** argv, const DelegateFactory& makeDelegate,
                     const RegistrarFactory& makeRegistrar = makeSystemHotKeyRegistrar);
    ~QuiloApplication() override;

    static QuiloApplication& sharedApplication();

    EventHotKeyRef registerHotKey(std::int16_t keyCode, std::int32_t modifier, const QString& description) override;
    void unregisterHotKey(EventHotKeyRef ref) override;

    // Every event passes here on its way to normal dispatch.
    bool notify(QObject* receiver, QEvent* event) override;
    void sendEvent(const SystemDefinedEvent& event);

    ApplicationDelegate* delegate() const { return delegate_.get(); }

private:
    void postHotKeyEvent(const HotKeyEvent& event);

    std::unique_ptr<HotKeyRegistrar> registrar_;
    // The description each reference was registered with.
    QHash<EventHotKeyRef, QString> targetDict_;
    std::unique_ptr<ApplicationDelegate> delegate_;
};

} // namespace quilo
