#include "Language.h"

#include "AppFolders.h"
#include "Custom.h"
#include "XQInterface.h"

#include <QCoreApplication>
#include <QSettings>
#include <QTranslator>

const char* const kLanguageChinese = "CH";
const char* const kLanguageEnglish = "ENG";
const char* const kWindowMessageEventType = "windows_generic_MSG";

namespace {

const char* const kCatalogues[] = {
    "./common/translation/Quorvex_zh.qm",
    "./common/translation/qt_zh_CN.qm",
    "./common/translation/widgets_zh_cn.qm",
    "./common/translation/CustomCtr_zh_CN.qm",
    "./common/translation/CommonTools_zh_CN.qm",
};
constexpr int kCatalogueCount = sizeof(kCatalogues) / sizeof(kCatalogues[0]);

// Process-wide, like the application object: they outlive every window.
QTranslator g_translators[kCatalogueCount];

} // namespace

QString languageSettingsPath()
{
    QString strPath = XQInterface::programDataPath() + "/CustomConfig.ini";
    return strPath.replace(QStringLiteral("VANTO"), QStringLiteral("ZELTA"));
}

QString readLanguage()
{
    QString code = QString::fromLatin1(kLanguageChinese);
    const QSettings settings(languageSettingsPath(), QSettings::IniFormat);
    const QByteArray stored = settings.value(QStringLiteral("Language"), QString()).toString().toUtf8();
    code = QString::fromUtf8(QByteArray::fromBase64(stored));
    return code;
}

bool applyLanguage(const QString& code)
{
    if (code == QLatin1String(kLanguageChinese)) {
        Custom::setLanguage(0);
        const QString directory = GetSuiteDirPath();
        for (int i = 0; i < kCatalogueCount; ++i) {
            if (!g_translators[i].load(QString::fromLatin1(kCatalogues[i]), directory, QString(), QString()))
                return false;
            QCoreApplication::installTranslator(&g_translators[i]);
        }
        return true;
    }
    if (code == QLatin1String(kLanguageEnglish)) {
        Custom::setLanguage(1);
        for (QTranslator& translator : g_translators)
            QCoreApplication::removeTranslator(&translator);
        return true;
    }
    return true;
}

void applyStartupLanguage(const QStringList& arguments)
{
    applyLanguage(readLanguage());
    if (arguments.size() < 2)
        return;
    const QString& strArgument = arguments.at(1);
    if (strArgument == QLatin1String(kLanguageChinese))
        applyLanguage(QString::fromLatin1(kLanguageChinese));
    else if (strArgument == QLatin1String(kLanguageEnglish))
        applyLanguage(QString::fromLatin1(kLanguageEnglish));
}

void switchLanguageOnRequest(const QString& code)
{
    if (code == QLatin1String(kLanguageEnglish)) {
        qInfo("Quorvex ENG");
        applyLanguage(code);
    } else if (code == QLatin1String(kLanguageChinese)) {
        qInfo("Quorvex CN");
        applyLanguage(code);
    }
}

QString languageCodeForNativeEvent(const QByteArray& eventType, const void* message)
{
    if (!message || eventType != kWindowMessageEventType)
        return QString();
    const unsigned int number = static_cast<const WindowMessageHead*>(message)->message;
    if (number == kEnglishLanguageMessage)
        return QString::fromLatin1(kLanguageEnglish);
    if (number == kChineseLanguageMessage)
        return QString::fromLatin1(kLanguageChinese);
    return QString();
}
