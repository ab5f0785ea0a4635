// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "obexsession.h"
#include "seriallink.h"
#include "uploadjob.h"

#include <QObject>
#include <QString>

#include <atomic>

// "COM%p" becomes the port's name; any other "%p" the port number on Windows,
// the name elsewhere.
QString FillPortPlaceholder(const QString &text, const SerialPort &port);

// What ended an upload in failure.
enum class UploadError {
    None,
    PortNotSet, // no port or no speed configured
    FileNotWritten, // the profile copy could not be made or read
    NameTooLong, // the remote name does not fit in the first packet
    PortNotOpened,
    PortInUse, // held by another program, or not ours to open
    PortHeld, // a running program has the port open
    PortLeftLocked, // a program that ended without closing the port left it locked
    PhoneSilent, // no answer to the AT commands
    ObexNotStarted, // an answer without CONNECT
    ObexNotConnected, // the OBEX Connect was refused or not answered
    PutFailed,
};

// The user's message for an error, in the active language; holder names the
// program for PortHeld.
QString UploadErrorText(UploadError error, const SerialPort &port, const PortHolder &holder = {});

// One upload of a profile over the serial line: open the port, switch the
// phone to OBEX, connect, put, disconnect; the port is closed and an owned
// profile file deleted however it ends. A name too long to send is refused
// before the port is opened. Run() blocks and reports on the thread that runs
// it (SerialUploadJob runs it on a thread of its own); Abort() may come from
// any thread. Run it once per object.
class ProfileUpload : public QObject
{
    Q_OBJECT

public:
    explicit ProfileUpload(UploadRequest request, QObject *parent = nullptr);
    ~ProfileUpload() override;

    UploadResult Run();
    // Cancels the upload at its next step or piece. Safe from any thread and
    // from a signal handler.
    void Abort();
    bool IsAborted() const { return m_abort.load(); }

    UploadError Error() const { return m_error; }
    // The message for Error(), "" when there is none to show (success, abort).
    QString ErrorText() const;
    qint64 TotalSize() const { return m_totalSize; }

signals:
    // A new status line.
    void StatusChanged(const QString &text);
    // After each acknowledged piece: progress and the status line that says it.
    void ProgressChanged(qint64 bytesSent, qint64 total, qint32 rate, const QString &text);

private:
    UploadResult Transfer();
    bool Fail(UploadError error);
    // The sending status line for the bytes sent so far and the rate.
    QString SendingText(qint64 bytesSent, qint32 rate) const;
    bool Pause();
    void Status(const QString &text);

    UploadRequest m_request;
    SerialLink m_link;
    cOBEXObject m_session;
    std::atomic<bool> m_abort{false};
    UploadError m_error = UploadError::None;
    qint64 m_totalSize = 0;
    QString m_sendingText;
};
