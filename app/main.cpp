// The tool's process: environment set-up, single-instance decision, the main
// window and its event loop.

#include "AppFolders.h"
#include "CrashHandler.h"
#include "Language.h"
#include "SingleInstance.h"
#include "QCollectInfoThread.h"
#include "QVirtualCamMainWidget.h"
#include "StagingFolder.h"
#include "XQInterface.h"

#include <QApplication>
#include <QDebug>
#include <QDir>
#include <QFontDatabase>
#include <QIcon>
#include <QResource>

#include <cstdlib>

static const QString g_strApplicationName = QStringLiteral("Quorvex");

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);

    const QString strBaseDir = GetBaseDirPath();
    const QString strSuiteDir = suiteFolderOf(strBaseDir);
    // The suite's libraries are found through the RPATH set at link time.

    QResource::registerResource(strSuiteDir + "/common/resource/Orbicle.rcc", QString());
    QResource::registerResource(strSuiteDir + "/common/resource/CustomCtr_Default.rcc", QString());
    QCoreApplication::addLibraryPath(strBaseDir + "/plugins");
    XQInterface::initLog4qtConfig(strSuiteDir + "/common/config/log4qt_Quorvex.conf");

    const QStringList fontEntries = QDir(XQInterface::readonlyCfgPath() + "/Fonts").entryList();
    for (const QString& entry : fontEntries)
        QFontDatabase::addApplicationFont(XQInterface::readonlyCfgPath() + "/Fonts/" + entry);

    QCoreApplication::setAttribute(Qt::AA_NativeWindows, false);

    applyStartupLanguage(QCoreApplication::arguments());

    installCrashHandler();
    QApplication::setWindowIcon(QIcon(":/Orbicle/tools/DriverTool.ico"));

    if (isAlreadyRunning(QCoreApplication::arguments()))
        return 0;

    // Folders of collection jobs that a killed copy of a program left.
    for (const QString& strLeftover : collect::sweepAbandonedStagingFolders(GetVirtualCameraRoot()))
        qInfo().noquote() << "removed the folder of an ended job:" << strLeftover;

    int ret = 0;
    {
        QVirtualCamMainWidget w(nullptr);
        w.Init();
        w.show();

        auto* pFilter = new XQNativeEventFilter(&w);
        app.installNativeEventFilter(pFilter);
        ret = QApplication::exec();
        app.removeNativeEventFilter(pFilter);
        delete pFilter;

        closeInstanceGuard();
        XQInterface::killProcess(g_strApplicationName);
    }
    // A job that did not end within the window's wait ends with the
    // process; tearing down the libraries under it could hang or crash.
    if (QCollectInfoThread::runningJobCount() > 0)
        std::_Exit(ret);
    return ret;
}
