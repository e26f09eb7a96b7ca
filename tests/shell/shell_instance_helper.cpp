// A copy of the tool as far as the single-instance decision goes: exits 0
// when another copy runs, 3 when it would have become the first copy. With
// QUORVEX_HELPER_HOLD set it stays as the first copy instead, with a window
// titled like the tool's, until it is ended.

#include "SingleInstance.h"

#include <QApplication>
#include <QWidget>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    if (isAlreadyRunning(QCoreApplication::arguments()))
        return 0;
    std::printf("first\n");
    std::fflush(stdout);
    if (!qEnvironmentVariableIsSet("QUORVEX_HELPER_HOLD"))
        return 3;
    QWidget window;
    window.setWindowTitle(QStringLiteral("Quorvex"));
    window.show();
    const int ret = QApplication::exec();
    closeInstanceGuard();
    return ret;
}
