#pragma once
#include "HotKeysLib/KeyCombo.h"

#include <QAbstractTableModel>
#include <QStringList>

class QLabel;
class QTableView;

namespace quilo {

class HotKeysController;
class HotKeyWindow;

// The preferences' HotKeys pane: a table of the three actions with a "Use"
// checkbox each, the selected action's name and hot key, and the set
// button, which opens the capture panel as a sheet over the preferences
// window. Hot keys are read, stored and registered through the hot-key
// settings. Main thread only.
class HotKeysPaneController final : public QAbstractTableModel {
    Q_OBJECT
public:
    // The table's column identifiers.
    static inline const QString kUseColumn = QStringLiteral("Use");
    static inline const QString kActionColumn = QStringLiteral("Action");

    struct Outlets {
        HotKeyWindow* hotKeyWindow;
        QWidget* prefsWindow;
        QTableView* hotKeysTable;
        QLabel* hotKeysLableTextField;
        QLabel* hotKeysHotKeyDescriptionTextField;
    };

    explicit HotKeysPaneController(HotKeysController& hotKeysController);
    HotKeysPaneController();

    void awakeFromNib(const Outlets& outlets);
    void reloadHotKeysUIForHotKeyKey(const QString& name);

    int numberOfRowsInTableView() const { return 3; }
    QVariant tableView(const QString& objectValueForTableColumn, int row) const;
    void tableView(const QVariant& setObjectValue, const QString& forTableColumn, int row);
    void tableViewSelectionDidChange();

    void setHotKeyButton();
    void startKeySetSheetWithKeyChanging(const QString& name);
    void hotKeySheetEnded(int returnCode);

    const QString& keyChanging() const { return keyChanging_; }
    void setKeyChanging(const QString& keyChanging) { keyChanging_ = keyChanging; }
    bool hotKeyChanged() const { return hotKeyChanged_; }
    HotKeysController& hotKeysController() const { return hotKeysController_; }

    // The table's model.
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    static QString columnIdentifier(int column);
    int selectedRow() const;

    HotKeysController& hotKeysController_;
    const QStringList hotKeyNames_;
    KeyCombo mCombo;
    QString keyChanging_;
    bool hotKeyChanged_ = false;
    // The action the label shows: the set button's when no row is selected.
    QString shownHotKey_;
    Outlets outlets_{};
};

} // namespace quilo
