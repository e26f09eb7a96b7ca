// The single-instance decision between real processes: this test process
// plays the first copy (or a later one), a helper process the other.

#include "TestLog.h"
#include "QtPrinters.h"
#include "Custom.h"
#include "SingleInstance.h"

#include <QLocalSocket>
#include <QProcess>
#include <QWidget>
#include <QtTest>

#include <gtest/gtest.h>

#include <memory>

class SingleInstanceTest : public ::testing::Test {
protected:
    void SetUp() override;
    // Starts the helper as a later copy and lets this process's event loop
    // answer it; returns its exit code, -1 when it did not end.
    int runSecondCopy(const QStringList& arguments = {})
    {
        QProcess helper;
        helper.start(QStringLiteral(QUORVEX_INSTANCE_HELPER), arguments);
        if (!helper.waitForStarted(10000))
            return -1;
        if (!QTest::qWaitFor([&] { return helper.state() == QProcess::NotRunning; }, 15000)) {
            helper.kill();
            helper.waitForFinished();
            return -1;
        }
        return helper.exitStatus() == QProcess::NormalExit ? helper.exitCode() : -1;
    }
    std::unique_ptr<QProcess> startHoldingFirstCopy()
    {
        auto helper = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QUORVEX_HELPER_HOLD", "1");
        helper->setProcessEnvironment(environment);
        helper->start(QStringLiteral(QUORVEX_INSTANCE_HELPER), QStringList());
        if (!helper->waitForReadyRead(10000) || !helper->readAllStandardOutput().contains("first"))
            return nullptr;
        return helper;
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

void SingleInstanceTest::SetUp()
{
    closeInstanceGuard();
    Custom::setLanguage(Custom::English);
}

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
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(other.isActiveWindow()); }));

    ASSERT_EQ(runSecondCopy(), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(!window.isMinimized()); }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(window.isActiveWindow()); }));
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
    {
        const TestLog log;
        ASSERT_EQ(runSecondCopy({"ENG"}), 0);
        ASSERT_EQ(Custom::language(), int(Custom::English));
        EXPECT_EQ(log.messages().count("Quorvex ENG"), 1);
    }
    {
        const TestLog log;
        ASSERT_EQ(runSecondCopy({"CH"}), 0);
        ASSERT_EQ(Custom::language(), int(Custom::Chinese));
        EXPECT_EQ(log.messages().count("Quorvex CN"), 1);
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
    std::unique_ptr<QProcess> first = startHoldingFirstCopy();
    ASSERT_TRUE(first) << "the helper did not become the first copy";
    ASSERT_TRUE(isAlreadyRunning());
    first->kill();
    ASSERT_TRUE(first->waitForFinished(10000));
    ASSERT_TRUE(QFile::exists(instanceSocketPath()));
    ASSERT_TRUE(!isAlreadyRunning());
    ASSERT_EQ(runSecondCopy(), 0);
}

TEST_F(SingleInstanceTest, hostileRequests_areRefused_andTheServerKeepsServing)
{
    ASSERT_TRUE(!isAlreadyRunning());
    Custom::setLanguage(Custom::Chinese);
    ASSERT_EQ(ask("HELLO\n"), QByteArray("ERROR"));
    ASSERT_EQ(ask("ACTIVATE de\n"), QByteArray("ERROR"));
    ASSERT_EQ(ask("ACTIVATE ENG CH\n"), QByteArray("ERROR"));
    ASSERT_EQ(ask(QByteArray(10000, 'A')), QByteArray("ERROR"));
    ASSERT_EQ(ask(QByteArray("ACTIVATE\0ENG\n", 13)), QByteArray("ERROR"));
    ASSERT_EQ(Custom::language(), int(Custom::Chinese));

    // A client that says nothing is dropped after a while.
    QLocalSocket silent;
    silent.connectToServer(instanceSocketPath());
    ASSERT_TRUE(silent.waitForConnected(2000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return (silent.state()) == (QLocalSocket::UnconnectedState); }, 8000)) << "waited for silent.state() == QLocalSocket::UnconnectedState";

    ASSERT_EQ(ask("ACTIVATE\n"), QByteArray("OK"));
    ASSERT_EQ(runSecondCopy({"ENG"}), 0);
    ASSERT_EQ(Custom::language(), int(Custom::English));
}

