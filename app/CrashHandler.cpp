#include "CrashHandler.h"

#include "XQInterface.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <ctime>

#include <execinfo.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

// Everything below the Qt functions runs inside a signal handler: only
// async-signal-safe calls (open, write, close, read, clock_gettime, getpid,
// syscall, prctl, sigaction, raise) and fixed buffers prepared at start-up.

namespace {

constexpr int kFatalSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
constexpr int kMaxFrames = 128;
constexpr int kTimestampLength = 14; // yyyyMMddhhmmss

char g_reportFolder[PATH_MAX] = {};
char g_versionText[64] = {};
bool g_reportFolderUsable = false;
std::atomic<long> g_utcOffsetSeconds{0};
std::atomic_flag g_reportInProgress = ATOMIC_FLAG_INIT;

// A frame-overflow on the GUI thread leaves no stack for the handler; this
// one gives it room.
alignas(16) char g_alternateStack[64 * 1024];

class SignalSafeWriter final
{
public:
    explicit SignalSafeWriter(int fd) : m_fd(fd) {}

    void text(const char* text) const
    {
        if (m_fd < 0 || !text)
            return;
        size_t remaining = std::strlen(text);
        while (remaining > 0) {
            const ssize_t written = ::write(m_fd, text, remaining);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                return;
            text += written;
            remaining -= static_cast<size_t>(written);
        }
    }

    void number(unsigned long long value, unsigned base = 10, int minDigits = 1) const
    {
        char digits[32];
        int count = 0;
        do {
            const unsigned digit = static_cast<unsigned>(value % base);
            digits[count++] = static_cast<char>(digit < 10 ? '0' + digit : 'a' + digit - 10);
            value /= base;
        } while (value != 0 && count < 30);
        while (count < minDigits && count < 30)
            digits[count++] = '0';
        char out[33];
        int length = 0;
        if (base == 16) {
            out[length++] = '0';
            out[length++] = 'x';
        }
        while (count > 0)
            out[length++] = digits[--count];
        out[length] = '\0';
        text(out);
    }

