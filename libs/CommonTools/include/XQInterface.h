#pragma once
// The suite's shared tools: folders, version text, logging set-up and text
// conversion. Every tool of the suite links this library.

#include "CommonToolsExport.h"

#include <QAbstractNativeEventFilter>
#include <QString>

class QWidget;

class COMMONTOOLS_EXPORT XQInterface final
{
public:
    XQInterface() = delete;

    // Per-user data folder (crash reports): $QUORVEX_USER_DATA, else
    // $XDG_DATA_HOME/ZELTA (~/.local/share/ZELTA).
    static QString userDataPath();
    // Machine-wide settings shared by the suite (CustomConfig.ini):
    // $QUORVEX_PROGRAM_DATA, else $XDG_CONFIG_HOME/ZELTA (~/.config/ZELTA).
    static QString programDataPath();
    // Read-only configuration shipped with the suite (fonts, log
    // configuration): $QUORVEX_READONLY_CFG, else <suite>/common/config,
    // <suite> being the folder above the executable's apps folder.
    static QString readonlyCfgPath();
    // Temporary data shared by the suite's tools; the virtual camera store is
    // its "VirtualCamera" folder: $QUORVEX_SYSTEM_TEMP, else
    // $XDG_CACHE_HOME/ZELTA (~/.cache/ZELTA).
    static QString systemTemp();

    // The version of the running build, "V<major>.<minor>.<patch>".
    static QString curExeVersion();

    // Reads a log4j-style properties file (level, log file, size-based
    // rotation) and routes Qt's message logger into a rotating log file.
    // A missing or broken file falls back to defaults; never fails start-up.
    // Returns false when the defaults had to be used.
    static bool initLog4qtConfig(const QString& configPath);

    // Ends other processes of the suite by name on the platform that needs
    // it; nothing to do on Linux, where the tool's children end with it.
    static void killProcess(const QString& processName);

    // Converts at most maxLength bytes, stopping at the first NUL, with the
    // named codec (UTF-8 when the codec is unknown). Null input gives "".
    static QString uchar2QString(const unsigned char* bytes, int maxLength, const char* codecName);
    static QString char2QString(const char* bytes, int maxLength, const char* codecName);
};

// The suite's native event filter. On platforms without window messages it
// sees nothing of interest and lets every event through.
class COMMONTOOLS_EXPORT XQNativeEventFilter final : public QAbstractNativeEventFilter
{
public:
    explicit XQNativeEventFilter(QWidget* mainWindow);
    bool nativeEventFilter(const QByteArray& eventType, void* message, long* result) override;

private:
    QWidget* m_pMainWindow;
};
