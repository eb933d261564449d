// Pixmaps need a QGuiApplication. Offscreen at scale 1, so a size asked of an
// icon is a size in pixels whatever screen the tests are started from.
#include <gtest/gtest.h>

#include <QGuiApplication>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qunsetenv("QT_SCALE_FACTOR");
    QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
