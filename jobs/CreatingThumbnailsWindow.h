#pragma once

#include <QImage>
#include <QWidget>

#include <memory>

namespace Ui {
class CreatingThumbnailsWindow;
}

namespace quilo {

// The progress window of a job: its title, the file in hand and its
// picture, a bar from 0 to the number of files, and Stop. Lives on the GUI
// thread; a job reaches it through WindowJobInterface.
class CreatingThumbnailsWindow final : public QWidget {
    Q_OBJECT

public:
    // The side of the square the picture is shown in.
    static constexpr int kPictureSide = 128;

    explicit CreatingThumbnailsWindow(QWidget* parent = nullptr);
    ~CreatingThumbnailsWindow() override;

    void setTitle(const QString& title);
    void setFileName(const QString& name);
    // Already scaled to fit the view; a null image clears it.
    void setPicture(const QImage& picture);
    void setProgressMaximum(double maximum);
    void setProgressValue(double value);
    void center();

signals:
    // Stop, or closing the window while the job runs.
    void stopRequested();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    std::unique_ptr<Ui::CreatingThumbnailsWindow> ui_;
};

} // namespace quilo
