#include "SingleInstance.h"

#include "Language.h"
#include "X11Focus.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QPointer>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <QWidget>

#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

// Why not a ready-made single-application class: the ones packaged for Qt 5
// want to be the application object themselves (main builds a plain
// QApplication first, in a fixed order) and keep their lock and socket in
// the shared temporary folder, named per user only; ours live in the
// per-session runtime folder, which tests also redirect.

namespace {

// One request per connection, one line: "ACTIVATE", optionally followed by a
// space and a language code. The answer is one line, "OK" or "ERROR".
constexpr char kActivateVerb[] = "ACTIVATE";
constexpr int kMaxRequestLength = 64;
constexpr int kRequestTimeoutMs = 3000;
constexpr int kConnectAttempts = 20;
constexpr int kConnectPauseMs = 100;

QString runtimeFolder()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder;
}

QString instanceBaseName()
{
    return QStringLiteral("Quorvex-%1").arg(::getuid());
}

// An advisory lock on an open file: the kernel drops it when the process
// ends however it ends, so a killed copy never leaves a stale lock behind.
class InstanceLock final
{
public:
    explicit InstanceLock(const QString& path)
    {
        const QByteArray encoded = QFile::encodeName(path);
        m_fd = ::open(encoded.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (m_fd < 0)
            return;
        if (::flock(m_fd, LOCK_EX | LOCK_NB) == 0) {
            m_state = State::Held;
        } else {
            m_state = errno == EWOULDBLOCK ? State::HeldByOther : State::Unavailable;
            ::close(m_fd);
            m_fd = -1;
        }
    }
    ~InstanceLock()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Q_DISABLE_COPY(InstanceLock)

    enum class State { Unavailable, Held, HeldByOther };
    State state() const { return m_state; }

private:
    int m_fd = -1;
    State m_state = State::Unavailable;
};

bool isLanguageCode(const QByteArray& code)
{
    return code == kLanguageChinese || code == kLanguageEnglish;
}

// Carries out one request line; false when the line is not a request.
bool handleRequest(const QByteArray& line)
{
    const QList<QByteArray> words = line.split(' ');
    if (words.isEmpty() || words.size() > 2 || words.first() != kActivateVerb)
        return false;
    if (words.size() == 2) {
        if (!isLanguageCode(words.at(1)))
            return false;
        switchLanguageOnRequest(QString::fromLatin1(words.at(1)));
    }
    bringWindowToFront(findInstanceWindow());
    return true;
}

// Reads one request from one connection without blocking the GUI thread.
class RequestReader final : public QObject
{
public:
    explicit RequestReader(QLocalSocket* socket) : QObject(socket), m_pSocket(socket)
    {
        connect(socket, &QLocalSocket::readyRead, this, &RequestReader::onReadyRead);
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        m_deadline.setSingleShot(true);
        connect(&m_deadline, &QTimer::timeout, socket, &QLocalSocket::abort);
        connect(&m_deadline, &QTimer::timeout, socket, &QObject::deleteLater);
        m_deadline.start(kRequestTimeoutMs);
        onReadyRead();
    }

private:
    void onReadyRead()
    {
        if (m_bAnswered)
            return;
        m_buffer += m_pSocket->read(kMaxRequestLength + 1 - m_buffer.size());
        const int end = m_buffer.indexOf('\n');
        if (end < 0 && m_buffer.size() <= kMaxRequestLength)
            return;
        const bool bHandled = end >= 0 && handleRequest(m_buffer.left(end).trimmed());
        answer(bHandled ? "OK\n" : "ERROR\n");
    }

    void answer(const char* reply)
    {
        m_bAnswered = true;
        m_pSocket->write(reply);
        m_pSocket->disconnectFromServer();
    }

    QLocalSocket* const m_pSocket;
    QByteArray m_buffer;
    QTimer m_deadline;
    bool m_bAnswered = false;
};

class InstanceServer final : public QObject
{
public:
    InstanceServer()
    {
        m_server.setSocketOptions(QLocalServer::UserAccessOption);
        connect(&m_server, &QLocalServer::newConnection, this, &InstanceServer::onNewConnection);
    }
    Q_DISABLE_COPY(InstanceServer)

