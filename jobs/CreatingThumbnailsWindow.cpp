#include "jobs/CreatingThumbnailsWindow.h"

#include "ui_CreatingThumbnailsWindow.h"

#include "foundation/CenterWindow.h"

#include <QCloseEvent>
#include <QPixmap>
#include <QShortcut>

#include <cmath>

namespace quilo {

CreatingThumbnailsWindow::CreatingThumbnailsWindow(QWidget* parent)
    : QWidget(parent, Qt::Dialog)
    , ui_(std::make_unique<Ui::CreatingThumbnailsWindow>())
{
    ui_->setupUi(this);
    ui_->currentImageTextField->setTextInteractionFlags(Qt::NoTextInteraction);
    connect(ui_->stopButton, &QPushButton::clicked, this, &CreatingThumbnailsWindow::stopRequested);
    // Escape is Stop, as in any dialog's Cancel.
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, ui_->stopButton, &QPushButton::click);
}

CreatingThumbnailsWindow::~CreatingThumbnailsWindow() = default;

// The window's title too, so the job can be told apart in a task list.
void CreatingThumbnailsWindow::setTitle(const QString& title)
{
    ui_->panelLabelTextField->setText(title);
    setWindowTitle(title);
}

// A long name is cut in the middle, where names differ least.
void CreatingThumbnailsWindow::setFileName(const QString& name)
{
    QLabel* field = ui_->currentImageTextField;
    field->setText(field->fontMetrics().elidedText(name, Qt::ElideMiddle, field->width()));
    field->setToolTip(name);
    // A screen reader reads the whole name, not what fits.
    field->setAccessibleName(name);
}

void CreatingThumbnailsWindow::setPicture(const QImage& picture)
{
    ui_->currentImageImageView->setPixmap(picture.isNull() ? QPixmap() : QPixmap::fromImage(picture));
}

void CreatingThumbnailsWindow::setProgressMaximum(double maximum)
{
    ui_->progressIndicator->setMaximum(int(std::lround(maximum)));
}

void CreatingThumbnailsWindow::setProgressValue(double value)
{
    ui_->progressIndicator->setValue(int(std::lround(value)));
}

void CreatingThumbnailsWindow::center()
{
    adjustSize();
    centerWindow(*this);
}

// The window stays until the job has finished the file in hand.
void CreatingThumbnailsWindow::closeEvent(QCloseEvent* event)
{
    event->ignore();
    emit stopRequested();
}

} // namespace quilo
