// GoogleTest's entry point for tests that need Qt: one QApplication for the
// whole run (widgets, timers, queued signals), on the platform the test's
// environment chooses (offscreen by default, xcb under Xvfb).
#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
