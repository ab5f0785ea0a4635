// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "seriallink.h"
#include "settings/phoneconnection.h"
#include "settings/serialport.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

enum class UploadResult { Succeeded, Failed, Aborted };

// What to send to the phone, and how to reach it.
struct UploadRequest
{
    PhoneConnection Connection = PhoneConnection::Serial;
    // The serial line to the phone.
    SerialPort Port;
    qint32 Speed = 0; // bit/s
    // The Bluetooth phone, for PhoneConnection::Bluetooth.
    BluetoothPhone Phone;
    QString RemoteName;
    // The finished profile file to send; "" when it could not be written.
    QString ProfilePath;
    // Whether the upload owns that file (a copy written for it): it then
    // deletes the file when it ends, on every path.
    bool OwnsProfile = false;
    // How long the serial line waits for the phone's next byte, and the pause
    // between opening the port and the first command.
    int ReadTimeoutMs = DefaultReadTimeoutMs;
    int OpenPauseMs = 1000;

    // Whether a way to the phone is configured (for the serial line a port
    // and a speed, for Bluetooth the phone's address). Without one an upload fails at once, so there is no need
    // to write a file for it.
    [[nodiscard]] bool HasConnection() const;
};

// The name a document is sent under: its file name without folder and
// extension, plus ".hid"; the localised "Unnamed.hid" for a document never saved
// (documentPath "").
QString RemoteProfileName(const QString &documentPath);

// One upload of a finished profile file to the phone, whatever carries it.
// Start() begins it and returns at once; every signal, Finished included,
// then arrives through the event loop of the thread that made the job, never
// from within Start() or Abort(). Each job ends with exactly one Finished,
// after which the profile file is deleted if the job owns it. Run a job once.
class UploadJob : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void Start() = 0;
    // Ends the upload at its next step or piece, without a message:
    // Finished(Aborted) follows. Before Start() the upload ends as soon as it
    // starts; after Finished it does nothing.
    virtual void Abort() = 0;
    // As much of Abort() as a signal handler may do: async-signal-safe, any
    // thread. The signal guard calls it from its handler, and Abort() once the
    // event loop runs again. By default it does nothing.
    virtual void AbortFromSignalHandler() {}
    // After Finished(Failed): the one message for the user, in the active
    // language; "" otherwise.
    [[nodiscard]] virtual QString ErrorText() const = 0;

    // The whole-number percentage of a transfer, 100 for an empty one.
    static int Percent(qint64 bytesSent, qint64 total);
    // "42%  " followed by the localised upload window caption.
    static QString ProgressCaption(int percent);

signals:
    // A new status line.
    void StatusChanged(const QString &text);
    // After each piece the phone took: progress, the rate in bytes per second,
    // and the status line that says it.
    void ProgressChanged(qint64 bytesSent, qint64 total, qint32 rate, const QString &text);
    void Finished(UploadResult result);
};

using UploadJobMaker = std::function<std::unique_ptr<UploadJob>(UploadRequest)>;
