// The thumbnail job driver over real pictures in a temporary folder, with a
// recording user interface in place of the window.
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "iconfamily/AppleDouble.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconServices.h"
#include "iconfamily/IconFamily.h"
#include "jobs/CreatingThumbnailsController.h"
#include "jobs/ModificationDate.h"
#include "tests/jobs/RecordingJobInterface.h"
#include "tests/support/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QRegularExpression>

#include <fcntl.h>
#include <sys/stat.h>

namespace quilo {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

const fs::path kPictures = fs::path(QUILO_SOURCE_DIR) / "tests/fixtures/pictures";

class ThumbnailJob : public ::testing::Test {
protected:
    ThumbnailJob() { defaults_.registerDefaults(booleanFactoryDefaults()); }

    // Copies of a fixture picture under the given names, in that order.
    QStringList pictures(const QStringList& names, const std::string& fixture = "gradient.jpg")
    {
        QStringList paths;
        for (const QString& name : names) {
            const fs::path path = directory_ / name.toStdString();
            fs::copy_file(kPictures / fixture, path, fs::copy_options::overwrite_existing);
            paths << QString::fromStdString(path.string());
        }
        return paths;
    }

    // Runs one job over the selection, as the file manager listed it.
    void run(int kind, const QStringList& selection)
    {
        GivenSelection source(selection);
        CreatingThumbnailsController controller(ui_, source, defaults_);
        controller.startThumbActionForType(kind);
        controller.waitUntilFinished();
        EXPECT_FALSE(controller.currentlyProcessing());
    }

    bool hasCustomIcon(const QString& path) const
    {
        return IconFamily::iconFamilyWithIconOfFile(path.toStdString()) != nullptr;
    }

    std::vector<std::string> processed() const
    {
        std::vector<std::string> names;
        for (const std::string& line : log_.lines())
            if (line.rfind("Processing ", 0) == 0)
                names.push_back(fs::path(line.substr(11)).filename().string());
        return names;
    }

