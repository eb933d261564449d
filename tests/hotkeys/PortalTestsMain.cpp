// The portal tests deliver D-Bus signals through Qt's event loop, so they run
// inside an application object.
#include <gtest/gtest.h>

#include <QCoreApplication>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
