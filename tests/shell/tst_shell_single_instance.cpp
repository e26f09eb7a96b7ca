// The single-instance decision between real processes: this test process
// plays the first copy (or a later one), a helper process the other.

#include "TestLog.h"
#include "QtPrinters.h"
#include "Custom.h"
#include "SingleInstance.h"

#include <QLocalSocket>
#include <QWidget>
#include <QtTest>

#include <gtest/gtest.h>

class SingleInstanceTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        closeInstanceGuard();
        Custom::setLanguage(Custom::English);
    }
    // Starts the helper as a later copy and lets this process's event loop
    // answer it; returns its exit code, -1 when it did not end.
    int runSecondCopy(const QStringList& arguments = {})
    {
        QProcess helper;
        helper.start(QUORVEX_INSTANCE_HELPER, arguments);
        if (!helper.waitForStarted(10000))
            return -1;
        if (!QTest::qWaitFor([&] { return helper.state() == QProcess::NotRunning; }, 15000)) {
            helper.kill();
            helper.waitForFinished();
            return -1;
        }
        return helper.exitStatus() == QProcess::NormalExit ? helper.exitCode() : -1;
    }
    // One raw request; the server's one-line answer.
    QByteArray ask(const QByteArray& request)
    {
        QLocalSocket socket;
        socket.connectToServer(instanceSocketPath());
        if (!socket.waitForConnected(2000))
            return "no connection";
        socket.write(request);
        socket.flush();
        QByteArray reply;
        (void)QTest::qWaitFor([&] {
            reply += socket.readAll();
            return reply.contains('\n') || socket.state() == QLocalSocket::UnconnectedState;
        }, 6000);
        return reply.trimmed();
    }
    static void TearDownTestSuite() { closeInstanceGuard(); }
};

TEST_F(SingleInstanceTest, channelLivesInThePrivateRuntimeFolder)
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    ASSERT_TRUE(!runtime.isEmpty()) << "the test runs with a private XDG_RUNTIME_DIR";
    ASSERT_TRUE(instanceSocketPath().startsWith(runtime + '/'));
    ASSERT_TRUE(instanceLockPath().startsWith(runtime + '/'));
}

TEST_F(SingleInstanceTest, secondCopy_exitsZero_andRestoresMinimisedFirstWindow)
{
    ASSERT_TRUE(!isAlreadyRunning());
    QWidget other;
    other.setWindowTitle("Some other window");
    QWidget window;
    window.setWindowTitle("Quorvex");
    window.showMinimized();
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return other.isActiveWindow(); }));

    ASSERT_EQ(runSecondCopy(), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window.isMinimized(); }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isActiveWindow(); }));
    ASSERT_TRUE(window.isVisible());
}

TEST_F(SingleInstanceTest, chineseTitle_isSearchedBeforeEnglish)
{
    QWidget english;
    english.setWindowTitle("Quorvex");
    QWidget chinese;
    chinese.setWindowTitle(QStringLiteral("奎沃思"));
    ASSERT_EQ(findInstanceWindow(), &chinese);
    chinese.setWindowTitle("Quorvex V1");
    ASSERT_EQ(findInstanceWindow(), &english);
    english.setWindowTitle("Quorvex V1");
    ASSERT_EQ(findInstanceWindow(), static_cast<QWidget*>(nullptr));
}

TEST_F(SingleInstanceTest, secondCopyWithLanguage_switchesTheFirstCopy)
{
    ASSERT_TRUE(!isAlreadyRunning());
    Custom::setLanguage(Custom::Chinese);
    const struct { const char* argument; int language; const char* logged; } switches[] = {
        {"ENG", Custom::English, "Quorvex ENG"}, {"CH", Custom::Chinese, "Quorvex CN"}};
    for (const auto& to : switches) {
        SCOPED_TRACE(to.argument);
        const TestLog log;
        ASSERT_EQ(runSecondCopy({to.argument}), 0);
        ASSERT_EQ(Custom::language(), to.language);
        EXPECT_EQ(log.messages().count(to.logged), 1);
    }
    // Any other spelling only brings the window forward.
    ASSERT_EQ(runSecondCopy({"eng"}), 0);
    ASSERT_EQ(runSecondCopy({"ENG", "extra"}), 0);
    ASSERT_EQ(Custom::language(), int(Custom::English));
}

TEST_F(SingleInstanceTest, firstCopyEnded_nextStartIsFirstAgain)
{
    // Ended normally.
    ASSERT_TRUE(!isAlreadyRunning());
    closeInstanceGuard();
    ASSERT_EQ(runSecondCopy(), 3);

    // Killed: the lock dies with it and the socket file it left is replaced;
    // a later copy exits 0 even when the first shows no window.
    QProcess first;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QUORVEX_HELPER_HOLD", "1");
    first.setProcessEnvironment(environment);
    first.start(QUORVEX_INSTANCE_HELPER, QStringList());
    ASSERT_TRUE(first.waitForReadyRead(10000) && first.readAllStandardOutput().contains("first"))
        << "the helper did not become the first copy";
    ASSERT_TRUE(isAlreadyRunning());
    first.kill();
    ASSERT_TRUE(first.waitForFinished(10000));
    ASSERT_TRUE(QFile::exists(instanceSocketPath()));
    ASSERT_TRUE(!isAlreadyRunning());
    ASSERT_EQ(runSecondCopy(), 0);
}

TEST_F(SingleInstanceTest, hostileRequests_areRefused_andTheServerKeepsServing)
{
    ASSERT_TRUE(!isAlreadyRunning());
    Custom::setLanguage(Custom::Chinese);
    for (const QByteArray& request : {QByteArray("HELLO\n"), QByteArray("ACTIVATE de\n"), QByteArray("ACTIVATE ENG CH\n"),
                                      QByteArray(10000, 'A'), QByteArray("ACTIVATE\0ENG\n", 13)})
        EXPECT_EQ(ask(request), QByteArray("ERROR")) << request.left(20).constData();
    ASSERT_EQ(Custom::language(), int(Custom::Chinese));

    // A client that says nothing is dropped after a while.
    QLocalSocket silent;
    silent.connectToServer(instanceSocketPath());
    ASSERT_TRUE(silent.waitForConnected(2000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return silent.state() == QLocalSocket::UnconnectedState; }, 8000));

    ASSERT_EQ(ask("ACTIVATE\n"), QByteArray("OK"));
    ASSERT_EQ(runSecondCopy({"ENG"}), 0);
    ASSERT_EQ(Custom::language(), int(Custom::English));
}

