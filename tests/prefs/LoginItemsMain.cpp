// The login-item tests run as a program named "quilo", as Quilo itself is, so
// that the items they add and look for are the running program's own.
#include <gtest/gtest.h>

#include <QCoreApplication>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
