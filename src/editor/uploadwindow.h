// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "phone/uploadjob.h"
#include "transport/uploadjobs.h"

#include <QDialog>
#include <QString>

#include <functional>
#include <memory>

class EditorDialogs;
class QLabel;
class QProgressBar;
class QPushButton;
class UploadSignalGuard;

// The window that sends the open profile to the phone: one status line, a
// progress bar with the percentage also in the caption, Abort and OK. The
// transfer starts as soon as the window is shown; its job never blocks this
// thread, so the window keeps painting and Abort can be pressed at any time.
//
// Abort, Escape and closing the window by its frame all abort the transfer;
// it then ends after the current packet and the window closes without a
// message. A failure ends with one message box, after which the window closes.
// After a success the window stays open with the success line until OK. The
// window does not close before the job has finished; destroying it ends the
// job first.
//
// While the transfer runs, SIGINT, SIGTERM and SIGHUP end it as Abort does (the
// port closed, the copy deleted); EndedBySignal() then tells the owner to end
// the program as that signal would have.
class UploadWindow : public QDialog
{
    Q_OBJECT

public:
    // writeProfileCopy writes the profile into a new temporary file and returns
    // its path, or "" on failure. It is called on the window's own thread when
    // the transfer starts (so it may use the document and raise messages), and
    // only when the request has a connection; the copy is sent as request's
    // profile and deleted at the end, however the transfer ends. makeJob makes
    // the job that carries it. Error messages go through dialogs.
    UploadWindow(UploadRequest request, std::function<QString()> writeProfileCopy, EditorDialogs &dialogs,
                 QWidget *parent = nullptr, UploadJobMaker makeJob = MakeUploadJob);
    ~UploadWindow() override;

    bool IsRunning() const { return m_running; }
    // How the transfer ended; meaningful once IsRunning() turned false.
    UploadResult Result() const { return m_result; }
    // The signal that ended the transfer, 0 when none did.
    int EndedBySignal() const { return m_endedBySignal; }

    QLabel *StatusLabel() const { return m_status; }
    QProgressBar *Progress() const { return m_progress; }
    QPushButton *AbortButton() const { return m_abortButton; }
    QPushButton *OkButton() const { return m_okButton; }

    // While the transfer runs, closing the window in any way aborts it instead.
    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void StartTransfer();
    void AbortTransfer();
    // A status text, the window grown when it takes more lines than there is room for.
    void ShowStatus(const QString &text);
    void ShowProgress(qint64 bytesSent, qint64 total, qint32 rate, const QString &text);
    void TransferEnded(UploadResult result);

    EditorDialogs &m_dialogs;
    UploadRequest m_request;
    std::function<QString()> m_writeProfileCopy;
    UploadJobMaker m_makeJob;
    // Made when the transfer starts, with the finished copy; the guard goes first.
    std::unique_ptr<UploadJob> m_job;
    std::unique_ptr<UploadSignalGuard> m_signals;
    UploadResult m_result = UploadResult::Failed;
    bool m_started = false;
    bool m_running = false;
    bool m_abortRequested = false;
    int m_endedBySignal = 0;

    QLabel *m_status = nullptr;
    QProgressBar *m_progress = nullptr;
    QPushButton *m_abortButton = nullptr;
    QPushButton *m_okButton = nullptr;
};
