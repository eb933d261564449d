#pragma once

#include <QStringList>

namespace quilo {

// Where the file manager's selection comes from: the files handed over with a
// request, or what the file manager put on the clipboard. Paths in the file
// manager's own order; empty on any failure.
class SelectionSource {
public:
    virtual ~SelectionSource() = default;
    virtual QStringList selectedPaths() = 0;
};

// The paths of a request (a file-manager action, the command line).
class GivenSelection final : public SelectionSource {
public:
    explicit GivenSelection(QStringList paths) : paths_(std::move(paths)) {}
    QStringList selectedPaths() override { return paths_; }

private:
    QStringList paths_;
};

// The file manager's selection as a job asks for it: the files a request
// handed over, else the files the file manager put on the clipboard.
class FileManagerSelection final : public SelectionSource {
public:
    FileManagerSelection(QStringList handedOver, SelectionSource& clipboard)
        : handedOver_(std::move(handedOver))
        , clipboard_(clipboard)
    {
    }
    QStringList selectedPaths() override
    {
        return handedOver_.isEmpty() ? clipboard_.selectedPaths() : handedOver_;
    }

private:
    QStringList handedOver_;
    SelectionSource& clipboard_;
};

} // namespace quilo
