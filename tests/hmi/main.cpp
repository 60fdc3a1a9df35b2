#include <QtWidgets/QApplication>

#include <gtest/gtest.h>

// Tests of windows, without a screen. Local time is UTC wherever they run.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("TZ", "UTC");
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) // as the build does, where nobody knows yet of what Qt leaves behind
        return RUN_ALL_TESTS();
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
