// The main window as constructed: layout, texts, and what a language change
// touches.

#include "CustomCheckHeaderView.h"
#include "CustomComboBox.h"
#include "CustomLabel.h"
#include "CustomListWidget.h"
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
    void freshWindow_showsThirteenEmptyRowsAndFiveColumns();
    void freshWindow_hasItsButtonsTextsAndHelp();
    void languageChange_reappliesExactlyTheNamedTexts();
};

void MainWindowTest::freshWindow_showsThirteenEmptyRowsAndFiveColumns()
{
    QVirtualCamMainWidget window;
    QVERIFY(window.Init());
    auto* table = window.findChild<CustomTableWidget*>();
    QVERIFY(table);
    // Sizes are the code's own numbers and not restated here.
    QCOMPARE(table->rowCount(), 13);
    QCOMPARE(table->columnCount(), 5);
    QVERIFY(table->horizontalHeader()->stretchLastSection());
    QCOMPARE(table->horizontalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    QCOMPARE(headerLabels(table), (QStringList{"", "Model Name", "IP Address", "Version", "Collect Status"}));
    auto* header = qobject_cast<CustomCheckHeaderView*>(table->horizontalHeader());
    QVERIFY(header);
    QVERIFY(header->isCheckBoxVisible(0));
    QVERIFY(!table->isSortingEnabled());
}

void MainWindowTest::freshWindow_hasItsButtonsTextsAndHelp()
{
    QVirtualCamMainWidget window;
    QVERIFY(window.Init());
    QCOMPARE(window.windowTitle(), QString("Quorvex"));
    QCOMPARE(window.cTitleBar()->cTitleText(), "Quorvex " + XQInterface::curExeVersion());

    auto* collect = window.findChild<CustomPushButton*>("CollectBtn");
    QVERIFY(collect);
    QCOMPARE(collect->text(), QString("Record"));
    QVERIFY(!collect->isEnabled());

    CustomPushButton* add = buttonWithText(&window, "Add");
    QVERIFY(add);
    QVERIFY(add->isEnabled());

    auto* warning = window.findChild<CustomLabel*>();
    QVERIFY(warning);
    QCOMPARE(warning->text(),
             QString("The tool does not support discovery code readers when private protocol is enabled"));

    // The help button is identified by its image and tool tip only.
    CustomPushButton* help = nullptr;
    for (CustomPushButton* button : window.cTitleBar()->findChildren<CustomPushButton*>())
        if (button->toolTip() == "View Document")
            help = button;
    QVERIFY(help);
    QVERIFY(help->text().isEmpty());

    auto* list = window.findChild<CustomListWidget*>();
    QVERIFY(list);
    QCOMPARE(list->contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(window.findChild<CustomComboBox*>());
}

void MainWindowTest::languageChange_reappliesExactlyTheNamedTexts()
{
    QVirtualCamMainWidget window;
    QVERIFY(window.Init());
    auto* table = window.findChild<CustomTableWidget*>();
    // A cell text is set elsewhere and stays as it is.
    table->setItem(0, 4, new QTableWidgetItem("Collect Finished"));

    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);  // sends LanguageChange
    QCoreApplication::processEvents();

    QCOMPARE(window.windowTitle(), QString("<Quorvex>"));
    QCOMPARE(window.cTitleBar()->cTitleText(), "<Quorvex> " + XQInterface::curExeVersion());
    QCOMPARE(window.findChild<CustomPushButton*>("CollectBtn")->text(), QString("<Record>"));
    QVERIFY(buttonWithText(&window, "<Add>"));
    QCOMPARE(window.findChild<CustomLabel*>()->text(),
             QString("<The tool does not support discovery code readers when private protocol is enabled>"));
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
    QCOMPARE(headerLabels(table), (QStringList{"", "Model Name", "IP Address", "Version", "Collect Status"}));
}

QTEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"
