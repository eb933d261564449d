#include "prefs/PrefsController.h"

#include "ui_PrefsWindow.h"

#include "foundation/CenterWindow.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "hotkeys/HotKeyWindow.h"
#include "hotkeys/HotKeysController.h"
#include "hotkeys/HotKeysPaneController.h"
#include "prefs/DefaultsCheckBoxes.h"
#include "prefs/MakersWebSite.h"
#include "prefs/PrefsKeyboard.h"
#include "prefs/RTZLoginItemHelper.h"
#include "prefs/RTZUpdate.h"
#include "resources/ImageNamed.h"

#include <QActionGroup>
#include <QLabel>
#include <QStatusBar>
#include <QToolBar>

namespace quilo {
namespace {

struct ToolbarItem {
    QString identifier;
    QString image;
    void (PrefsController::*action)();
};

const ToolbarItem* toolbarItemNamed(const QString& identifier)
{
    static const ToolbarItem items[] = {
        {RTZPrefsGeneralIdentifier, QStringLiteral("Pref_General"), &PrefsController::activateGeneralPane},
        {RTZPrefsHotKeysIdentifier, QStringLiteral("KeyboardIcon"), &PrefsController::activateHotKeysPane},
        {RTZPrefsUpdateIdentifier, QStringLiteral("Pref_Update"), &PrefsController::activateUpdatePane},
    };
    for (const ToolbarItem& item : items)
        if (item.identifier == identifier)
            return &item;
    return nullptr;
}

} // namespace

PrefsController::PrefsController(UserDefaults& defaults, HotKeysController& hotKeys)
    : defaults_(defaults)
    , hotKeys_(hotKeys)
    , updateDocumentURL_(updateDocumentURL())
{
}

PrefsController::PrefsController()
    : PrefsController(UserDefaults::standardUserDefaults(), HotKeysController::sharedInstance())
{
}

PrefsController::~PrefsController() = default;

void PrefsController::showWindow()
{
    QMainWindow& shown = window();
    shown.show();
    shown.raise();
    shown.activateWindow();
}

void PrefsController::showNotice(const QString& text)
{
    window();
    if (!notice_) {
        notice_ = new QLabel(window_.get());
        notice_->setObjectName(QStringLiteral("notice"));
        notice_->setWordWrap(false);
        window_->statusBar()->addWidget(notice_, 1);
    }
    notice_->setText(text);
    window_->statusBar()->setVisible(!text.isEmpty());
}

QMainWindow& PrefsController::window()
{
    if (!window_) {
        window_ = std::make_unique<QMainWindow>();
        ui_ = std::make_unique<Ui::PrefsWindow>();
        ui_->setupUi(window_.get());
        windowDidLoad();
    }
    return *window_;
}

void PrefsController::windowDidLoad()
{
    bindCheckBoxesToDefaults(*window_, defaults_);
    connect(ui_->launchAtLoginCheckbox, &QCheckBox::clicked, this, &PrefsController::launchAtLoginCheckbox);
    connect(ui_->checkForUpdatesNowButton, &QPushButton::clicked, this, &PrefsController::checkForUpdatesNow);

    hotKeyWindow_ = HotKeyWindow::init(window_.get());
    hotKeysPane_ = std::make_unique<HotKeysPaneController>(hotKeys_);
    if (hotKeyWindow_) {
        hotKeysPane_->awakeFromNib({hotKeyWindow_.get(), window_.get(), ui_->hotKeysTable,
                                    ui_->hotKeysLableTextField, ui_->hotKeysHotKeyDescriptionTextField});
        connect(ui_->setHotKeyButton, &QPushButton::clicked, hotKeysPane_.get(),
                &HotKeysPaneController::setHotKeyButton);
    }
    ui_->setHotKeyButton->setEnabled(hotKeyWindow_ != nullptr);

    setupToolbar();
    addPrefsKeys(*window_, *toolbar_, [this](int step) { stepPane(step); });
    readLoginItem();
    ui_->launchAtLoginCheckbox->setFocus();
    centerWindow(*window_);
}

// Qt's toolbars have no customisation palette; the delegate's empty allowed
// list says the same, so the toolbar stays fixed where it is.
void PrefsController::setupToolbar()
{
    toolbar_ = new QToolBar(window_.get());
    toolbar_->setObjectName(RTZPrefsToolbar);
    toolbar_->setAccessibleName(RTZPrefsToolbar);
    toolbar_->setMovable(false);
    toolbar_->setFloatable(false);
    toolbar_->toggleViewAction()->setEnabled(false);
    toolbar_->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    toolbar_->setIconSize(QSize(32, 32));
    auto* selectable = new QActionGroup(toolbar_);
    const QStringList selectableIdentifiers = toolbarSelectableItemIdentifiers();
    for (const QString& identifier : toolbarDefaultItemIdentifiers()) {
        QAction* item = toolbar(identifier, true);
        if (!item)
            continue;
        item->setCheckable(selectableIdentifiers.contains(identifier));
        if (item->isCheckable())
            selectable->addAction(item);
        toolbar_->addAction(item);
    }
    window_->addToolBar(Qt::TopToolBarArea, toolbar_);
    window_->setContextMenuPolicy(Qt::NoContextMenu);
    selectToolbarItem(RTZPrefsGeneralIdentifier);
}

QAction* PrefsController::toolbar(const QString& itemForItemIdentifier, bool)
{
    const ToolbarItem* known = toolbarItemNamed(itemForItemIdentifier);
    if (!known)
        return nullptr;
    auto* item = new QAction(imageNamed(known->image), known->identifier, toolbar_);
    item->setObjectName(known->identifier);
    item->setToolTip(known->identifier);
    connect(item, &QAction::triggered, this, known->action);
    return item;
}

QStringList PrefsController::toolbarDefaultItemIdentifiers() const
{
    return {RTZPrefsGeneralIdentifier, RTZPrefsHotKeysIdentifier, RTZPrefsUpdateIdentifier};
}

QStringList PrefsController::toolbarSelectableItemIdentifiers() const { return toolbarDefaultItemIdentifiers(); }

QStringList PrefsController::toolbarAllowedItemIdentifiers() const { return {}; }

void PrefsController::selectToolbarItem(const QString& identifier)
{
    if (auto* item = toolbar_->findChild<QAction*>(identifier, Qt::FindDirectChildrenOnly))
        item->setChecked(true);
    selectTabViewItemWithIdentifier(identifier);
}

void PrefsController::stepPane(int step)
{
    const QStringList panes = toolbarSelectableItemIdentifiers();
    const qsizetype shown = panes.indexOf(selectedPaneIdentifier());
    selectToolbarItem(panes.at((shown + step + panes.size()) % panes.size()));
}

void PrefsController::activateGeneralPane() { selectTabViewItemWithIdentifier(RTZPrefsGeneralIdentifier); }
void PrefsController::activateHotKeysPane() { selectTabViewItemWithIdentifier(RTZPrefsHotKeysIdentifier); }
void PrefsController::activateUpdatePane() { selectTabViewItemWithIdentifier(RTZPrefsUpdateIdentifier); }

void PrefsController::selectTabViewItemWithIdentifier(const QString& identifier)
{
    QStackedWidget* tabView = ui_->tabView;
    for (int index = 0; index < tabView->count(); ++index)
        if (tabView->widget(index)->property("identifier").toString() == identifier)
            tabView->setCurrentIndex(index);
}

QString PrefsController::selectedPaneIdentifier() const
{
    return ui_ ? ui_->tabView->currentWidget()->property("identifier").toString() : QString();
}

void PrefsController::readLoginItem()
{
    ui_->launchAtLoginCheckbox->setChecked(RTZLoginItemHelper::isSelfInLoginItems());
}

void PrefsController::launchAtLoginCheckbox()
{
    if (!ui_->launchAtLoginCheckbox->isChecked())
        RTZLoginItemHelper::removeSelfFromLoginItems();
    else if (!RTZLoginItemHelper::isSelfInLoginItems())
        RTZLoginItemHelper::addSelfToLoginItems(false);
}

// On the main thread: the window waits for the check and its alert.
void PrefsController::checkForUpdatesNow()
{
    auto update = RTZUpdate::updateForApplication(QStringLiteral("Quilo"), updateDocumentURL_, defaults_);
    if (runAlert_)
        update->setAlertRunner(runAlert_);
    update->checkForUpdates(true, QString::fromLatin1(kApplicationVersion), RTZCheckForUpdatesAtLaunchKey,
                            RTZLastCheckForUpdatesKey, false);
}

} // namespace quilo
