// The main window: what a language change touches. The window's own texts
// come from tr in its context and are re-applied on a language change; a
// cell text set elsewhere stays as it is.

#include "QtPrinters.h"
#include "CustomCheckHeaderView.h"
#include "CustomLabel.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "CustomTitleBar.h"
#include "QVirtualCamMainWidget.h"
#include "XQInterface.h"

#include <QtCore>

#include <gtest/gtest.h>

#include <algorithm>

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

QStringList headerLabels(QTableWidget* table)
{
    QStringList labels;
    for (int column = 0; column < table->columnCount(); ++column)
        labels << (table->horizontalHeaderItem(column) ? table->horizontalHeaderItem(column)->text() : QString());
    return labels;
}

} // namespace

TEST(MainWindowTest, languageChange_reappliesExactlyTheNamedTexts)
{
    QVirtualCamMainWidget window;
    ASSERT_TRUE(window.Init());
    auto* table = window.findChild<CustomTableWidget*>();
    ASSERT_TRUE(table);
    ASSERT_TRUE(qobject_cast<CustomCheckHeaderView*>(table->horizontalHeader())->isCheckBoxVisible(0));
    ASSERT_TRUE(!window.findChild<CustomPushButton*>("CollectBtn")->isEnabled());
    const QStringList english = headerLabels(table);
    table->setItem(0, 4, new QTableWidgetItem("Collect Finished"));

    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);  // sends LanguageChange
    QCoreApplication::processEvents();

    ASSERT_EQ(window.windowTitle(), QString("<Quorvex>"));
    ASSERT_EQ(window.cTitleBar()->cTitleText(), "<Quorvex> " + XQInterface::curExeVersion());
    ASSERT_EQ(window.findChild<CustomPushButton*>("CollectBtn")->text(), QString("<Record>"));
    const QList<CustomPushButton*> buttons = window.findChildren<CustomPushButton*>();
    ASSERT_TRUE(std::any_of(buttons.begin(), buttons.end(), [](auto* button) { return button->text() == "<Add>"; }));
    ASSERT_TRUE(window.findChild<CustomLabel*>()->text().startsWith('<'));
    ASSERT_EQ(headerLabels(table), (QStringList{"", "<Model Name>", "<IP Address>", "<Version>", "<Collect Status>"}));
    ASSERT_TRUE(std::any_of(buttons.begin(), buttons.end(), [&](auto* button) {
        return button->toolTip() == "<View Document>" && window.cTitleBar()->isAncestorOf(button);
    }));
    ASSERT_EQ(table->item(0, 4)->text(), QString("Collect Finished"));

    QCoreApplication::removeTranslator(&translator);
    QCoreApplication::processEvents();
    ASSERT_EQ(window.windowTitle(), QString("Quorvex"));
    ASSERT_EQ(headerLabels(table), english);
}

