#include "jobs/FolderPanel.h"

#include <QFileInfo>

namespace quilo {

FolderPanel::FolderPanel(const FolderPanelRequest& request, QWidget* parent)
    : QFileDialog(parent, request.title, request.startFolder)
    , canChooseFiles_(request.canChooseFiles)
{
    setObjectName("FolderPanel");
    // Qt's own dialog on every desktop: the same panel everywhere, and one
    // that can take a file in folder mode.
    setOption(QFileDialog::DontUseNativeDialog);
    setFileMode(request.canChooseDirectories ? QFileDialog::Directory : QFileDialog::ExistingFile);
    setOption(QFileDialog::ShowDirsOnly, !request.canChooseFiles);
    setOption(QFileDialog::ReadOnly, !request.canCreateDirectories);
    setLabelText(QFileDialog::Accept, request.prompt);
    setAcceptMode(QFileDialog::AcceptOpen);
}

std::optional<QString> FolderPanel::run()
{
    if (exec() != QDialog::Accepted)
        return std::nullopt;
    if (!chosenFile_.isEmpty())
        return chosenFile_;
    const QStringList chosen = selectedFiles();
    if (chosen.isEmpty())
        return std::nullopt;
    return chosen.first();
}

void FolderPanel::accept()
{
    const QStringList chosen = selectedFiles();
    if (canChooseFiles_ && fileMode() == QFileDialog::Directory && !chosen.isEmpty()) {
        const QFileInfo selected(chosen.first());
        if (selected.isFile()) {
            chosenFile_ = selected.absoluteFilePath();
            QDialog::accept();
            return;
        }
    }
    QFileDialog::accept();
}

} // namespace quilo
