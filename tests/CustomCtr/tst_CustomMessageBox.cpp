// Message boxes answered the way a user answers them: a timer finds the
// modal box and presses one of its buttons.
#include "QtPrinters.h"
#include "CustomMessageBox.h"
#include "CustomPushButton.h"
#include "CustomTitleBar.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QtTest>

#include <gtest/gtest.h>

#include <functional>

namespace {

using BoxAction = std::function<void(QWidget*)>;

// Runs `act` on the modal box as soon as it is up. Polls, since the box
// appears only once the static helper has entered its own event loop.
void whenBoxShows(BoxAction act)
{
    auto* const timer = new QTimer;
    timer->setInterval(5);
    QObject::connect(timer, &QTimer::timeout, [timer, act] {
        QWidget* const box = QApplication::activeModalWidget();
        if (!box || !box->isVisible())
            return;
        timer->stop();
        timer->deleteLater();
        act(box);
    });
    timer->start();
}

BoxAction click(const char* objectName)
{
    return [objectName](QWidget* box) {
        if (auto* const button = box->findChild<CustomPushButton*>(QLatin1String(objectName)))
            QTest::mouseClick(button, Qt::LeftButton);
        else
            box->close(); // answers 0: the check that follows fails
    };
}

} // namespace

TEST(TestCustomMessageBox, ask_returnsTheButtonPressed_orZeroWhenClosedOtherwise)
{
    QWidget parent;
    parent.show();
    const auto enter = [](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); };
    const struct { const char* name; BoxAction act; bool cancelIsDefault; int answer; } rows[] = {
        {"confirm", click("ConfirmBtn"), false, 1},
        {"cancel", click("CancelBtn"), false, 2},
        {"Enter on a cancel default", enter, true, 2},
        {"Enter otherwise", enter, false, 1},
        {"Escape", [](QWidget* box) { QTest::keyClick(box, Qt::Key_Escape); }, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        whenBoxShows(row.act);
        EXPECT_EQ(CustomMessageBox::ask(&parent, "Quit?", "Prompt", 3, QString(), row.cancelIsDefault), row.answer);
    }
    whenBoxShows([](QWidget* box) {
        QTest::mouseClick(box->findChild<CustomTitleBar*>()->cControlButton(CustomTitleBar::CloseControl),
                          Qt::LeftButton);
    });
    EXPECT_EQ(CustomMessageBox::warning(nullptr, "Busy", "Prompt", 3, QString()), 0);
}

TEST(TestCustomMessageBox, warning_withOneButton_offersOnlyConfirm_andPlainText)
{
    const QString hostile = "<img src=\"x\"><b>ID2000</b> & more"; // device texts: shown as they are
    bool hadCancel = true;
    QLabel* message = nullptr;
    whenBoxShows([&](QWidget* box) {
        hadCancel = box->findChild<CustomPushButton*>(QStringLiteral("CancelBtn")) != nullptr;
        message = box->findChild<QLabel*>(QStringLiteral("MessageText"));
        EXPECT_TRUE(message && message->text() == hostile && message->textFormat() == Qt::PlainText);
        click("ConfirmBtn")(box);
    });
    ASSERT_EQ(CustomMessageBox::warning(nullptr, hostile, "Prompt", 1, QString()), 1);
    ASSERT_TRUE(message);
    ASSERT_FALSE(hadCancel);
}

TEST(TestCustomMessageBox, unknownButtonValues_fallBackToConfirm)
{
    // 2 is Cancel alone; anything but 1, 2 and 3 means Confirm alone.
    for (const int buttons : {0, 2, 4, -1, 99}) {
        SCOPED_TRACE(buttons);
        CustomMessageBox box(nullptr, CustomMessageBox::WarningIcon, "x", "y", buttons);
        EXPECT_EQ(box.findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn")) != nullptr, buttons != 2);
        EXPECT_EQ(box.findChild<CustomPushButton*>(QStringLiteral("CancelBtn")) != nullptr, buttons == 2);
    }
}

TEST(TestCustomMessageBox, detailTextBehindAToggle_buttonTextsFollowTheInstalledCatalogue)
{
    CustomMessageBox box(nullptr, CustomMessageBox::QuestionIcon, "x", "y", 3, "line 1\nline 2");
    box.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    auto* const detail = box.findChild<QPlainTextEdit*>("DetailText");
    const auto button = [&](const char* name) { return box.findChild<CustomPushButton*>(QLatin1String(name)); };
    ASSERT_TRUE(detail && button("DetailBtn"));
    ASSERT_EQ(detail->toPlainText(), "line 1\nline 2");
    ASSERT_FALSE(detail->isVisible());
    QTest::mouseClick(button("DetailBtn"), Qt::LeftButton);
    ASSERT_TRUE(detail->isVisible());
    QTest::mouseClick(button("DetailBtn"), Qt::LeftButton);
    ASSERT_FALSE(detail->isVisible());

    QTranslator translator;
    ASSERT_TRUE(translator.load("customctr_test_zh_CN", CUSTOMCTR_TEST_QM_DIR)) << "lrelease did not run";
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return button("ConfirmBtn")->text() == QString::fromUtf8("确定"); }));
    EXPECT_EQ(button("CancelBtn")->text(), QString::fromUtf8("取消"));
    EXPECT_EQ(button("DetailBtn")->text(), QString::fromUtf8("详细信息"));
    ASSERT_TRUE(QCoreApplication::removeTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return button("ConfirmBtn")->text() == "Confirm"; }));
}

TEST(TestCustomMessageBox, parentDeletedWhileOpen_returnsZero)
{
    QPointer<QWidget> parent = new QWidget;
    parent->show();
    whenBoxShows([parent](QWidget*) { delete parent.data(); });
    ASSERT_EQ(CustomMessageBox::ask(parent, "Quit?", "Prompt"), 0);
    ASSERT_TRUE(parent.isNull());
}
