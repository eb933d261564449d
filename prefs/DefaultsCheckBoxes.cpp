#include "prefs/DefaultsCheckBoxes.h"

#include "foundation/UserDefaults.h"

#include <QCheckBox>
#include <QEvent>

namespace quilo {
namespace {

const char* const kDefaultsKey = "defaultsKey";

// Another part of Quilo may change a default while the window is open
// (the update alert's "Don't Ask Again"), so values are read afresh when
// the user comes back to the window.
class DefaultsRefresher final : public QObject {
public:
    DefaultsRefresher(QWidget& window, UserDefaults& defaults)
        : QObject(&window)
        , window_(window)
        , defaults_(defaults)
    {
        window.installEventFilter(this);
    }

    void refresh() const
    {
        for (QCheckBox* box : window_.findChildren<QCheckBox*>())
            if (const QString key = box->property(kDefaultsKey).toString(); !key.isEmpty())
                box->setChecked(defaults_.boolForKey(key));
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate)
            refresh();
        return false;
    }

private:
    QWidget& window_;
    UserDefaults& defaults_;
};

} // namespace

void bindCheckBoxesToDefaults(QWidget& window, UserDefaults& defaults)
{
    for (QCheckBox* box : window.findChildren<QCheckBox*>()) {
        const QString key = box->property(kDefaultsKey).toString();
        if (key.isEmpty())
            continue;
        QObject::connect(box, &QCheckBox::clicked, box, [&defaults, key](bool checked) {
            defaults.setBool(checked, key);
            defaults.synchronize();
        });
    }
    (new DefaultsRefresher(window, defaults))->refresh();
}

} // namespace quilo
