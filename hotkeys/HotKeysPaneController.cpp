#include "hotkeys/HotKeysPaneController.h"

#include "HotKeysLib/KeyBroadcaster.h"
#include "foundation/LocalizedStrings.h"
#include "foundation/StringWithFormat.h"
#include "hotkeys/HotKeyWindow.h"
#include "hotkeys/HotKeysController.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QTableView>

namespace quilo {
namespace {

QString actionTitle(const QString& name) { return localizedString(name, {}, QStringLiteral("Actions")); }

} // namespace

HotKeysPaneController::HotKeysPaneController(HotKeysController& hotKeysController)
    : hotKeysController_(hotKeysController)
    , hotKeyNames_(hotKeysController.hotKeyNames())
{
}

HotKeysPaneController::HotKeysPaneController()
    : HotKeysPaneController(HotKeysController::sharedInstance())
{
}

void HotKeysPaneController::awakeFromNib(const Outlets& outlets)
{
    outlets_ = outlets;
    QTableView* table = outlets_.hotKeysTable;
    table->setModel(this);
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &HotKeysPaneController::tableViewSelectionDidChange);
    connect(outlets_.hotKeyWindow, &QDialog::finished, this, &HotKeysPaneController::hotKeySheetEnded);
    reloadHotKeysUIForHotKeyKey(hotKeyNames_.value(0));
}

void HotKeysPaneController::reloadHotKeysUIForHotKeyKey(const QString& name)
{
    shownHotKey_ = name;
    outlets_.hotKeysLableTextField->setText(actionTitle(name));
    outlets_.hotKeysHotKeyDescriptionTextField->setText(hotKeysController_.userDescriptionForHotKeyKey(name));
}

QVariant HotKeysPaneController::tableView(const QString& objectValueForTableColumn, int row) const
{
    const QString name = hotKeysController_.hotKeyNames().value(row);
    if (objectValueForTableColumn == kUseColumn)
        return hotKeysController_.usingHotKey(name);
    return actionTitle(name);
}

void HotKeysPaneController::tableView(const QVariant& setObjectValue, const QString& forTableColumn, int row)
{
    if (forTableColumn != kUseColumn)
        return;
    hotKeysController_.setUsingHotKey(hotKeysController_.hotKeyNames().value(row), setObjectValue.toBool());
    hotKeysController_.registerHotKeys();
}

void HotKeysPaneController::tableViewSelectionDidChange()
{
    const int row = selectedRow();
    if (row >= 0)
        reloadHotKeysUIForHotKeyKey(hotKeyNames_.value(row));
}

void HotKeysPaneController::setHotKeyButton()
{
    const int row = selectedRow();
    startKeySetSheetWithKeyChanging(row >= 0 ? hotKeyNames_.value(row) : shownHotKey_);
}

void HotKeysPaneController::startKeySetSheetWithKeyChanging(const QString& name)
{
    setKeyChanging(name);
    mCombo = hotKeysController_.keyComboForKeyKey(name);
    HotKeyWindow& panel = *outlets_.hotKeyWindow;
    panel.setHotKeysPaneController(this);
    panel.setKeyCombo(mCombo);
    panel.activateInterface(true);
    panel.updateTitleTextField(
        stringWithFormat(localizedString(QStringLiteral("Press a hot key for \"%@\"")), {actionTitle(name)}));
    // A current hot key pressed now is to be captured, not run.
    hotKeysController_.unregisterHotKeys();
    panel.setWindowModality(Qt::WindowModal);
    panel.open();
    panel.broadcaster()->setFocus();
}

void HotKeysPaneController::hotKeySheetEnded(int returnCode)
{
    if (returnCode == 1) {
        mCombo = outlets_.hotKeyWindow->keyCombo();
        hotKeyChanged_ = true;
        const bool use = hotKeysController_.usingHotKey(keyChanging_);
        hotKeysController_.updateDefaultsForHotKey(keyChanging_, mCombo.keyCode(), mCombo.modifiers(), use);
        reloadHotKeysUIForHotKeyKey(keyChanging_);
    }
    hotKeysController_.registerHotKeys();
    outlets_.hotKeyWindow->hide();
}

int HotKeysPaneController::selectedRow() const
{
    const QModelIndexList rows = outlets_.hotKeysTable->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

QString HotKeysPaneController::columnIdentifier(int column) { return column == 0 ? kUseColumn : kActionColumn; }

int HotKeysPaneController::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : numberOfRowsInTableView();
}

int HotKeysPaneController::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 2; }

// The "Use" column is a checkbox alone, with no text.
QVariant HotKeysPaneController::data(const QModelIndex& index, int role) const
{
    const QString column = columnIdentifier(index.column());
    const QVariant value = tableView(column, index.row());
    if (column == kUseColumn) {
        if (role == Qt::CheckStateRole)
            return value.toBool() ? Qt::Checked : Qt::Unchecked;
        if (role == Qt::AccessibleTextRole)
            return stringWithFormat(localizedString(QStringLiteral("Use the hot key for \"%@\"")),
                                    {tableView(kActionColumn, index.row()).toString()});
        return {};
    }
    return role == Qt::DisplayRole || role == Qt::AccessibleTextRole ? value : QVariant();
}

bool HotKeysPaneController::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || columnIdentifier(index.column()) != kUseColumn)
        return false;
    tableView(QVariant(value.toInt() == Qt::Checked), kUseColumn, index.row());
    emit dataChanged(index, index, {Qt::CheckStateRole});
    return true;
}

Qt::ItemFlags HotKeysPaneController::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return columnIdentifier(index.column()) == kUseColumn ? flags | Qt::ItemIsUserCheckable : flags;
}

QVariant HotKeysPaneController::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return localizedString(columnIdentifier(section));
}

} // namespace quilo
