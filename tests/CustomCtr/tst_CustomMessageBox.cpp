// Message boxes answered the way a user answers them: a timer finds the
// modal box and presses one of its buttons.
#include "QtPrinters.h"
#include "CustomMessageBox.h"
#include "CustomPushButton.h"
#include "CustomTitleBar.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTimer>
#include <QTranslator>
#include <QtTest>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Runs `act` on the modal box as soon as it is up. Polls, since the box
// appears only once the static helper has entered its own event loop.
void whenBoxShows(std::function<void(QWidget*)> act)
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

void pressButton(const QString& objectName)
{
    whenBoxShows([objectName](QWidget* box) {
        auto* const button = box->findChild<CustomPushButton*>(objectName);
        if (!button) {
            qWarning("no button %s", qPrintable(objectName));
            box->close();
            return;
        }
        QTest::mouseClick(button, Qt::LeftButton);
    });
}

} // namespace

TEST(TestCustomMessageBox, ask_returnsTheButtonPressed)
{
    QWidget parent;
    parent.show();
    pressButton(QStringLiteral("ConfirmBtn"));
    ASSERT_EQ(CustomMessageBox::ask(&parent, QStringLiteral("Quit?"), QStringLiteral("Prompt"), 3, QString(), false), 1);

    pressButton(QStringLiteral("CancelBtn"));
    ASSERT_EQ(CustomMessageBox::ask(&parent, QStringLiteral("Quit?"), QStringLiteral("Prompt"), 3, QString(), false), 2);

    // Enter presses the default: Cancel when asked for, Confirm otherwise.
    whenBoxShows([](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); });
    ASSERT_EQ(CustomMessageBox::ask(nullptr, QStringLiteral("Delete?"), QStringLiteral("Prompt"), 3, QString(), true), 2);
    whenBoxShows([](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); });
    ASSERT_EQ(CustomMessageBox::ask(nullptr, QStringLiteral("Delete?"), QStringLiteral("Prompt"), 3, QString(), false), 1);
}

TEST(TestCustomMessageBox, closingOtherwise_returnsZero)
{
    whenBoxShows([](QWidget* box) { QTest::keyClick(box, Qt::Key_Escape); });
    ASSERT_EQ(CustomMessageBox::ask(nullptr, QStringLiteral("Quit?"), QStringLiteral("Prompt"), 3, QString(), false), 0);

    whenBoxShows([](QWidget* box) {
        auto* const bar = box->findChild<CustomTitleBar*>();
        QTest::mouseClick(bar->cControlButton(CustomTitleBar::CloseControl), Qt::LeftButton);
    });
    ASSERT_EQ(CustomMessageBox::warning(nullptr, QStringLiteral("Busy"), QStringLiteral("Prompt"), 3, QString()), 0);
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
        ASSERT_TRUE(message && message->text() == hostile && message->textFormat() == Qt::PlainText);
        QTest::mouseClick(box->findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn")), Qt::LeftButton);
    });
    ASSERT_EQ(CustomMessageBox::warning(nullptr, hostile, QStringLiteral("Prompt"), 1, QString()), 1);
    ASSERT_TRUE(message);
    ASSERT_TRUE(!hadCancel);
}

TEST(TestCustomMessageBox, unknownButtonValues_fallBackToConfirm)
{
    for (const int buttons : {0, 4, -1, 99}) {
        CustomMessageBox box(nullptr, CustomMessageBox::WarningIcon, QStringLiteral("x"), QStringLiteral("y"), buttons);
        ASSERT_TRUE(box.findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn")));
        ASSERT_TRUE(!box.findChild<CustomPushButton*>(QStringLiteral("CancelBtn")));
    }
    CustomMessageBox onlyCancel(nullptr, CustomMessageBox::QuestionIcon, QStringLiteral("x"), QStringLiteral("y"), 2);
    ASSERT_TRUE(!onlyCancel.findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn")));
    ASSERT_TRUE(onlyCancel.findChild<CustomPushButton*>(QStringLiteral("CancelBtn")));
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
    ASSERT_TRUE(!detail->isVisible());
    QTest::mouseClick(toggle, Qt::LeftButton);
    ASSERT_TRUE(detail->isVisible());
    QTest::mouseClick(toggle, Qt::LeftButton);
    ASSERT_TRUE(!detail->isVisible());
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
    auto* const confirm = box.findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn"));
    auto* const cancel = box.findChild<CustomPushButton*>(QStringLiteral("CancelBtn"));
    auto* const details = box.findChild<CustomPushButton*>(QStringLiteral("DetailBtn"));
    QTranslator translator;
    ASSERT_TRUE(translator.load(QStringLiteral("customctr_test_zh_CN"), QStringLiteral(CUSTOMCTR_TEST_QM_DIR))) << "test catalogue customctr_test_zh_CN.qm missing: lrelease did not run";
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return (confirm->text()) == (QString::fromUtf8("确定")); })) << "waited for confirm->text() == QString::fromUtf8(\"确定\")";
    ASSERT_EQ(cancel->text(), QString::fromUtf8("取消"));
    ASSERT_EQ(details->text(), QString::fromUtf8("详细信息"));
    ASSERT_TRUE(QCoreApplication::removeTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return (confirm->text()) == (QStringLiteral("Confirm")); })) << "waited for confirm->text() == QStringLiteral(\"Confirm\")";
}

