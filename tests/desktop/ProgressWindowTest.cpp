// A job with its real window on a real X server: the window found by its
// title, the bar followed, stopped with Escape and the alerts and the folder panel
// answered with the X server's own pointer and keyboard. Screenshots of each
// go to the build's test artefacts.
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "iconfamily/IconFamily.h"
#include "jobs/CreatingThumbnailsController.h"
#include "jobs/FolderPanel.h"
#include "jobs/WindowJobInterface.h"
#include "tests/desktop/DesktopUser.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>

namespace quilo {
namespace {

namespace fs = std::filesystem;
using namespace quilo::test;

const fs::path kPictures = fs::path(QUILO_SOURCE_DIR) / "tests/fixtures/pictures";

class JobWindow : public ::testing::Test {
protected:
    JobWindow()
        : defaults_(QString::fromStdString((folder_ / "defaults.conf").string()))
    {
        defaults_.registerDefaults(booleanFactoryDefaults());
        QObject::connect(&ui_.window(), &CreatingThumbnailsWindow::stopRequested, &ui_.window(),
                         [this] { controller_.stopCreatingThumbnailsButton(); });
    }

    // Copies of a small fixture picture, in the order given.
    QStringList pictures(const QStringList& names)
    {
        QStringList paths;
        for (const QString& name : names) {
            const fs::path path = folder_ / name.toStdString();
            fs::copy_file(kPictures / "gradient.jpg", path);
            paths << QString::fromStdString(path.string());
        }
        return paths;
    }

    // Pictures that take a while each: a PNG of 3000 x 2000 pixels is decoded
    // whole, so a person has time to press Stop.
    QStringList slowPictures(int count)
    {
        QImage picture(3000, 2000, QImage::Format_RGB32);
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                picture.setPixel(x, y, qRgb(x * 255 / 3000, y * 255 / 2000, (x * y) % 251));
        const fs::path first = folder_ / "slow 01.png";
        picture.save(QString::fromStdString(first.string()));
        QStringList paths{QString::fromStdString(first.string())};
        for (int i = 2; i <= count; ++i) {
            const fs::path copy = folder_ / QString("slow %1.png").arg(i, 2, 10, QChar('0')).toStdString();
            fs::copy_file(first, copy);
            paths << QString::fromStdString(copy.string());
        }
        return paths;
    }

    void start(int kind, const QStringList& paths)
    {
        selection_ = GivenSelection(paths);
        controller_.startThumbActionForType(kind);
    }

    bool idle() const { return !controller_.currentlyProcessing(); }

