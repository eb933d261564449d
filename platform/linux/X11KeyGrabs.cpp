#include "platform/linux/X11KeyGrabs.h"

#include "HotKeysLib/NativeKeyCodes.h"
#include "foundation/Log.h"
#include "platform/linux/X11HotKeyRegistrar.h"

#include <QGuiApplication>

#include <algorithm>
#include <cstdlib>

namespace quilo {
namespace {

// X sends a held key as releases each followed at once by a press with the
// same time. A release waits this long for such a press before it counts.
constexpr int kRepeatWaitMilliseconds = 50;

constexpr std::uint8_t kBadAccess = 10;

std::weak_ptr<X11KeyGrabs>& current()
{
    static std::weak_ptr<X11KeyGrabs> grabs;
    return grabs;
}

// References are never reused within a process, so a stale one stays stale.
EventHotKeyRef nextRef()
{
    static EventHotKeyRef last = 0;
    if (++last == 0)
        ++last;
    return last;
}

// Waits until the server has handled every request sent so far, so a grab
// given back is free for other programs once the call returns.
void sync(xcb_connection_t* connection)
{
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

} // namespace

std::shared_ptr<X11KeyGrabs> X11KeyGrabs::shared()
{
    if (std::shared_ptr<X11KeyGrabs> grabs = current().lock())
        return grabs;
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    xcb_connection_t* connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return nullptr;
    // The first screen's root: a display of several X screens, rare since
    // RandR, has its hot keys on that one.
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    std::shared_ptr<X11KeyGrabs> grabs(new X11KeyGrabs(connection, root));
    current() = grabs;
    return grabs;
}

X11KeyGrabs::X11KeyGrabs(xcb_connection_t* connection, xcb_window_t root)
    : mConnection(connection), mRoot(root), mMasks(readModifierMasks(connection))
{
    mReleaseTimer.setSingleShot(true);
    mReleaseTimer.setInterval(kRepeatWaitMilliseconds);
    QObject::connect(&mReleaseTimer, &QTimer::timeout, [this] { deliverPendingReleases(); });
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11KeyGrabs::~X11KeyGrabs()
{
    QCoreApplication* application = QCoreApplication::instance();
    if (!application)
        return; // Qt's connection went with the application, and the grabs with it
    application->removeNativeEventFilter(this);
    for (const Grab& grab : mGrabs)
        if (grab.grabbed)
            ungrabVariants(grab.keycode, grab.mask);
    sync(mConnection);
}

EventHotKeyRef X11KeyGrabs::grab(X11HotKeyRegistrar& owner, std::int32_t macKeyCode, std::int32_t carbonModifiers,
                                 EventHotKeyID id)
{
    const std::optional<std::uint32_t> native = nativeKeyCodeForMacKeyCode(macKeyCode);
    const xcb_setup_t* setup = xcb_get_setup(mConnection);
    if (!native || *native < setup->min_keycode || *native > setup->max_keycode || carbonModifiers < 0)
        return 0;
    const std::optional<std::uint16_t> mask = mMasks.maskForCarbonModifiers(carbonModifiers);
    if (!mask) {
        logFormat("Hot key %d with modifiers 0x%04X needs a modifier this keyboard lacks", int(macKeyCode),
                  unsigned(carbonModifiers));
        return 0;
    }
    const auto keycode = xcb_keycode_t(*native);
    if (find(keycode, *mask) || !grabVariants(keycode, *mask))
        return 0;
    const EventHotKeyRef ref = nextRef();
    mGrabs.push_back({ref, &owner, id, carbonModifiers, keycode, *mask});
    return ref;
}

void X11KeyGrabs::ungrab(const X11HotKeyRegistrar& owner, EventHotKeyRef ref)
{
    const auto grab =
        std::find_if(mGrabs.begin(), mGrabs.end(), [&](const Grab& g) { return g.ref == ref && g.owner == &owner; });
    if (grab == mGrabs.end())
        return;
    if (grab->grabbed && QCoreApplication::instance()) {
        ungrabVariants(grab->keycode, grab->mask);
        sync(mConnection);
    }
    mGrabs.erase(grab);
}

void X11KeyGrabs::ungrabAll(const X11HotKeyRegistrar& owner)
{
    std::vector<EventHotKeyRef> refs;
    for (const Grab& grab : mGrabs)
        if (grab.owner == &owner)
            refs.push_back(grab.ref);
    for (EventHotKeyRef ref : refs)
        ungrab(owner, ref);
}

// Num Lock and Caps Lock are part of X's modifier state, so a combination is
// grabbed once for each way they can be set.
std::vector<std::uint16_t> X11KeyGrabs::lockVariants() const
{
    std::vector<std::uint16_t> variants{0, XCB_MOD_MASK_LOCK};
    if (mMasks.numLock && !(mMasks.numLock & mMasks.significant())) {
        variants.push_back(mMasks.numLock);
        variants.push_back(std::uint16_t(mMasks.numLock | XCB_MOD_MASK_LOCK));
    }
    return variants;
}

// All variants or none: one held by another client leaves that client's
// grab alone and gives back the variants this call took.
bool X11KeyGrabs::grabVariants(xcb_keycode_t keycode, std::uint16_t mask)
{
    const std::vector<std::uint16_t> variants = lockVariants();
    std::vector<xcb_void_cookie_t> cookies;
    for (std::uint16_t variant : variants)
        cookies.push_back(xcb_grab_key_checked(mConnection, 0, mRoot, std::uint16_t(mask | variant), keycode,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    std::vector<std::uint16_t> taken;
    std::uint8_t failure = 0;
    for (std::size_t index = 0; index < cookies.size(); ++index) {
        xcb_generic_error_t* error = xcb_request_check(mConnection, cookies[index]);
        if (!error)
            taken.push_back(variants[index]);
        else if (!failure)
            failure = error->error_code;
        std::free(error);
    }
    if (!failure)
        return true;
    for (std::uint16_t variant : taken)
        xcb_ungrab_key(mConnection, keycode, mRoot, std::uint16_t(mask | variant));
    sync(mConnection);
    if (failure == kBadAccess)
        logFormat("X keycode %u with modifiers 0x%02X is grabbed by another program", unsigned(keycode),
                  unsigned(mask));
    else
        logFormat("X keycode %u with modifiers 0x%02X could not be grabbed: X error %u", unsigned(keycode),
                  unsigned(mask), unsigned(failure));
    return false;
}

void X11KeyGrabs::ungrabVariants(xcb_keycode_t keycode, std::uint16_t mask)
{
    for (std::uint16_t variant : lockVariants())
        xcb_ungrab_key(mConnection, keycode, mRoot, std::uint16_t(mask | variant));
}

X11KeyGrabs::Grab* X11KeyGrabs::find(xcb_keycode_t keycode, std::uint16_t mask)
{
    for (Grab& grab : mGrabs)
        if (grab.grabbed && grab.keycode == keycode && grab.mask == mask)
            return &grab;
    return nullptr;
}

bool X11KeyGrabs::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    // A handler may drop the last registrar, and with it this table.
    const std::shared_ptr<X11KeyGrabs> keepAlive = shared_from_this();
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & 0x7f) {
    case XCB_KEY_PRESS:
        return keyPressed(*reinterpret_cast<const xcb_key_press_event_t*>(event));
    case XCB_KEY_RELEASE:
        return keyReleased(*reinterpret_cast<const xcb_key_release_event_t*>(event));
    default:
        if (isMappingChange(*event))
            followModifierMapping();
        return false;
    }
}

bool X11KeyGrabs::keyPressed(const xcb_key_press_event_t& event)
{
    if (event.event != mRoot)
        return false;
    for (Grab& grab : mGrabs)
        if (grab.releasePending && grab.keycode == event.detail && grab.releaseTime == event.time) {
            grab.releasePending = false; // auto-repeat: the key is still down
            return true;
        }
    Grab* grab = find(event.detail, event.state & mMasks.significant());
    if (!grab)
        return false;
    if (grab->releasePending) {
        grab->releasePending = false;
        grab->held = false;
        deliver(*grab, HotKeyTransition::Released);
        grab = find(event.detail, event.state & mMasks.significant());
        if (!grab)
            return true;
    }
    if (grab->held)
        return true;
    grab->held = true;
    deliver(*grab, HotKeyTransition::Pressed);
    return true;
}

// Matched by key alone: the modifiers may have been let go first.
bool X11KeyGrabs::keyReleased(const xcb_key_release_event_t& event)
{
    if (event.event != mRoot)
        return false;
    for (Grab& grab : mGrabs)
        if (grab.held && !grab.releasePending && grab.keycode == event.detail) {
            grab.releasePending = true;
            grab.releaseTime = event.time;
            mReleaseTimer.start();
            return true;
        }
    return false;
}

// A copy goes out: the handler may change the table.
void X11KeyGrabs::deliver(const Grab& grab, HotKeyTransition transition) const
{
    X11HotKeyRegistrar* owner = grab.owner;
    const HotKeyEvent event{grab.ref, grab.id, transition};
    owner->deliver(event);
}

void X11KeyGrabs::deliverPendingReleases()
{
    const std::shared_ptr<X11KeyGrabs> keepAlive = shared_from_this();
    for (;;) {
        const auto pending = std::find_if(mGrabs.begin(), mGrabs.end(), [](const Grab& g) { return g.releasePending; });
        if (pending == mGrabs.end())
            return;
        pending->releasePending = false;
        pending->held = false;
        deliver(*pending, HotKeyTransition::Released);
    }
}

// The server tells every client of a new keymap this way, XKB's included.
bool X11KeyGrabs::isMappingChange(const xcb_generic_event_t& event)
{
    return (event.response_type & 0x7f) == XCB_MAPPING_NOTIFY
        && reinterpret_cast<const xcb_mapping_notify_event_t&>(event).request != XCB_MAPPING_POINTER;
}

// Moves the grabs to where the modifiers now are.
void X11KeyGrabs::followModifierMapping()
{
    const X11ModifierMasks masks = readModifierMasks(mConnection);
    if (masks == mMasks)
        return;
    for (const Grab& grab : mGrabs)
        if (grab.grabbed)
            ungrabVariants(grab.keycode, grab.mask);
    mMasks = masks;
    for (Grab& grab : mGrabs) {
        const std::optional<std::uint16_t> mask = mMasks.maskForCarbonModifiers(grab.carbonModifiers);
        grab.grabbed = mask && grabVariants(grab.keycode, *mask);
        grab.mask = mask.value_or(0);
        grab.held = grab.releasePending = false;
    }
    xcb_flush(mConnection);
}

} // namespace quilo
