#pragma once
#include "jobs/SelectionSource.h"

#include <QMutex>
#include <QMutexLocker>

namespace quilo {

// The tray application's selection: the files a request handed over, for the
// next job only, else the files a file manager copied to the clipboard.
class HandedOverSelection final : public SelectionSource {
public:
    explicit HandedOverSelection(SelectionSource& clipboard) : clipboard_(clipboard) {}

    // Main thread: the files of the job about to start.
    void handOver(QStringList paths)
    {
        QMutexLocker lock(&mutex_);
        handedOver_ = std::move(paths);
    }

    // Job thread: takes the handed-over files, so the next job from the menu
    // or a hot key goes back to the clipboard.
    QStringList selectedPaths() override
    {
        QStringList paths;
        {
            QMutexLocker lock(&mutex_);
            paths.swap(handedOver_);
        }
        return paths.isEmpty() ? clipboard_.selectedPaths() : paths;
    }

private:
    SelectionSource& clipboard_;
    QStringList handedOver_;
    QMutex mutex_;
};

} // namespace quilo
