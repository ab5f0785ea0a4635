// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "obexsession.h"
#include "seriallink.h"
#include "settings/serialport.h"

#include <QObject>
#include <QString>

#include <atomic>

// "COM%p" becomes the port's name; any other "%p" the port number on Windows,
// the name elsewhere.
QString FillPortPlaceholder(const QString &text, const SerialPort &port);

// The name a document is sent under: its file name without folder and
// extension, plus ".hid"; the localised "Unnamed.hid" for a document never saved
// (documentPath "").
QString RemoteProfileName(const QString &documentPath);

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

enum class UploadResult { Succeeded, Failed, Aborted };

struct UploadRequest
{
    SerialPort Port;
    qint32 Speed = 0; // bit/s
    QString RemoteName;
    // The finished profile file to send; "" when it could not be written.
    QString ProfilePath;
    // Whether the upload owns that file (a copy written for it): it then
    // deletes the file when it ends, on every path.
    bool OwnsProfile = false;
    int ReadTimeoutMs = DefaultReadTimeoutMs;
    // The pause between opening the port and the first command.
    int OpenPauseMs = 1000;

    // Whether a port and a speed are configured. Without them an upload fails
    // at once, so there is no need to write a file for it.
    [[nodiscard]] bool HasConnection() const;
};

// One upload of a profile to the phone: open the port, switch the phone to
// OBEX, connect, put, disconnect; the port is closed and an owned profile file
// deleted however it ends. A name too long to send is refused before the port
// is opened. Run() blocks; a window runs it on a worker thread
// (the signals then arrive queued on the window's thread) and calls Abort()
// from its own. Run it once per object.
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

    // The whole-number percentage of a transfer, 100 for an empty one.
    static int Percent(qint64 bytesSent, qint64 total);
    // "42%  " followed by the localised window caption.
    static QString ProgressCaption(int percent);

signals:
    // A new status line.
    void StatusChanged(const QString &text);
    // After each acknowledged piece: progress and the status line that says it.
    void ProgressChanged(qint64 bytesSent, qint64 total, qint32 rate, const QString &text);
    void Finished(UploadResult result);

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
