#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace quilo {

// What the user answered, as the classic alert panel numbered its buttons.
enum AlertReturn : int {
    kAlertDefaultReturn = 1,
    kAlertAlternateReturn = 0,
    kAlertOtherReturn = -1,
};

// One alert of the update check: a message, the sentence under it, and up to
// three buttons. The default button is always there; a missing alternate or
// other button is not shown at all.
struct UpdateAlert {
    QString messageText;
    QString informativeText;
    QString defaultButton;
    std::optional<QString> alternateButton;
    std::optional<QString> otherButton;

    bool operator==(const UpdateAlert&) const = default;
};

// Shows an alert application-modally and returns the AlertReturn of the
// button chosen. A runner brings the application to the front and beeps
// first, so that an alert from a check nobody asked for is noticed. It may be
// called from any thread and returns once the user has answered.
using AlertRunner = std::function<int(const UpdateAlert&)>;

} // namespace quilo