    TemporaryDirectory folder_;
    UserDefaults defaults_;
    GivenSelection selection_{{}};
    WindowJobInterface ui_;
    CreatingThumbnailsController controller_{ui_, selection_, defaults_};
};

// Escape is the Stop button.
TEST_F(JobWindow, EscapeOnTheRealWindowStopsTheJobAfterTheFileInHand)
{
    const QStringList paths = slowPictures(40);
    CreatingThumbnailsWindow* window = &ui_.window();
    auto* bar = window->findChild<QProgressBar*>("progressIndicator");
    ASSERT_TRUE(bar);

    start(kCreateThumbnails, paths);
    actAsUser([&] {
        ASSERT_TRUE(eventually([&] { return topLevel<CreatingThumbnailsWindow>("Creating Thumbnails...") == window; }));
        const std::string xWindow = xWindowsNamed("Creating Thumbnails...");
        EXPECT_EQ(xWindow, std::to_string(window->winId()) + "\n") << "the X server knows the window by its title";
        ASSERT_TRUE(eventually([&] { return bar->value() >= 2; }));
        onGui([&] {
            EXPECT_EQ(bar->maximum(), 40);
            EXPECT_TRUE(window->findChild<QLabel*>("currentImageTextField")->text().startsWith("slow "));
            EXPECT_FALSE(window->findChild<QLabel*>("currentImageImageView")->pixmap().isNull());
        });
        keepScreenshot(window, "progress-window.png");
        const std::string read = screenReaderReads();
        EXPECT_NE(read.find("label | Creating Thumbnails... | Job"), std::string::npos) << read;
        EXPECT_NE(read.find("label | slow "), std::string::npos) << read;
        focusWindow(window);
        pressKey("Escape");
        ASSERT_TRUE(eventually([&] { return idle(); }));
    });
    controller_.waitUntilFinished();

    onGui([&] {
        EXPECT_FALSE(window->isVisible());
        EXPECT_EQ(bar->value(), 0);
    });
    int done = 0;
    for (const QString& path : paths)
        done += IconFamily::iconFamilyWithIconOfFile(path.toStdString()) != nullptr;
    EXPECT_GE(done, 2);
    EXPECT_LT(done, 40) << "Stop came too late to show";
}

// An alert, found by its title on the X server and answered with a click on
// "OK". Each alert's text and what the job does around it is the driver's
// tests' part.
TEST_F(JobWindow, AlertsAreAnsweredOnTheRealScreen)
{
    const struct {
        const char* title;
        const char* message;
        QStringList selection;
        const char* screenshot;
    } alerts[] = {
        {"No Image Files Selected",
         "Please copy (Ctrl+C) one or more image files in the file manager before using Quilo.", {},
         "alert-no-image-files-selected.png"},
    };
    for (const auto& alert : alerts) {
        start(kCreateThumbnails, alert.selection);
        actAsUser([&] {
            QMessageBox* box = nullptr;
            ASSERT_TRUE(eventually([&] { return (box = topLevel<QMessageBox>(alert.title)) != nullptr; }));
            EXPECT_FALSE(xWindowsNamed(alert.title).empty());
            QPushButton* ok = nullptr;
            onGui([&] {
                EXPECT_EQ(box->informativeText(), alert.message);
                ASSERT_EQ(box->buttons().size(), 1);
                ok = qobject_cast<QPushButton*>(box->buttons().first());
                EXPECT_EQ(ok->text(), "OK");
            });
            keepScreenshot(box, alert.screenshot);
            EXPECT_FALSE(idle()) << "the job waits for the answer";
            click(ok);
            ASSERT_TRUE(eventually([&] { return idle(); }));
        });
        controller_.waitUntilFinished();
    }
}

// The folder panel of Save as ICNS Files: its title, its "Choose" button,
// the first picture's folder to start in; a folder typed in and chosen.
TEST_F(JobWindow, FolderPanelIsAnsweredOnTheRealScreen)
{
    const QStringList paths = pictures({"A.jpg", "B.jpg"});
    const fs::path destination = folder_ / "icns files";
    fs::create_directory(destination);
    const QString title = "Where would you like to save your new .icns files?";

    start(kSaveAsICNS, paths);
    actAsUser([&] {
        FolderPanel* panel = nullptr;
        ASSERT_TRUE(eventually([&] { return (panel = topLevel<FolderPanel>(title)) != nullptr; }));
        QLineEdit* name = nullptr;
        QPushButton* choose = nullptr;
        onGui([&] {
            EXPECT_EQ(fs::path(panel->directory().absolutePath().toStdString()), folder_.path());
            name = panel->findChild<QLineEdit*>("fileNameEdit");
            for (QPushButton* button : panel->findChildren<QPushButton*>())
                if (button->text() == "Choose")
                    choose = button;
        });
        ASSERT_TRUE(name && choose);
        keepScreenshot(panel, "folder-panel.png");
        click(name);
        typeText(destination.string());
        pressKey("Return");
        ASSERT_TRUE(eventually([&] { return idle(); }));
    });
    controller_.waitUntilFinished();
    // The selection is walked from B to A, and each .icns holds the family of
    // the picture before: no B.icns, and A.icns from B's thumbnails.
    EXPECT_EQ(directoryListing(destination), std::set<std::string>{"A.icns"});
}

} // namespace
} // namespace quilo
