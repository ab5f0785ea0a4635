// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "obexsession.h"
#include "seriallink.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <functional>

// The configured serial port. 0 or empty means "not configured".
struct PortSettings
{
    int ComPort = 0; // Windows: the number n of COMn
    QString PortName; // elsewhere: the device, e.g. /dev/rfcomm0
    qint32 Speed = 0; // bit/s
};

// "COM3" on Windows, the device name elsewhere; "" when not configured.
QString SerialPortName(const PortSettings &port);
bool IsPortConfigured(const PortSettings &port);
// "COM%p" becomes the port's name; any other "%p" the port number on Windows,
// the name elsewhere.
QString FillPortPlaceholder(QString text, const PortSettings &port);

// The name a document is sent under: its file name without folder and
// extension, plus ".hid"; the localised "Unnamed.hid" for a document never saved
// (documentPath "").
QString RemoteProfileName(const QString &documentPath);

// What ended an upload in failure.
enum class UploadError {
    None,
    PortNotSet, // no port or no speed configured
    FileNotWritten, // the profile copy could not be made or read
    PortNotOpened,
    PortInUse, // held by another program, or not ours to open
    PhoneSilent, // no answer to the AT commands
    ObexNotStarted, // an answer without CONNECT
    ObexNotConnected, // the OBEX Connect was refused or not answered
    PutFailed,
};

// The user's message for an error, in the active language.
QString UploadErrorText(UploadError error, const PortSettings &port);

enum class UploadResult { Succeeded, Failed, Aborted };

struct UploadRequest
{
    PortSettings Port;
    QString RemoteName;
    // Writes the profile into a new temporary file and returns its path, or ""
    // on failure. The upload deletes that file when it ends, on every path.
    std::function<QString()> WriteProfileCopy;
    int ReadTimeoutMs = DefaultReadTimeoutMs;
    // The pause between opening the port and the first command.
    int OpenPauseMs = 1000;
};

// One upload of a profile to the phone: write the copy, open the port, switch
// the phone to OBEX, connect, put, disconnect; the port is closed and the copy
// deleted however it ends. Run() blocks; a window runs it on a worker thread
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
    UploadResult Transfer(QString &copyPath);
    bool Fail(UploadError error);
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
