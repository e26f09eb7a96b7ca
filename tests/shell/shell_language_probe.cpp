// Runs the tool's language steps in a suite laid out by the test (the
// catalogues are found from the executable's own folder, so the test copies
// this program into <suite>/apps/Quorvex), builds the real main window and
// prints one line of state after each step:
//   <step> [<outcome> ]language=<0|1> title=<window title>
//          record=<collect caption> header=<model column> catalogues=<which ones answer>
// Steps: start, the switch messages through nativeEvent, a direct Chinese
// switch, and the help button in both languages.

#include "Custom.h"
#include "Language.h"
#include "QVirtualCamMainWidget.h"
#include "CustomTableWidget.h"

#include <QApplication>
#include <QDesktopServices>
#include <QPushButton>
#include <QUrl>

#include <cstdio>

namespace {

class ProbeWindow final : public QVirtualCamMainWidget
{
public:
    using QVirtualCamMainWidget::nativeEvent;
};

class UrlRecorder final : public QObject
{
    Q_OBJECT
public:
    QUrl m_lastUrl;
public slots:
    void open(const QUrl& url) { m_lastUrl = url; }
};

// Which catalogues are installed, told by a text only that catalogue has.
QString answeringCatalogues()
{
    const struct { const char* name; const char* context; const char* source; } probes[] = {
        {"Quorvex", "QVirtualCamMainWidget", "Quorvex"},
        {"qt", "QFileDialog", "Back"},
        {"widgets", "QScrollBar", "Scroll here"},
        {"CustomCtr", "CustomTitleBar", "Minimize"},
    };
    QStringList answering;
    for (const auto& probe : probes) {
        if (QCoreApplication::translate(probe.context, probe.source) != QLatin1String(probe.source))
            answering << probe.name;
    }
    // The widgets catalogue is installed after Qt's and answers first.
    if (answering.contains("widgets")
        && QCoreApplication::translate("QScrollBar", "Scroll here") != QStringLiteral("滚动到此处"))
        answering.removeAll("widgets");
    return answering.join(',');
}

void report(const char* step, const ProbeWindow& window, const QString& outcome = QString())
{
    // Installing a catalogue posts LanguageChange to every window.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LanguageChange);
    const auto* pCollect = window.findChild<QPushButton*>("CollectBtn");
    const auto* pTable = window.findChild<CustomTableWidget*>();
    const QTableWidgetItem* pHeader = pTable ? pTable->horizontalHeaderItem(1) : nullptr;
    const QString line = QStringLiteral("%1 %2language=%3 title=%4 record=%5 header=%6 catalogues=%7\n")
                             .arg(step, outcome)
                             .arg(Custom::language())
                             .arg(window.windowTitle(), pCollect ? pCollect->text() : QString("-"),
                                  pHeader ? pHeader->text() : QString("-"), answeringCatalogues());
    std::fputs(line.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

void sendMessage(ProbeWindow& window, const QByteArray& eventType, unsigned int number, const char* step)
{
    WindowMessageHead message {nullptr, number};
    long result = 12345;
    const bool bHandled = window.nativeEvent(eventType, &message, &result);
    report(step, window, QString("handled=%1 result=%2 ").arg(bHandled ? 1 : 0).arg(result));
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    applyStartupLanguage(QCoreApplication::arguments());

    ProbeWindow window;
    window.InitUI();
    window.InitConnect();
    window.InitLayout();
    report("start", window);

    UrlRecorder recorder;
    QDesktopServices::setUrlHandler("file", &recorder, "open");
    QMetaObject::invokeMethod(&window, "OnHelpDocClicked");
    std::printf("help-start %s\n", qPrintable(recorder.m_lastUrl.toLocalFile()));

    sendMessage(window, kWindowMessageEventType, kEnglishLanguageMessage, "msg-english");
    QMetaObject::invokeMethod(&window, "OnHelpDocClicked");
    std::printf("help-english %s\n", qPrintable(recorder.m_lastUrl.toLocalFile()));
    sendMessage(window, kWindowMessageEventType, kEnglishLanguageMessage, "msg-english-again");
    sendMessage(window, kWindowMessageEventType, kChineseLanguageMessage, "msg-chinese");
    QMetaObject::invokeMethod(&window, "OnHelpDocClicked");
    std::printf("help-chinese %s\n", qPrintable(recorder.m_lastUrl.toLocalFile()));
    sendMessage(window, kWindowMessageEventType, 0x801, "msg-other");
    sendMessage(window, "xcb_generic_event_t", kEnglishLanguageMessage, "msg-x11");

    const bool bApplied = applyLanguage(QStringLiteral("CH"));
    report("apply-chinese", window, QString("returned=%1 ").arg(bApplied ? 1 : 0));
    QDesktopServices::unsetUrlHandler("file");
    return 0;
}

#include "shell_language_probe.moc"
