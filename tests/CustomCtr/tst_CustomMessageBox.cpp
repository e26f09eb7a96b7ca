// Message boxes answered the way a user answers them: a timer finds the
// modal box and presses one of its buttons.
#include "CustomMessageBox.h"
#include "CustomPushButton.h"
#include "CustomTitleBar.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTimer>
#include <QTranslator>
#include <QtTest>

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

class TestCustomMessageBox : public QObject
{
    Q_OBJECT

private slots:
    void ask_returnsTheButtonPressed();
    void closingOtherwise_returnsZero();
    void warning_withOneButton_offersOnlyConfirm_andPlainText();
    void unknownButtonValues_fallBackToConfirm();
    void detailText_isBehindADetailsToggle();
    void parentDeletedWhileOpen_returnsZero();
    void buttonTexts_followTheInstalledCatalogue();
};

void TestCustomMessageBox::ask_returnsTheButtonPressed()
{
    QWidget parent;
    parent.show();
    pressButton(QStringLiteral("ConfirmBtn"));
    QCOMPARE(CustomMessageBox::ask(&parent, QStringLiteral("Quit?"), QStringLiteral("Prompt"), 3, QString(), false), 1);

    pressButton(QStringLiteral("CancelBtn"));
    QCOMPARE(CustomMessageBox::ask(&parent, QStringLiteral("Quit?"), QStringLiteral("Prompt"), 3, QString(), false), 2);

    // Enter presses the default: Cancel when asked for, Confirm otherwise.
    whenBoxShows([](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); });
    QCOMPARE(CustomMessageBox::ask(nullptr, QStringLiteral("Delete?"), QStringLiteral("Prompt"), 3, QString(), true), 2);
    whenBoxShows([](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); });
    QCOMPARE(CustomMessageBox::ask(nullptr, QStringLiteral("Delete?"), QStringLiteral("Prompt"), 3, QString(), false), 1);
}

void TestCustomMessageBox::closingOtherwise_returnsZero()
{
    whenBoxShows([](QWidget* box) { QTest::keyClick(box, Qt::Key_Escape); });
    QCOMPARE(CustomMessageBox::ask(nullptr, QStringLiteral("Quit?"), QStringLiteral("Prompt"), 3, QString(), false), 0);

    whenBoxShows([](QWidget* box) {
        auto* const bar = box->findChild<CustomTitleBar*>();
        QTest::mouseClick(bar->cControlButton(CustomTitleBar::CloseControl), Qt::LeftButton);
    });
    QCOMPARE(CustomMessageBox::warning(nullptr, QStringLiteral("Busy"), QStringLiteral("Prompt"), 3, QString()), 0);
}

void TestCustomMessageBox::warning_withOneButton_offersOnlyConfirm_andPlainText()
{
    // Device texts may hold markup: they are shown as they are.
    const QString hostile = QStringLiteral("<img src=\"x\"><b>ID2000</b> & more");
    bool hadCancel = true;
    QLabel* message = nullptr;
    whenBoxShows([&](QWidget* box) {
        hadCancel = box->findChild<CustomPushButton*>(QStringLiteral("CancelBtn")) != nullptr;
        message = box->findChild<QLabel*>(QStringLiteral("MessageText"));
        QVERIFY(message && message->text() == hostile && message->textFormat() == Qt::PlainText);
        QTest::mouseClick(box->findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn")), Qt::LeftButton);
    });
    QCOMPARE(CustomMessageBox::warning(nullptr, hostile, QStringLiteral("Prompt"), 1, QString()), 1);
    QVERIFY(message);
    QVERIFY(!hadCancel);
}

void TestCustomMessageBox::unknownButtonValues_fallBackToConfirm()
{
    for (const int buttons : {0, 4, -1, 99}) {
        CustomMessageBox box(nullptr, CustomMessageBox::WarningIcon, QStringLiteral("x"), QStringLiteral("y"), buttons);
        QVERIFY(box.findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn")));
        QVERIFY(!box.findChild<CustomPushButton*>(QStringLiteral("CancelBtn")));
    }
    CustomMessageBox onlyCancel(nullptr, CustomMessageBox::QuestionIcon, QStringLiteral("x"), QStringLiteral("y"), 2);
    QVERIFY(!onlyCancel.findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn")));
    QVERIFY(onlyCancel.findChild<CustomPushButton*>(QStringLiteral("CancelBtn")));
}

void TestCustomMessageBox::detailText_isBehindADetailsToggle()
{
    CustomMessageBox box(nullptr, CustomMessageBox::QuestionIcon, QStringLiteral("x"), QStringLiteral("y"), 3,
                         QStringLiteral("line 1\nline 2"));
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    auto* const detail = box.findChild<QPlainTextEdit*>(QStringLiteral("DetailText"));
    auto* const toggle = box.findChild<CustomPushButton*>(QStringLiteral("DetailBtn"));
    QVERIFY(detail && toggle);
    QCOMPARE(detail->toPlainText(), QStringLiteral("line 1\nline 2"));
    QVERIFY(!detail->isVisible());
    QTest::mouseClick(toggle, Qt::LeftButton);
    QVERIFY(detail->isVisible());
    QTest::mouseClick(toggle, Qt::LeftButton);
    QVERIFY(!detail->isVisible());
}

void TestCustomMessageBox::parentDeletedWhileOpen_returnsZero()
{
    QPointer<QWidget> parent = new QWidget;
    parent->show();
    whenBoxShows([parent](QWidget*) { delete parent.data(); });
    QCOMPARE(CustomMessageBox::ask(parent, QStringLiteral("Quit?"), QStringLiteral("Prompt")), 0);
    QVERIFY(parent.isNull());
}

void TestCustomMessageBox::buttonTexts_followTheInstalledCatalogue()
{
    CustomMessageBox box(nullptr, CustomMessageBox::QuestionIcon, QStringLiteral("x"), QStringLiteral("y"), 3,
                         QStringLiteral("detail"));
    auto* const confirm = box.findChild<CustomPushButton*>(QStringLiteral("ConfirmBtn"));
    auto* const cancel = box.findChild<CustomPushButton*>(QStringLiteral("CancelBtn"));
    auto* const details = box.findChild<CustomPushButton*>(QStringLiteral("DetailBtn"));
    QTranslator translator;
    QVERIFY2(translator.load(QStringLiteral("customctr_test_zh_CN"), QStringLiteral(CUSTOMCTR_TEST_QM_DIR)),
             "test catalogue customctr_test_zh_CN.qm missing: lrelease did not run");
    QVERIFY(QCoreApplication::installTranslator(&translator));
    QTRY_COMPARE(confirm->text(), QString::fromUtf8("确定"));
    QCOMPARE(cancel->text(), QString::fromUtf8("取消"));
    QCOMPARE(details->text(), QString::fromUtf8("详细信息"));
    QVERIFY(QCoreApplication::removeTranslator(&translator));
    QTRY_COMPARE(confirm->text(), QStringLiteral("Confirm"));
}

QTEST_MAIN(TestCustomMessageBox)
#include "tst_CustomMessageBox.moc"