    test::TemporaryDirectory directory_;
    UserDefaults defaults_{QString::fromStdString((directory_ / "defaults.conf").string())};
    test::RecordingJobInterface ui_;
    test::LogCapture log_;
};

TEST_F(ThumbnailJob, CreatesIconsInReverseSelectionOrderWithTheBarAheadOfEachFile)
{
    const QStringList selection = pictures({"a.jpg", "b.jpg", "c.jpg"});
    run(kCreateThumbnails, selection);
    EXPECT_EQ(processed(), (std::vector<std::string>{"c.jpg", "b.jpg", "a.jpg"}));
    for (const QString& path : selection)
        EXPECT_TRUE(hasCustomIcon(path)) << path.toStdString();
    const QStringList calls = ui_.calls();
    const QStringList expectedStart{"center", "title Creating Thumbnails...", "maximum 3", "progress 1", "file c.jpg",
                                    "picture 64x48", "activate", "show", "progress 2"};
    EXPECT_EQ(calls.mid(0, expectedStart.size()), expectedStart);
    const QStringList reset{"close", "picture none", "progress 0"};
    EXPECT_EQ(calls.mid(calls.size() - 6), reset + reset) << "closeWindowAndResetUI twice";
}

TEST_F(ThumbnailJob, NothingSelectedAlertsAndNeverShowsTheWindow)
{
    const QString gone = QString::fromStdString((directory_ / "gone.jpg").string());
    for (const QStringList& selection : {QStringList(), QStringList{gone}}) {
        const qsizetype before = ui_.calls().size();
        run(kCreateThumbnails, selection);
        EXPECT_EQ(ui_.calls().mid(before), (QStringList{"activate", "beep",
                                            "alert No Image Files Selected | Please select (highlight) one or more "
                                            "image files in the Finder before using Quilo. | OK",
                                            "close", "picture none", "progress 0"}));
    }
}

TEST_F(ThumbnailJob, OneFileThatIsNoPictureAbandonsTheWholeJobAndFreesTheDriverAtOnce)
{
    QStringList selection = pictures({"a.jpg", "b.jpg", "c.jpg"});
    test::writeFileBytes(directory_ / "notes.txt", Bytes{'h', 'i'});
    selection.insert(1, QString::fromStdString((directory_ / "notes.txt").string()));

    GivenSelection source(selection);
    CreatingThumbnailsController controller(ui_, source, defaults_);
    controller.startThumbActionForType(kCreateThumbnails);
    controller.waitUntilFinished();
    EXPECT_EQ(ui_.calls(), (QStringList{"activate", "beep",
                                        "alert Not an Image | One or more of the selected files is not an image and "
                                        "will not be processed. | OK"}))
        << "no window to close";
    for (const QString& path : selection)
        EXPECT_FALSE(fs::exists(directory_ / ("._" + QFileInfo(path).fileName().toStdString())));

    // A job can start straight away.
    GivenSelection pictureOnly({selection.first()});
    CreatingThumbnailsController next(ui_, pictureOnly, defaults_);
    next.startThumbActionForType(kCreateThumbnails);
    next.waitUntilFinished();
    EXPECT_TRUE(hasCustomIcon(selection.first()));
}

// b cannot be read: it gets clear thumbnails, which fill the slot like any.
TEST_F(ThumbnailJob, SaveAsIcnsWritesEachFileTheFamilyOfTheOneBefore)
{
    // Selected c, b, a: done a, b, c.
    const QStringList selection = pictures({"c.png", "b.png", "a.png"}, "gradient.png");
    pictures({"c.png"}, "gradient-alpha.png");
    test::writeFileBytes(selection[1].toStdString(), Bytes{0x89, 'P', 'N', 'G'});
    const fs::path out = directory_ / "out";
    fs::create_directory(out);
    ui_.panelAnswer = QString::fromStdString(out.string());
    run(kSaveAsICNS, selection);

    EXPECT_FALSE(fs::exists(out / "a.icns")) << "the slot was empty for the first";
    const auto iconOf = [&](const char* name) {
        const auto family = IconFamily::iconFamilyWithIconOfFile(directory_ / name);
        return family ? family->iconFamilyHandle() : IconFamilyHandle();
    };
    EXPECT_EQ(test::readFileBytes(out / "b.icns"), iconOf("a.png"));
    EXPECT_EQ(test::readFileBytes(out / "c.icns"), iconOf("b.png"));
    std::vector<std::uint8_t> mask;
    ASSERT_EQ(getIconFamilyData(iconOf("b.png"), kThumbnail8BitMask, mask), noErr);
    EXPECT_EQ(std::count(mask.begin(), mask.end(), 0), long(mask.size())) << "b's thumbnails are clear";
    EXPECT_NE(iconOf("c.png"), iconOf("a.png")) << "c has its own thumbnails";
    EXPECT_EQ(ui_.lastPanel().title, "Where would you like to save your new .icns files?");
    EXPECT_EQ(ui_.lastPanel().prompt, "Choose");
    EXPECT_EQ(ui_.lastPanel().startFolder.toStdString(), directory_.path().string()) << "the first path's folder";
    EXPECT_EQ(log_.lines().front(), "Saving ICNS files to: " + out.string());
    EXPECT_TRUE(ui_.calls().contains("title Creating .icns Files..."));
}

TEST_F(ThumbnailJob, SaveAsIcnsWithNewThumbnailsOffWritesNothingAtAll)
{
    defaults_.setBool(false, RTZCreateThumbnailsForNewICNSFilesKey);
    const QStringList selection = pictures({"b.jpg", "a.jpg"});
    ui_.panelAnswer = QString::fromStdString(directory_.path().string());
    run(kSaveAsICNS, selection);
    EXPECT_EQ(processed().size(), 2u);
    EXPECT_FALSE(fs::exists(directory_ / "a.icns") || fs::exists(directory_ / "b.icns"));
    EXPECT_FALSE(hasCustomIcon(selection[0]) || hasCustomIcon(selection[1]));
}

TEST_F(ThumbnailJob, ACancelledPanelWritesNothing)
{
    const QStringList selection = pictures({"a.jpg"});
    run(kSaveAsICNS, selection);
    EXPECT_EQ(log_.lines(), (std::vector<std::string>{"Canceled creating ICNS files."}));
    EXPECT_EQ(ui_.calls(), (QStringList{"activate", "panel", "close", "picture none", "progress 0"}));
    EXPECT_FALSE(hasCustomIcon(selection[0]));
}

TEST_F(ThumbnailJob, StopFinishesTheFileInHandWithItsDateAndStartsNoOther)
{
    QStringList names;
    for (int i = 0; i < 10; ++i)
        names << QString("p%1.jpg").arg(i);
    const QStringList selection = pictures(names);
    const timespec old{1000000000, 123456789};
    for (const QString& path : selection)
        setModificationDate(path.toStdString(), old);

    // Something touches each file while it is worked on (on a Mac, the fork
    // write does); Stop is pressed during the third.
    GivenSelection source(selection);
    CreatingThumbnailsController controller(ui_, source, defaults_);
    ui_.onShowWindow = [&](int file) {
        ::utimensat(AT_FDCWD, selection[10 - file].toUtf8().constData(), nullptr, 0);
        if (file == 3)
            controller.stopCreatingThumbnailsButton();
    };
    controller.startThumbActionForType(kCreateThumbnails);
    controller.waitUntilFinished();

    EXPECT_EQ(processed(), (std::vector<std::string>{"p9.jpg", "p8.jpg", "p7.jpg"}));
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(hasCustomIcon(selection[i]), i >= 7) << i;
        const timespec date = *modificationDate(selection[i].toStdString());
        EXPECT_TRUE(date.tv_sec == old.tv_sec && date.tv_nsec == old.tv_nsec) << i << " to the nanosecond";
    }
    EXPECT_EQ(ui_.calls().back(), "progress 0");
    EXPECT_FALSE(controller.currentlyProcessing());

