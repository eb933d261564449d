#include "hotkeys/HotKeyWindow.h"

#include "HotKeysLib/GlobalHotKeyRule.h"
#include "HotKeysLib/KeyBroadcaster.h"
#include "foundation/CenterWindow.h"
#include "foundation/LocalizedStrings.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "hotkeys/HotKeysController.h"
#include "hotkeys/HotKeysPaneController.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QUiLoader>
#include <QVBoxLayout>

namespace quilo {
namespace {

// Mac key codes of the keys that answer the panel rather than being captured.
constexpr std::int16_t kReturnKey = 36;
constexpr std::int16_t kEscapeKey = 53;
constexpr std::int16_t kKeypadEnterKey = 76;

QString gNibResource = QStringLiteral(":/HotKeyWindow.ui");

// The broadcaster is ours; everything else is Qt's.
class NibLoader final : public QUiLoader {
public:
    using QUiLoader::QUiLoader;
    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override
    {
        if (className != QLatin1String("KeyBroadcaster"))
            return QUiLoader::createWidget(className, parent, name);
        auto* broadcaster = new KeyBroadcaster(parent);
        broadcaster->setObjectName(name);
        return broadcaster;
    }
};

} // namespace

void HotKeyWindow::setNibResource(const QString& path) { gNibResource = path; }

std::unique_ptr<HotKeyWindow> HotKeyWindow::init(QWidget* parent)
{
    std::unique_ptr<HotKeyWindow> panel(new HotKeyWindow(parent));
    if (!panel->loadContents()) {
        logLine(localizedString(QStringLiteral("Failed to load HotKeyWindow nib file.")).toStdString());
        return nullptr;
    }
    panel->awakeFromNib();
    panel->clear();
    return panel;
}

HotKeyWindow* HotKeyWindow::sharedPanel()
{
    static std::unique_ptr<HotKeyWindow> shared;
    if (!shared)
        shared = init();
    return shared.get();
}

HotKeyWindow::HotKeyWindow(QWidget* parent)
    : QDialog(parent)
{
}

HotKeyWindow::~HotKeyWindow() { NotificationCenter::defaultCenter().removeObserver(this); }

bool HotKeyWindow::loadContents()
{
    QFile nib(gNibResource);
    if (!nib.open(QIODevice::ReadOnly))
        return false;
    NibLoader loader;
    QWidget* contents = loader.load(&nib, this);
    if (!contents)
        return false;
    okButton_ = contents->findChild<QPushButton*>(QStringLiteral("okButton"));
    auto* cancel = contents->findChild<QPushButton*>(QStringLiteral("cancelButton"));
    titleTextField_ = contents->findChild<QLabel*>(QStringLiteral("titleTextField"));
    keyComboTextField_ = contents->findChild<QLabel*>(QStringLiteral("keyComboTextField"));
    keyBroadcaster_ = contents->findChild<KeyBroadcaster*>(QStringLiteral("keyBroadcaster"));
    if (!okButton_ || !cancel || !titleTextField_ || !keyComboTextField_ || !keyBroadcaster_)
        return false;

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(contents);
    resize(contents->size());
    setWindowTitle(localizedString(QStringLiteral("Hot Key")));
    setAccessibleName(windowTitle());
    connect(okButton_, &QPushButton::clicked, this, &HotKeyWindow::okButton);
    connect(cancel, &QPushButton::clicked, this, &HotKeyWindow::cancelButton);
    return true;
}

void HotKeyWindow::awakeFromNib()
{
    NotificationCenter::defaultCenter().addObserver(this, QStringLiteral("KeyBraodcasterKeyEvent"),
                                                    [this](const Notification& n) { keyEvent(n); });
}

int HotKeyWindow::runModal()
{
    centerWindow(*this);
    setWindowModality(Qt::ApplicationModal);
    raise();
    const int result = exec();
    hide();
    return result;
}

QWidget* HotKeyWindow::window() const { return keyComboTextField_->window(); }

void HotKeyWindow::keyEvent(const Notification& notification)
{
    const auto keyCode = std::int16_t(notification.userInfo.value(QStringLiteral("KeyCode")).toInt());
    const auto modifiers = std::int32_t(notification.userInfo.value(QStringLiteral("Modifiers")).toLongLong());
    const KeyCombo combo = KeyCombo::keyComboWithKeyCode(keyCode, modifiers);
    logFormat("%i , %i , %s", keyCode, modifiers, combo.description().toUtf8().constData());

    const bool plain = !(modifiers & (cmdKey | optionKey | controlKey));
    if (plain && keyCode == kEscapeKey)
        return cancelButton();
    if (plain && (keyCode == kReturnKey || keyCode == kKeypadEnterKey) && okEnabled())
        return okButton();
    if (keyCode < 0) {
        const QString name = notification.userInfo.value(QStringLiteral("KeyName")).toString();
        return refuse(KeyCombo::stringForModifiers(modifiers) + name, QStringLiteral(" (Cannot Be a Hot Key)"));
    }
    if (!mayBeGlobalHotKey(keyCode, modifiers))
        return refuse(combo.userDisplayRep(), QStringLiteral(" (Needs a Modifier)"));

    HotKeysController& hotKeys
        = hotKeysPaneController_ ? hotKeysPaneController_->hotKeysController() : HotKeysController::sharedInstance();
    const QString changing = hotKeysPaneController_ ? hotKeysPaneController_->keyChanging() : QString();
    if (hotKeys.hotKeyInUse(keyCode, modifiers, changing))
        return refuse(combo.userDisplayRep(), QStringLiteral(" (In Use)"));
    keyComboTextField_->setText(combo.userDisplayRep());
    setKeyCombo(combo);
    activateInterface(true);
}

// The panel's combination stays as it was, so OK cannot accept this one.
void HotKeyWindow::refuse(const QString& shown, const QString& mark)
{
    QApplication::beep();
    keyComboTextField_->setText(shown + localizedString(mark));
    activateInterface(false);
}

void HotKeyWindow::setKeyCombo(const KeyCombo& keyCombo)
{
    mKeyCombo = keyCombo;
    keyComboChanged();
}

void HotKeyWindow::keyComboChanged() { keyComboTextField_->setText(mKeyCombo.userDisplayRep()); }

void HotKeyWindow::clear() { setKeyCombo(KeyCombo::clearKeyCombo()); }

void HotKeyWindow::updateTitleTextField(const QString& title) { titleTextField_->setText(title); }

void HotKeyWindow::activateInterface(bool active)
{
    QPalette palette = keyComboTextField_->palette();
    palette.setColor(QPalette::WindowText, active ? QColor(Qt::black) : QColor(Qt::red));
    keyComboTextField_->setPalette(palette);
    okButton_->setEnabled(active);
}

void HotKeyWindow::okButton() { done(1); }
void HotKeyWindow::cancelButton() { done(0); }

QString HotKeyWindow::title() const { return titleTextField_->text(); }
QString HotKeyWindow::keyComboText() const { return keyComboTextField_->text(); }
bool HotKeyWindow::okEnabled() const { return okButton_->isEnabled(); }
bool HotKeyWindow::showsRefusal() const
{
    return keyComboTextField_->palette().color(QPalette::WindowText) == QColor(Qt::red);
}

} // namespace quilo
