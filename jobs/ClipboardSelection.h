#pragma once

#include "jobs/SelectionSource.h"

class QMimeData;

namespace quilo {

// The files a file manager put on the clipboard with Copy or Cut: the
// standard `text/uri-list`, else GNOME's `x-special/gnome-copied-files`
// ("copy" or "cut", then one URI a line). Only local files count; anything
// else on the clipboard is no selection.
class ClipboardSelection final : public SelectionSource {
public:
    // Reads the clipboard on the GUI thread, waiting for it from any other.
    QStringList selectedPaths() override;
};

// The local paths named by clipboard data, in its order.
QStringList filePathsFromMimeData(const QMimeData& data);

} // namespace quilo
