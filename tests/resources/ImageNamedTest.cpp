// Quilo's images as the tray, the About box and the preferences load them.
#include "resources/ImageNamed.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <QImageReader>
#include <QPixmap>

#include <vector>

namespace quilo {
namespace {

const QString trayPig = "quilopig16.tiff";
const QStringList preferenceImages{"Pref_General", "KeyboardIcon", "Pref_Update"};
const QList<QSize> traySizes{{16, 16}, {22, 22}, {24, 24}, {32, 32}, {48, 48}, {64, 64}};

std::vector<QImage> pagesOf(const QString& path)
{
    std::vector<QImage> pages;
    QImageReader reader(path);
    const int count = reader.imageCount();
    for (int index = 0; index < count && reader.jumpToImage(index); ++index)
        pages.push_back(reader.read());
    return pages;
}

// Premultiplied, as a pixmap holds it, so that images compare pixel for pixel.
QImage comparable(const QImage& image)
{
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

std::string text(const QString& string)
{
    return string.toStdString();
}

TEST(ImageNamed, EveryShippedImageLoads)
{
    for (const QString& name : preferenceImages + QStringList{trayPig, "quilo"})
        EXPECT_FALSE(imageNamed(name).isNull()) << text(name);
    EXPECT_EQ(imageNamed("quilo").availableSizes(), QList<QSize>{QSize(256, 256)});
}

// The drawn sizes reach the tray as drawn: asked for one of them, the icon
// gives that page untouched rather than another one scaled.
TEST(ImageNamed, TrayIconGivesTheDrawnPageAtEachSize)
{
    const QIcon icon = imageNamed(trayPig);
    EXPECT_EQ(icon.availableSizes(), traySizes);
    for (const QImage& page : pagesOf(":/images/" + trayPig)) {
        if (page.width() > 32)
            break;
        const QPixmap pixmap = icon.pixmap(page.size());
        ASSERT_EQ(pixmap.size(), page.size());
        EXPECT_EQ(comparable(pixmap.toImage()), comparable(page)) << page.width() << " px";
    }
}

// Names that find nothing stay quiet; a file that is there but does not
// decode is worth a line, since the tray would otherwise just be blank.
TEST(ImageNamed, UnknownOrUnreadableImagesGiveANullIcon)
{
    test::LogCapture log;
    for (const QString name : {"NoSuchImage", "", "Pref_General.tiff", "../KeyCodes.plist", "/images/quilo.png"})
        EXPECT_TRUE(imageNamed(name).isNull()) << text(name);
    EXPECT_TRUE(log.lines().empty());

    EXPECT_TRUE(imageNamed("Unreadable").isNull());
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_NE(log.lines()[0].find("Unreadable.png is unreadable"), std::string::npos) << log.lines()[0];
}

} // namespace
} // namespace quilo
