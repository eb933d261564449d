#pragma once
#include <QEvent>

#include <cstdint>

namespace quilo {

// The event a global hot key arrives as: "system-defined", subtype 6 for a
// press and 9 for a release, `data1` the hot key's reference.
class SystemDefinedEvent final : public QEvent {
public:
    static constexpr std::int16_t kHotKeyPressed = 6;
    static constexpr std::int16_t kHotKeyReleased = 9;

    static QEvent::Type systemDefinedType()
    {
        static const auto type = QEvent::Type(QEvent::registerEventType());
        return type;
    }

    SystemDefinedEvent(std::int16_t subtype, long data1)
        : QEvent(systemDefinedType())
        , subtype_(subtype)
        , data1_(data1)
    {
    }

    std::int16_t subtype() const { return subtype_; }
    long data1() const { return data1_; }

private:
    std::int16_t subtype_;
    long data1_;
};

} // namespace quilo