    void line(const char* label, const char* value) const
    {
        text(label);
        text(value);
        text("\n");
    }

private:
    const int m_fd;
};

// Civil date from days since 1970-01-01 (proleptic Gregorian), pure arithmetic.
void civilFromDays(long long days, int& year, unsigned& month, unsigned& day)
{
    days += 719468;
    const long long era = (days >= 0 ? days : days - 146096) / 146097;
    const unsigned dayOfEra = static_cast<unsigned>(days - era * 146097);
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned shiftedMonth = (5 * dayOfYear + 2) / 153;
    day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
    month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    year = static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
}

void putDigits(char* out, long long value, int width)
{
    for (int i = width - 1; i >= 0; --i) {
        out[i] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
}

// "yyyyMMddhhmmss" of a local time given as seconds since the epoch.
void formatTimestamp(long long localSeconds, char (&out)[kTimestampLength + 1])
{
    long long days = localSeconds / 86400;
    long long secondOfDay = localSeconds % 86400;
    if (secondOfDay < 0) {
        secondOfDay += 86400;
        --days;
    }
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    civilFromDays(days, year, month, day);
    putDigits(out, year < 0 ? 0 : year, 4);
    putDigits(out + 4, month, 2);
    putDigits(out + 6, day, 2);
    putDigits(out + 8, secondOfDay / 3600, 2);
    putDigits(out + 10, secondOfDay / 60 % 60, 2);
    putDigits(out + 12, secondOfDay % 60, 2);
    out[kTimestampLength] = '\0';
}

const char* signalName(int signalNumber)
{
    switch (signalNumber) {
    case SIGSEGV: return "SIGSEGV (invalid memory access)";
    case SIGABRT: return "SIGABRT (abort)";
    case SIGBUS: return "SIGBUS (bus error)";
    case SIGFPE: return "SIGFPE (arithmetic error)";
    case SIGILL: return "SIGILL (illegal instruction)";
    default: return "fatal signal";
    }
}

// Appends to a fixed buffer, truncating; returns false when it did not fit.
bool appendText(char* buffer, size_t size, const char* text)
{
    const size_t used = std::strlen(buffer);
    const size_t length = std::strlen(text);
    if (used + length + 1 > size)
        return false;
    std::memcpy(buffer + used, text, length + 1);
    return true;
}

int openReportFile(const char* timestamp, char (&path)[PATH_MAX])
{
    if (!g_reportFolderUsable)
        return -1;
    path[0] = '\0';
    appendText(path, sizeof path, g_reportFolder);
    appendText(path, sizeof path, "/Quorvex_");
    appendText(path, sizeof path, timestamp);
    if (!appendText(path, sizeof path, ".DMP"))
        return -1;
    int fd = ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd >= 0 || errno != EEXIST)
        return fd;

    // Another report of the same second: keep both.
    char pid[24] = {};
    putDigits(pid, ::getpid(), 10);
    path[std::strlen(path) - 4] = '\0';
    appendText(path, sizeof path, "_");
    appendText(path, sizeof path, pid);
    if (!appendText(path, sizeof path, ".DMP"))
        return -1;
    fd = ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    return fd;
}

void copyMemoryMap(const SignalSafeWriter& out)
{
    const int maps = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (maps < 0)
        return;
    char chunk[4096];
    size_t total = 0;
    for (;;) {
        const ssize_t got = ::read(maps, chunk, sizeof chunk - 1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0 || total > 1024 * 1024)
            break;
        chunk[got] = '\0';
        total += static_cast<size_t>(got);
        out.text(chunk);
    }
    ::close(maps);
}

void writeReport(int fd, int signalNumber, const siginfo_t* info, const char* timestamp,
                 void* const* frames, int frameCount)
{
    const SignalSafeWriter out(fd);
    out.text("Quorvex crash report\n");
    out.line("version: ", g_versionText);
    out.text("signal: ");
    out.number(static_cast<unsigned>(signalNumber));
    out.text(" ");
    out.text(signalName(signalNumber));
    out.text("\n");
    if (info) {
        out.text("signal code: ");
        out.number(static_cast<unsigned>(info->si_code));
        out.text("\nfault address: ");
        out.number(reinterpret_cast<unsigned long long>(info->si_addr), 16);
        out.text("\n");
    }
    out.text("process: ");
    out.number(static_cast<unsigned long long>(::getpid()));
    out.text("\nthread: ");
    out.number(static_cast<unsigned long long>(::syscall(SYS_gettid)));
    char threadName[17] = {};
    if (::prctl(PR_GET_NAME, threadName, 0, 0, 0) == 0) {
        out.text(" (");
        out.text(threadName);
        out.text(")");
    }
    out.line("\ntime: ", timestamp);
    out.text("backtrace:\n");
    if (fd >= 0)
        backtrace_symbols_fd(frames, frameCount, fd);
    out.text("memory map:\n");
    copyMemoryMap(out);
}

void onFatalSignal(int signalNumber, siginfo_t* info, void* /*context*/)
{
    // From here on any further fatal signal, nested or on another thread,
    // takes the default action instead of re-entering.
    struct sigaction defaultAction {};
    defaultAction.sa_handler = SIG_DFL;
    sigemptyset(&defaultAction.sa_mask);
    for (const int each : kFatalSignals)
        ::sigaction(each, &defaultAction, nullptr);

    if (!g_reportInProgress.test_and_set()) {
        const int savedErrno = errno;
        void* frames[kMaxFrames];
        const int frameCount = backtrace(frames, kMaxFrames);

        timespec now {};
        ::clock_gettime(CLOCK_REALTIME, &now);
        char timestamp[kTimestampLength + 1];
        formatTimestamp(static_cast<long long>(now.tv_sec) + g_utcOffsetSeconds.load(), timestamp);

        char path[PATH_MAX];
        const int fd = openReportFile(timestamp, path);
        writeReport(fd, signalNumber, info, timestamp, frames, frameCount);
        if (fd >= 0)
            ::close(fd);

        const SignalSafeWriter err(STDERR_FILENO);
        err.text("Quorvex: ");
        err.text(signalName(signalNumber));
        if (fd >= 0) {
            err.text(", crash report written to ");
            err.text(path);
        } else {
            err.text(", no crash report could be written");
        }
        err.text("\n");
        errno = savedErrno;
    }
    // The default action is back in place: a fault re-executes and ends the
    // process, a sent signal is delivered again once the handler returns.
    ::raise(signalNumber);
}

} // namespace

QString crashDumpFolder()
{
    return XQInterface::userDataPath() + "/Dump/Quorvex_Dump";
}

QString crashReportFileName(long long localSecondsSinceEpoch)
{
    char timestamp[kTimestampLength + 1];
    formatTimestamp(localSecondsSinceEpoch, timestamp);
    return QStringLiteral("Quorvex_%1.DMP").arg(QString::fromLatin1(timestamp));
}

bool installCrashHandler()
{
    const QString folder = crashDumpFolder();
    const bool bFolderReady = QDir().mkpath(folder);
    const QByteArray encoded = QFile::encodeName(folder);
    g_reportFolderUsable = bFolderReady && encoded.size() + 64 < static_cast<int>(sizeof g_reportFolder);
    if (g_reportFolderUsable)
        std::memcpy(g_reportFolder, encoded.constData(), static_cast<size_t>(encoded.size()) + 1);

    const QByteArray version = XQInterface::curExeVersion().toUtf8().left(sizeof g_versionText - 1);
    std::memcpy(g_versionText, version.constData(), static_cast<size_t>(version.size()) + 1);

    // The handler cannot ask the time-zone database; the offset of start-up
    // is close enough for naming a report.
    g_utcOffsetSeconds.store(QDateTime::currentDateTime().offsetFromUtc());

    // The first backtrace() loads the unwinder; do it here, not in the handler.
    void* warmUp[1];
    backtrace(warmUp, 1);

    stack_t alternate {};
    alternate.ss_sp = g_alternateStack;
    alternate.ss_size = sizeof g_alternateStack;
    ::sigaltstack(&alternate, nullptr);

    struct sigaction action {};
    action.sa_sigaction = onFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (const int each : kFatalSignals)
        ::sigaction(each, &action, nullptr);
    return g_reportFolderUsable;
}
