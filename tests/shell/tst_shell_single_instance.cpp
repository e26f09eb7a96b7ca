// The single-instance decision between real processes: this test process
// plays the first copy (or a later one), a helper process the other.

#include "Custom.h"
#include "SingleInstance.h"

#include <QLocalSocket>
#include <QProcess>
#include <QWidget>
#include <QtTest>

#include <memory>

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private:
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

private slots:
    void init()
    {
        closeInstanceGuard();
        Custom::setLanguage(Custom::English);
    }

    void cleanupTestCase() { closeInstanceGuard(); }

    void channelLivesInThePrivateRuntimeFolder()
    {
        const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
        QVERIFY2(!runtime.isEmpty(), "the test runs with a private XDG_RUNTIME_DIR");
        QVERIFY(instanceSocketPath().startsWith(runtime + '/'));
        QVERIFY(instanceLockPath().startsWith(runtime + '/'));
    }

    void secondCopy_exitsZero_andRestoresMinimisedFirstWindow()
    {
        QVERIFY(!isAlreadyRunning());
        QWidget other;
        other.setWindowTitle("Some other window");
        QWidget window;
        window.setWindowTitle("Quorvex");
        window.showMinimized();
        other.show();
        other.activateWindow();
        QTRY_VERIFY(other.isActiveWindow());

        QCOMPARE(runSecondCopy(), 0);
        QTRY_VERIFY(!window.isMinimized());
        QTRY_VERIFY(window.isActiveWindow());
        QVERIFY(window.isVisible());
    }

    void chineseTitle_isSearchedBeforeEnglish()
    {
        QWidget english;
        english.setWindowTitle("Quorvex");
        QWidget chinese;
        chinese.setWindowTitle(QStringLiteral("奎沃思"));
        QCOMPARE(findInstanceWindow(), &chinese);
        chinese.setWindowTitle("Quorvex V1");
        QCOMPARE(findInstanceWindow(), &english);
        english.setWindowTitle("Quorvex V1");
        QCOMPARE(findInstanceWindow(), static_cast<QWidget*>(nullptr));
    }

    void secondCopyWithLanguage_switchesTheFirstCopy()
    {
        QVERIFY(!isAlreadyRunning());
        Custom::setLanguage(Custom::Chinese);
        QTest::ignoreMessage(QtInfoMsg, "Quorvex ENG");
        QCOMPARE(runSecondCopy({"ENG"}), 0);
        QCOMPARE(Custom::language(), int(Custom::English));

        QTest::ignoreMessage(QtInfoMsg, "Quorvex CN");
        QCOMPARE(runSecondCopy({"CH"}), 0);
        QCOMPARE(Custom::language(), int(Custom::Chinese));

        // Any other spelling only brings the window forward.
        QCOMPARE(runSecondCopy({"eng"}), 0);
        QCOMPARE(runSecondCopy({"ENG", "extra"}), 0);
        QCOMPARE(Custom::language(), int(Custom::English));
    }

    void firstCopyEnded_nextStartIsFirstAgain()
    {
        // Ended normally.
        QVERIFY(!isAlreadyRunning());
        closeInstanceGuard();
        QCOMPARE(runSecondCopy(), 3);

        // Killed: the lock dies with it and the socket file it left is replaced;
        // a later copy exits 0 even when the first shows no window.
        std::unique_ptr<QProcess> first = startHoldingFirstCopy();
        QVERIFY2(first, "the helper did not become the first copy");
        QVERIFY(isAlreadyRunning());
        first->kill();
        QVERIFY(first->waitForFinished(10000));
        QVERIFY(QFile::exists(instanceSocketPath()));
        QVERIFY(!isAlreadyRunning());
        QCOMPARE(runSecondCopy(), 0);
    }

    void hostileRequests_areRefused_andTheServerKeepsServing()
    {
        QVERIFY(!isAlreadyRunning());
        Custom::setLanguage(Custom::Chinese);
        QCOMPARE(ask("HELLO\n"), QByteArray("ERROR"));
        QCOMPARE(ask("ACTIVATE de\n"), QByteArray("ERROR"));
        QCOMPARE(ask("ACTIVATE ENG CH\n"), QByteArray("ERROR"));
        QCOMPARE(ask(QByteArray(10000, 'A')), QByteArray("ERROR"));
        QCOMPARE(ask(QByteArray("ACTIVATE\0ENG\n", 13)), QByteArray("ERROR"));
        QCOMPARE(Custom::language(), int(Custom::Chinese));

        // A client that says nothing is dropped after a while.
        QLocalSocket silent;
        silent.connectToServer(instanceSocketPath());
        QVERIFY(silent.waitForConnected(2000));
        QTRY_COMPARE_WITH_TIMEOUT(silent.state(), QLocalSocket::UnconnectedState, 8000);

        QCOMPARE(ask("ACTIVATE\n"), QByteArray("OK"));
        QCOMPARE(runSecondCopy({"ENG"}), 0);
        QCOMPARE(Custom::language(), int(Custom::English));
    }
};

QTEST_MAIN(SingleInstanceTest)
#include "tst_shell_single_instance.moc"
