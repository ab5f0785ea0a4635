// SPDX-License-Identifier: GPL-3.0-or-later
#include "uploadsignalguard.h"

#include "seriallink.h"
#include "uploadjob.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>
#endif

namespace {

#ifdef Q_OS_UNIX
constexpr std::array<int, 3> WatchedSignals = {SIGINT, SIGTERM, SIGHUP};
#else
constexpr std::array<int, 2> WatchedSignals = {SIGINT, SIGTERM};
#endif

// Shared with the handlers, so lock-free atomics only.
std::atomic<UploadJob *> g_job{nullptr};
std::atomic<int> g_received{0};
std::atomic<void (*)()> g_cleanUp{nullptr};
static_assert(std::atomic<UploadJob *>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

#ifdef Q_OS_UNIX
std::atomic<int> g_wakeUpWrite{-1};
std::array<struct sigaction, WatchedSignals.size()> g_previous{};
std::array<bool, WatchedSignals.size()> g_watched{};
struct sigaction g_previousAlarm
{};
#else
std::array<void (*)(int), WatchedSignals.size()> g_previous{};
#endif

[[noreturn]] void EndAtOnce(int signalNumber)
{
    ReleasePortsFromSignalHandler();
    if (void (*cleanUp)() = g_cleanUp.load())
        cleanUp();
    UploadSignalGuard::EndAsSignalled(signalNumber);
}

extern "C" void AbortUpload(int signalNumber)
{
    int none = 0;
    if (!g_received.compare_exchange_strong(none, signalNumber))
        EndAtOnce(signalNumber);
    if (UploadJob *job = g_job.load())
        job->AbortFromSignalHandler();
#ifdef Q_OS_UNIX
    const int savedErrno = errno;
    ::alarm(UploadSignalGuard::EndAnywaySeconds);
    const char wakeUp = 1;
    // A full pipe already holds a wake-up.
    [[maybe_unused]] const ssize_t written = ::write(g_wakeUpWrite.load(), &wakeUp, 1);
    errno = savedErrno;
#else
    std::signal(signalNumber, AbortUpload); // delivery resets the handler here
#endif
}

#ifdef Q_OS_UNIX
extern "C" void EndAnyway(int)
{
    EndAtOnce(g_received.load());
}
#endif

} // namespace

UploadSignalGuard::UploadSignalGuard(UploadJob &job, void (*cleanUp)(), QObject *parent) : QObject(parent), m_job(job)
{
    g_received.store(0);
    g_cleanUp.store(cleanUp);
    g_job.store(&job);
#ifdef Q_OS_UNIX
    int wakeUp[2] = {-1, -1};
    if (::pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) == 0) {
        m_wakeUpRead = wakeUp[0];
        g_wakeUpWrite.store(wakeUp[1]);
        m_notifier = std::make_unique<QSocketNotifier>(m_wakeUpRead, QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, &UploadSignalGuard::TakeWakeUp);
    }
    struct sigaction handler
    {};
    handler.sa_handler = AbortUpload;
    sigemptyset(&handler.sa_mask);
    // One handler at a time: a signal during another's handler waits for it.
    for (const int signalNumber : WatchedSignals)
        sigaddset(&handler.sa_mask, signalNumber);
    sigaddset(&handler.sa_mask, SIGALRM);
    handler.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < WatchedSignals.size(); ++i) {
        ::sigaction(WatchedSignals[i], nullptr, &g_previous[i]);
        g_watched[i] = (g_previous[i].sa_flags & SA_SIGINFO) || g_previous[i].sa_handler != SIG_IGN;
        if (g_watched[i])
            ::sigaction(WatchedSignals[i], &handler, nullptr);
    }
    struct sigaction endAnyway = handler;
    endAnyway.sa_handler = EndAnyway;
    ::sigaction(SIGALRM, &endAnyway, &g_previousAlarm);
#else
    for (std::size_t i = 0; i < WatchedSignals.size(); ++i) {
        g_previous[i] = std::signal(WatchedSignals[i], AbortUpload);
        if (g_previous[i] == SIG_IGN)
            std::signal(WatchedSignals[i], SIG_IGN);
    }
#endif
}

UploadSignalGuard::~UploadSignalGuard()
{
#ifdef Q_OS_UNIX
    ::alarm(0);
    ::sigaction(SIGALRM, &g_previousAlarm, nullptr);
    for (std::size_t i = 0; i < WatchedSignals.size(); ++i) {
        if (g_watched[i])
            ::sigaction(WatchedSignals[i], &g_previous[i], nullptr);
    }
    m_notifier.reset();
    if (const int wakeUpWrite = g_wakeUpWrite.exchange(-1); wakeUpWrite >= 0)
        ::close(wakeUpWrite);
    if (m_wakeUpRead >= 0)
        ::close(m_wakeUpRead);
#else
    for (std::size_t i = 0; i < WatchedSignals.size(); ++i)
        std::signal(WatchedSignals[i], g_previous[i] == SIG_ERR ? SIG_DFL : g_previous[i]);
#endif
    g_job.store(nullptr);
    g_cleanUp.store(nullptr);
}

int UploadSignalGuard::Received() const
{
    return g_received.load();
}

void UploadSignalGuard::TakeWakeUp()
{
#ifdef Q_OS_UNIX
    char wakeUps[16];
    while (::read(m_wakeUpRead, wakeUps, sizeof wakeUps) > 0) {}
#endif
    // What the handler could not do, such as asking another process to stop.
    m_job.Abort();
    emit Arrived(g_received.load());
}

void UploadSignalGuard::EndAsSignalled(int signalNumber)
{
#ifdef Q_OS_UNIX
    struct sigaction usual
    {};
    usual.sa_handler = SIG_DFL;
    sigemptyset(&usual.sa_mask);
    ::sigaction(signalNumber, &usual, nullptr);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signalNumber);
    ::pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
#else
    std::signal(signalNumber, SIG_DFL);
#endif
    std::raise(signalNumber);
    std::_Exit(128 + signalNumber);
}
