// The run-time language switch and the help manual.

#include "QVirtualCamMainWidget.h"

#include "Custom.h"
#include "Language.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QUrl>

namespace {

const char* const kHelpPage = "GUID-C9B6C6BA-02CC-4D2D-8A13-48773AF3C0AF.html";

} // namespace

// Only the two switch messages are handled; every other event goes on to
// normal processing without asking the base class. On desktops without
// window messages the same switch arrives over the single-instance channel.
bool QVirtualCamMainWidget::nativeEvent(const QByteArray& eventType, void* message, long* result)
{
    Q_UNUSED(result);
    const QString strCode = languageCodeForNativeEvent(eventType, message);
    if (strCode.isEmpty())
        return false;
    switchLanguageOnRequest(strCode);
    return true;
}

// The manual follows the widget library's language flag at the moment of
// the click; a missing manual is the desktop's to report, not ours.
void QVirtualCamMainWidget::OnHelpDocClicked()
{
    QDir dir(QCoreApplication::applicationDirPath());
    dir.cdUp();
    dir.cdUp();
    const QString strFolder = Custom::language() == Custom::English ? QStringLiteral("User_Manual_ZELTA_English")
                                                                    : QStringLiteral("User_Manual_ZELTA_Chinese");
    const QString strPath = dir.absolutePath() + "/common/doc/" + QString("%1/%2").arg(strFolder, kHelpPage);
    QDesktopServices::openUrl(QUrl::fromLocalFile(strPath));
}
