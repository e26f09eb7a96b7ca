#include "StopSignals.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace cli {

namespace {

// The handler may only write to a pipe; the read end is watched by Qt.
int g_pipe[2] = {-1, -1};

void OnSignal(int nSignal)
{
    const int savedErrno = errno;
    const unsigned char number = static_cast<unsigned char>(nSignal);
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &number, 1);
    errno = savedErrno;
}

void SetHandler(void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

} // namespace

StopSignals::StopSignals(QObject* parent)
    : QObject(parent)
{
    if (g_pipe[0] < 0 && ::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &StopSignals::onReadable);
    SetHandler(&OnSignal);
}

StopSignals::~StopSignals()
{
    SetHandler(SIG_DFL);
}

void StopSignals::onReadable()
{
    unsigned char number = 0;
    while (::read(g_pipe[0], &number, 1) == 1)
        emit requested(number);
}

} // namespace cli
