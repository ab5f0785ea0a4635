// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;
class UploadJob;

// While a guard lives, SIGINT, SIGTERM and SIGHUP abort the upload instead of
// ending the program at once, so the port is closed (a port left open in
// exclusive mode refuses the next program) and the copy deleted: the handler
// calls the job's AbortFromSignalHandler, and once the guard's thread is back
// in its event loop, the job's Abort. When the job has finished, the owner
// ends the program as the signal would have (EndAsSignalled). A second
// signal, or an upload still running EndAnywaySeconds after the first, ends
// the program at once all the same: every open port is taken out of exclusive
// mode, cleanUp runs (it must be async-signal-safe, such as
// DeleteTempFilesFromSignalHandler) and the signal takes its usual course. A
// signal the program ignores stays ignored.
//
// One guard at a time, made on the job's thread, which runs an event loop; it
// lives from before Start() until the job has finished, and never longer than
// the job. On Windows only SIGINT and SIGTERM are watched, without the time
// limit, and only the handler aborts.
class UploadSignalGuard : public QObject
{
    Q_OBJECT

public:
    static constexpr unsigned EndAnywaySeconds = 3;

    UploadSignalGuard(UploadJob &job, void (*cleanUp)(), QObject *parent = nullptr);
    ~UploadSignalGuard() override;
    UploadSignalGuard(const UploadSignalGuard &) = delete;
    UploadSignalGuard &operator=(const UploadSignalGuard &) = delete;

    // The first signal that arrived while this guard lived; 0 while none did.
    int Received() const;

    // Ends the program as the signal ends it when nothing handles it; when the
    // signal would not end it, the exit status is 128 plus its number.
    [[noreturn]] static void EndAsSignalled(int signalNumber);

signals:
    // The first signal, through the event loop of the guard's thread, after
    // the job was told to abort.
    void Arrived(int signalNumber);

private:
    void TakeWakeUp();

    UploadJob &m_job;
    int m_wakeUpRead = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