    // The stop request was cleared with the job: the next one runs whole.
    ui_.onShowWindow = nullptr;
    controller.startThumbActionForType(kRestoreThumbnails);
    controller.waitUntilFinished();
    EXPECT_EQ(processed().size(), 13u);
}

TEST_F(ThumbnailJob, ASecondStartWhileAJobRunsIsIgnored)
{
    const QStringList selection = pictures({"a.jpg", "b.jpg"});
    GivenSelection source(selection);
    CreatingThumbnailsController controller(ui_, source, defaults_);
    ui_.onShowWindow = [&](int file) {
        if (file == 1)
            controller.startThumbActionForType(kRestoreThumbnails);
    };
    controller.startThumbActionForType(kCreateThumbnails);
    controller.waitUntilFinished();
    EXPECT_EQ(processed().size(), 2u);
    EXPECT_EQ(ui_.calls().filter("title ").size(), 1);
    EXPECT_TRUE(hasCustomIcon(selection[0]) && hasCustomIcon(selection[1]));
}

// A file gone since it was selected is left out; an .icns file is a
// picture; taking icons off reads no picture; no picture's bytes change.
TEST_F(ThumbnailJob, GoneFilesAreLeftOutAndIconFilesArePictures)
{
    const QStringList selection = pictures({"a.jpg"}) + pictures({"b.icns"}, "../../../samples/pillow.icns")
                                  + QStringList{QString::fromStdString((directory_ / "gone.jpg").string())};
    run(kRestoreThumbnails, selection);
    EXPECT_TRUE(ui_.calls().filter(QRegularExpression("^picture [0-9]")).isEmpty());
    run(kCreateThumbnails, selection);
    EXPECT_EQ(processed(), (std::vector<std::string>{"b.icns", "a.jpg", "b.icns", "a.jpg"}));
    EXPECT_TRUE(hasCustomIcon(selection[0]) && hasCustomIcon(selection[1]));
    EXPECT_EQ(test::readFileBytes(selection[1].toStdString()), test::readFileBytes(kPictures / "../../../samples/pillow.icns"));
}

} // namespace
} // namespace quilo
