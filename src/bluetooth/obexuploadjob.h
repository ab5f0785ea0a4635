// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "phone/uploadjob.h"

#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <utility>

class QDBusMessage;
class QDBusPendingCallWatcher;

// What ended a Bluetooth upload in failure.
enum class ObexUploadError {
    None,
    PhoneNotSet, // no phone address
    BadName, // the name for the phone cannot be a file name
    FileNotWritten, // the profile file or the copy to send could not be made
    ServiceMissing, // the OBEX service (obexd) is not installed or not running
    PhoneUnreachable, // Bluetooth off on the phone, out of range, not paired
    Refused, // the phone declined the connection or the file
    TimedOut, // no answer in time
    Failed, // anything else; the service's own words go with the message
};

// An upload to a paired phone through BlueZ's OBEX service (obexd, on the
// session bus): a session to the phone (Object Push, or file transfer),
// SendFile or PutFile of a copy of the profile named as on the phone, progress
// from the transfer's properties. The session is removed however the upload
// ends, and the copy (in a folder of its own among the temporary files) is
// deleted; so is the profile file when the request owns it.
//
// Everything runs on the job's thread through its event loop; nothing blocks.
// Abort cancels the transfer; while the phone is still being connected it
// ends the job at once, and a session that comes after all is removed.
class ObexUploadJob : public UploadJob
{
    Q_OBJECT

public:
    // Connecting covers paging the phone over the radio and the OBEX connect,
    // which may wait for the user to accept on the phone.
    static constexpr int ConnectTimeoutMs = 60000;
    static constexpr int CallTimeoutMs = 10000;

    explicit ObexUploadJob(UploadRequest request, QObject *parent = nullptr);
    ~ObexUploadJob() override;

    void Start() override;
    void Abort() override;
    QString ErrorText() const override;
    [[nodiscard]] ObexUploadError Error() const { return m_error; }

private slots:
    // org.freedesktop.DBus.Properties.PropertiesChanged of any object of the
    // service; and the service's InterfacesRemoved.
    void PropertiesChanged(const QDBusMessage &message);
    void InterfacesRemoved(const QDBusMessage &message);

private:
    enum class Step { Waiting, Connecting, Sending, Ending, Ended };

    void Begin();
    void SessionCreated(const QDBusMessage &reply);
    void TransferQueued(QDBusPendingCallWatcher *watcher);
    void TakeTransferChanges(const QVariantMap &changes);
    void TransferGone();
    void Fail(ObexUploadError error, const QString &detail = {});
    void End(UploadResult result);
    void Finish(UploadResult result);
    bool MakeCopy();
    void DeleteFiles();
    void Listen(bool on);
    QString SendingText(qint64 bytesSent) const;
    qint32 Rate(qint64 bytesSent) const;

    UploadRequest m_request;
    Step m_step = Step::Waiting;
    bool m_abortRequested = false;
    ObexUploadError m_error = ObexUploadError::None;
    QString m_errorDetail;
    QString m_copyPath;
    QString m_sessionPath;
    QString m_transferPath;
    qint64 m_size = 0;
    QElapsedTimer m_clock;
    // Changes and removals under the session that came before the transfer's
    // path was known.
    QList<std::pair<QString, QVariantMap>> m_earlyChanges;
    QList<QString> m_earlyRemovals;
};
