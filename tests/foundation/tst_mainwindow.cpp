// The main window: what a language change touches.

#include "CustomCheckHeaderView.h"
#include "CustomLabel.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "CustomTitleBar.h"
#include "QVirtualCamMainWidget.h"
#include "XQInterface.h"

#include <QtTest>
#include <QTranslator>

namespace {

// Marks every text of the window's context, so a test sees which ones were
// re-applied after a language change.
class MarkingTranslator final : public QTranslator
{
public:
    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override
    {
        Q_UNUSED(disambiguation);
        Q_UNUSED(n);
        if (qstrcmp(context, "QVirtualCamMainWidget") != 0)
            return QString();
        return QString("<%1>").arg(QString::fromUtf8(sourceText));
    }
    bool isEmpty() const override { return false; }
};

CustomPushButton* buttonWithText(QWidget* window, const QString& text)
{
    for (CustomPushButton* button : window->findChildren<CustomPushButton*>())
        if (button->text() == text)
            return button;
    return nullptr;
}

QStringList headerLabels(QTableWidget* table)
{
    QStringList labels;
    for (int column = 0; column < table->columnCount(); ++column)
        labels << (table->horizontalHeaderItem(column) ? table->horizontalHeaderItem(column)->text() : QString());
    return labels;
}

} // namespace

class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    // The window's own texts come from tr in its context and are re-applied
    // on a language change; a cell text set elsewhere stays as it is.
    void languageChange_reappliesExactlyTheNamedTexts();
};

void MainWindowTest::languageChange_reappliesExactlyTheNamedTexts()
{
    QVirtualCamMainWidget window;
    QVERIFY(window.Init());
    auto* table = window.findChild<CustomTableWidget*>();
    QVERIFY(table);
    QVERIFY(qobject_cast<CustomCheckHeaderView*>(table->horizontalHeader())->isCheckBoxVisible(0));
    QVERIFY(!window.findChild<CustomPushButton*>("CollectBtn")->isEnabled());
    const QStringList english = headerLabels(table);
    table->setItem(0, 4, new QTableWidgetItem("Collect Finished"));

    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);  // sends LanguageChange
    QCoreApplication::processEvents();

    QCOMPARE(window.windowTitle(), QString("<Quorvex>"));
    QCOMPARE(window.cTitleBar()->cTitleText(), "<Quorvex> " + XQInterface::curExeVersion());
    QCOMPARE(window.findChild<CustomPushButton*>("CollectBtn")->text(), QString("<Record>"));
    QVERIFY(buttonWithText(&window, "<Add>"));
    QVERIFY(window.findChild<CustomLabel*>()->text().startsWith('<'));
    QCOMPARE(headerLabels(table),
             (QStringList{"", "<Model Name>", "<IP Address>", "<Version>", "<Collect Status>"}));
    bool helpTranslated = false;
    for (CustomPushButton* button : window.cTitleBar()->findChildren<CustomPushButton*>())
        helpTranslated = helpTranslated || button->toolTip() == "<View Document>";
    QVERIFY(helpTranslated);
    QCOMPARE(table->item(0, 4)->text(), QString("Collect Finished"));

    QCoreApplication::removeTranslator(&translator);
    QCoreApplication::processEvents();
    QCOMPARE(window.windowTitle(), QString("Quorvex"));
    QCOMPARE(headerLabels(table), english);
}

QTEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"