    bool listen(const QString& path)
    {
        // Only the lock holder gets here, so a socket file left by a killed
        // copy is stale and safe to replace.
        QLocalServer::removeServer(path);
        return m_server.listen(path);
    }

private:
    void onNewConnection()
    {
        while (QLocalSocket* socket = m_server.nextPendingConnection())
            new RequestReader(socket);
    }

    QLocalServer m_server;
};

struct FirstCopy
{
    std::unique_ptr<InstanceLock> lock;
    std::unique_ptr<InstanceServer> server;
};
std::unique_ptr<FirstCopy> g_firstCopy;

QByteArray requestFor(const QStringList& arguments)
{
    QByteArray request = kActivateVerb;
    const QString code = arguments.value(1);
    if (code == QLatin1String(kLanguageChinese) || code == QLatin1String(kLanguageEnglish))
        request += ' ' + code.toLatin1();
    return request + '\n';
}

// Hands the request to the first copy and waits, briefly, for its answer.
// The first copy may hold the lock a moment before it listens, so connecting
// is retried for up to two seconds.
bool askFirstCopy(const QByteArray& request)
{
    QLocalSocket socket;
    for (int attempt = 0; attempt < kConnectAttempts; ++attempt) {
        socket.connectToServer(instanceSocketPath());
        if (socket.waitForConnected(kConnectPauseMs))
            break;
        socket.abort();
        QThread::msleep(kConnectPauseMs);
    }
    if (socket.state() != QLocalSocket::ConnectedState)
        return false;
    socket.write(request);
    if (!socket.waitForBytesWritten(kRequestTimeoutMs))
        return false;
    QByteArray reply;
    QElapsedTimer clock;
    clock.start();
    while (!reply.contains('\n') && clock.elapsed() < kRequestTimeoutMs) {
        if (!socket.waitForReadyRead(kRequestTimeoutMs - static_cast<int>(clock.elapsed())))
            break;
        reply += socket.read(kMaxRequestLength);
    }
    return reply.startsWith("OK");
}

} // namespace

QString instanceLockPath()
{
    return runtimeFolder() + '/' + instanceBaseName() + ".lock";
}

QString instanceSocketPath()
{
    return runtimeFolder() + '/' + instanceBaseName() + ".socket";
}

bool isAlreadyRunning(const QStringList& arguments)
{
    auto lock = std::make_unique<InstanceLock>(instanceLockPath());
    if (lock->state() == InstanceLock::State::HeldByOther) {
        // Like the window search of the desktop this was first written for:
        // whether or not the first copy answers, this copy steps aside.
        if (!askFirstCopy(requestFor(arguments)))
            qInfo("Quorvex: another copy holds the instance lock but did not answer");
        return true;
    }
    // A lock that cannot be taken at all (unwritable runtime folder) lets
    // this copy run as the first one rather than not at all.
    auto firstCopy = std::make_unique<FirstCopy>();
    firstCopy->lock = std::move(lock);
    firstCopy->server = std::make_unique<InstanceServer>();
    if (!firstCopy->server->listen(instanceSocketPath()))
        qInfo("Quorvex: cannot listen on %s; later copies will not reach this one",
              qPrintable(instanceSocketPath()));
    g_firstCopy = std::move(firstCopy);
    return false;
}

void closeInstanceGuard()
{
    g_firstCopy.reset();
}

QWidget* findInstanceWindow()
{
    const QString titles[] = {QStringLiteral("奎沃思"), QStringLiteral("Quorvex")};
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QString& title : titles) {
        for (QWidget* window : windows) {
            if (window->isWindow() && window->windowTitle() == title)
                return window;
        }
    }
    return nullptr;
}

void bringWindowToFront(QWidget* window)
{
    if (!window)
        return;
    if (window->isMinimized())
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
    focusX11Window(window->winId());
}
