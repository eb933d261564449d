#pragma once

#include "jobs/JobUserInterface.h"

#include <QFileDialog>

#include <optional>

namespace quilo {

// The open panel of a Save-as-ICNS job. Qt's own dialog chooses folders or
// files, never both; this one takes a selected file as it stands when the
// request allows files, and a folder otherwise.
class FolderPanel final : public QFileDialog {
    Q_OBJECT

public:
    explicit FolderPanel(const FolderPanelRequest& request, QWidget* parent = nullptr);

    // Runs modally; the chosen path, or nullopt when cancelled.
    std::optional<QString> run();

    void accept() override;

private:
    bool canChooseFiles_;
    QString chosenFile_;
};

} // namespace quilo
