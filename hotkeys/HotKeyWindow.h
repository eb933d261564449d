#pragma once
#include "HotKeysLib/KeyCombo.h"

#include <QDialog>

#include <memory>

class QLabel;
class QPushButton;

namespace quilo {

class HotKeysPaneController;
class KeyBroadcaster;
struct Notification;

// The capture panel: prompts for a key press, shows the combination the
// key broadcaster reports and refuses one another action holds (a beep,
// " (In Use)" in red, OK disabled), one without Super, Alt or Control
// (" (Needs a Modifier)") and a key no combination can name. Escape cancels
// and Return presses OK when it is enabled; neither is ever captured. Its contents come from "HotKeyWindow.ui",
// read when the panel is made. OK ends it with 1, Cancel with 0.
class HotKeyWindow final : public QDialog {
    Q_OBJECT
public:
    // The panel over `parent`, or null (logged) when its contents cannot be read.
    static std::unique_ptr<HotKeyWindow> init(QWidget* parent = nullptr);
    // A panel of its own for the modal way in, made on first use.
    static HotKeyWindow* sharedPanel();
    // Where the contents are read from; tests point it elsewhere.
    static void setNibResource(const QString& path);

    ~HotKeyWindow() override;

    // Centred and in front, application-modal; hidden again afterwards.
    int runModal();
    QWidget* window() const;

    void keyEvent(const Notification& notification);
    const KeyCombo& keyCombo() const { return mKeyCombo; }
    void setKeyCombo(const KeyCombo& keyCombo);
    void clear();
    void setHotKeysPaneController(HotKeysPaneController* controller) { hotKeysPaneController_ = controller; }
    void updateTitleTextField(const QString& title);
    void activateInterface(bool active);
    void setKeyName(const QString&) {}

    void okButton();
    void cancelButton();

    // What the panel shows, for the pane and for tests.
    QString title() const;
    QString keyComboText() const;
    bool okEnabled() const;
    bool showsRefusal() const;
    KeyBroadcaster* broadcaster() const { return keyBroadcaster_; }

private:
    explicit HotKeyWindow(QWidget* parent);
    bool loadContents();
    void awakeFromNib();
    void keyComboChanged();
    void refuse(const QString& shown, const QString& mark);

    KeyCombo mKeyCombo;
    QPushButton* okButton_ = nullptr;
    QLabel* titleTextField_ = nullptr;
    QLabel* keyComboTextField_ = nullptr;
    KeyBroadcaster* keyBroadcaster_ = nullptr;
    HotKeysPaneController* hotKeysPaneController_ = nullptr;
};

} // namespace quilo
