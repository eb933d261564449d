// The update check's tests run in an application as Quilo has one, without a
// screen: what the check opens goes to the URL handlers of OpenedUrls.
#include <gtest/gtest.h>

#include <QGuiApplication>

#include <cstdlib>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
