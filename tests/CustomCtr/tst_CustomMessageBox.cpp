// Message boxes answered the way a user answers them: a timer finds the
// modal box and presses one of its buttons.
#include "QtPrinters.h"
#include "CustomMessageBox.h"
#include "CustomPushButton.h"
#include "CustomTitleBar.h"
#include "TableTests.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTimer>
#include <QTranslator>
#include <QtTest>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

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

BoxAction key(Qt::Key key)
{
    return [key](QWidget* box) { QTest::keyClick(box, key); };
}

struct AnswerRow
{
    std::string rowName;
    BoxAction act;
    bool cancelIsDefault;
    int answer;
};

} // namespace

TEST(TestCustomMessageBox, ask_returnsTheButtonPressed_orZeroWhenClosedOtherwise)
{
    QWidget parent;
    parent.show();
    forEachRow(std::vector<AnswerRow> {
                   {"confirm", click("ConfirmBtn"), false, 1},
                   {"cancel", click("CancelBtn"), false, 2},
                   {"Enter on a cancel default", key(Qt::Key_Return), true, 2},
                   {"Enter otherwise", key(Qt::Key_Return), false, 1},
                   {"Escape", key(Qt::Key_Escape), false, 0},
               },
               [&](const AnswerRow& row) {
                   whenBoxShows(row.act);
                   EXPECT_EQ(CustomMessageBox::ask(&parent, QStringLiteral("Quit?"), QStringLiteral("Prompt"), 3,
                                                   QString(), row.cancelIsDefault),
                             row.answer);
               });

    whenBoxShows([](QWidget* box) {
        QTest::mouseClick(box->findChild<CustomTitleBar*>()->cControlButton(CustomTitleBar::CloseControl),
                          Qt::LeftButton);
    });
    EXPECT_EQ(CustomMessageBox::warning(nullptr, QStringLiteral("Busy"), QStringLiteral("Prompt"), 3, QString()), 0);
}

TEST(TestCustomMessageBox, warning_withOneButton_offersOnlyConfirm_andPlainText)
{
    // Device texts may hold markup: they are shown as they are.
    const QString hostile = QStringLiteral("<img src=\"x\"><b>ID2000</b> & more");
    bool hadCancel = true;
    QLabel* message = nullptr;
    whenBoxShows([&](QWidget* box) {
        hadCancel = box->findChild<CustomPushButton*>(QStringLiteral("CancelBtn")) != nullptr;
        message = box->findChild<QLabel*>(QStringLiteral("MessageText"));
        EXPECT_TRUE(message && message->text() == hostile && message->textFormat() == Qt::PlainText);
        click("ConfirmBtn")(box);
    });
    ASSERT_EQ(CustomMessageBox::warning(nullptr, hostile, QStringLiteral("Prompt"), 1, QString()), 1);
    ASSERT_TRUE(message);
    ASSERT_FALSE(hadCancel);
}

TEST(TestCustomMessageBox, unknownButtonValues_fallBackToConfirm)
{
    // 2 is Cancel alone; anything but 1, 2 and 3 means Confirm alone.
    for (const int buttons : {0, 2, 4, -1, 99}) {
        SCOPED_TRACE(buttons);
        CustomMessageBox box(nullptr, CustomMessageBox::WarningIcon, QStringLiteral("x"), QStringLiteral("y"), buttons);
        EXPECT_EQ(box.findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn")) != nullptr, buttons != 2);
        EXPECT_EQ(box.findChild<CustomPushButton*>(QStringLiteral("CancelBtn")) != nullptr, buttons == 2);
    }
}

TEST(TestCustomMessageBox, detailText_isBehindADetailsToggle)
{
    CustomMessageBox box(nullptr, CustomMessageBox::QuestionIcon, QStringLiteral("x"), QStringLiteral("y"), 3,
                         QStringLiteral("line 1\nline 2"));
    box.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    auto* const detail = box.findChild<QPlainTextEdit*>(QStringLiteral("DetailText"));
    auto* const toggle = box.findChild<CustomPushButton*>(QStringLiteral("DetailBtn"));
    ASSERT_TRUE(detail && toggle);
    ASSERT_EQ(detail->toPlainText(), QStringLiteral("line 1\nline 2"));
    ASSERT_FALSE(detail->isVisible());
    QTest::mouseClick(toggle, Qt::LeftButton);
    ASSERT_TRUE(detail->isVisible());
    QTest::mouseClick(toggle, Qt::LeftButton);
    ASSERT_FALSE(detail->isVisible());
}

TEST(TestCustomMessageBox, parentDeletedWhileOpen_returnsZero)
{
    QPointer<QWidget> parent = new QWidget;
    parent->show();
    whenBoxShows([parent](QWidget*) { delete parent.data(); });
    ASSERT_EQ(CustomMessageBox::ask(parent, QStringLiteral("Quit?"), QStringLiteral("Prompt")), 0);
    ASSERT_TRUE(parent.isNull());
}

TEST(TestCustomMessageBox, buttonTexts_followTheInstalledCatalogue)
{
    CustomMessageBox box(nullptr, CustomMessageBox::QuestionIcon, QStringLiteral("x"), QStringLiteral("y"), 3,
                         QStringLiteral("detail"));
    const auto text = [&](const char* name) { return box.findChild<CustomPushButton*>(QLatin1String(name))->text(); };
    QTranslator translator;
    ASSERT_TRUE(translator.load(QStringLiteral("customctr_test_zh_CN"), QStringLiteral(CUSTOMCTR_TEST_QM_DIR)))
        << "test catalogue missing: lrelease did not run";
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return text("ConfirmBtn") == QString::fromUtf8("确定"); }));
    EXPECT_EQ(text("CancelBtn"), QString::fromUtf8("取消"));
    EXPECT_EQ(text("DetailBtn"), QString::fromUtf8("详细信息"));
    ASSERT_TRUE(QCoreApplication::removeTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return text("ConfirmBtn") == QStringLiteral("Confirm"); }));
}
