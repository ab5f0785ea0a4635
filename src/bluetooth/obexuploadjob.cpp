// SPDX-License-Identifier: GPL-3.0-or-later
#include "obexuploadjob.h"

#include "bluetoothtexts.h"
#include "phone/phonetexts.h"
#include "profile/tempfiles.h"
#include "settings/commontexts.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

const QString ObexService = u"org.bluez.obex"_s;
const QString ClientPath = u"/org/bluez/obex"_s;
const QString ClientInterface = u"org.bluez.obex.Client1"_s;
const QString TransferInterface = u"org.bluez.obex.Transfer1"_s;
const QString PropertiesInterface = u"org.freedesktop.DBus.Properties"_s;
const QString ObjectManagerInterface = u"org.freedesktop.DBus.ObjectManager"_s;
// Removing a session is answered at once; the wait only bounds a stuck service.
constexpr int RemoveTimeoutMs = 5000;

QDBusMessage ClientCall(const QString &method, const QVariant &argument)
{
    QDBusMessage call = QDBusMessage::createMethodCall(ObexService, ClientPath, ClientInterface, method);
    call << argument;
    return call;
}

QDBusMessage RemoveSessionCall(const QString &sessionPath)
{
    return ClientCall(u"RemoveSession"_s, QVariant::fromValue(QDBusObjectPath(sessionPath)));
}

// obexd's errors are terse: a phone that is off, out of range or not paired
// gives Error.Failed with an empty message (or "Unable to find service
// record") when it is being connected; one that declines the OBEX connect
// "OBEX Connect failed with 0x..".
ObexUploadError ErrorOf(const QDBusMessage &reply, bool connecting)
{
    const QString name = reply.errorName();
    if (name == "org.freedesktop.DBus.Error.ServiceUnknown"_L1
        || name == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1
        || name == "org.freedesktop.DBus.Error.Disconnected"_L1)
        return ObexUploadError::ServiceMissing;
    if (name == "org.freedesktop.DBus.Error.NoReply"_L1 || name == "org.freedesktop.DBus.Error.Timeout"_L1
        || name == "org.freedesktop.DBus.Error.TimedOut"_L1
        || reply.errorMessage().contains("timed out"_L1, Qt::CaseInsensitive))
        return ObexUploadError::TimedOut;
    if (connecting && name == "org.bluez.obex.Error.Failed"_L1)
        return reply.errorMessage().startsWith("OBEX Connect failed"_L1) ? ObexUploadError::Refused
                                                                         : ObexUploadError::PhoneUnreachable;
    return ObexUploadError::Failed;
}

QString ErrorDetail(const QDBusMessage &reply)
{
    return reply.errorMessage().isEmpty() ? reply.errorName() : reply.errorName() + ": "_L1 + reply.errorMessage();
}

bool IsPlainFileName(const QString &name)
{
    return !name.isEmpty() && name != "."_L1 && name != ".."_L1 && !name.contains(u'/') && !name.contains(u'\\');
}

} // namespace

ObexUploadJob::ObexUploadJob(UploadRequest request, QObject *parent) : UploadJob(parent), m_request(std::move(request))
{
}

ObexUploadJob::~ObexUploadJob()
{
    if (m_step != Step::Connecting && m_step != Step::Sending)
        return;
    // Nobody waits for the answers any more; a session still being made is
    // removed when it arrives (Begin).
    Listen(false);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!m_transferPath.isEmpty())
        bus.send(QDBusMessage::createMethodCall(ObexService, m_transferPath, TransferInterface, u"Cancel"_s));
    if (!m_sessionPath.isEmpty())
        bus.send(RemoveSessionCall(m_sessionPath));
    m_step = Step::Ended;
    DeleteFiles();
}

void ObexUploadJob::Start()
{
    QTimer::singleShot(0, this, &ObexUploadJob::Begin);
}

void ObexUploadJob::Abort()
{
    m_abortRequested = true;
    if (m_step == Step::Connecting || m_step == Step::Sending)
        End(UploadResult::Aborted);
}

QString ObexUploadJob::ErrorText() const
{
    if (m_step != Step::Ended)
        return {};
    const auto aboutPhone = [this](BluetoothText text) {
        return FillPlaceholders(LanguageText(text), {{"%d"_L1, m_request.Phone.ShownName()}});
    };
    switch (m_error) {
    case ObexUploadError::None:
        return {};
    case ObexUploadError::PhoneNotSet:
        return LanguageText(BluetoothText::PhoneNotSet);
    case ObexUploadError::BadName:
        return FillPlaceholders(LanguageText(BluetoothText::BadName), {{"%f"_L1, m_request.RemoteName}});
    case ObexUploadError::FileNotWritten:
        return LanguageText(CommonText::CreatingFileFailed);
    case ObexUploadError::ServiceMissing:
        return LanguageText(BluetoothText::ServiceMissing);
    case ObexUploadError::PhoneUnreachable:
        return aboutPhone(BluetoothText::Unreachable);
    case ObexUploadError::Refused:
        return aboutPhone(BluetoothText::Refused);
    case ObexUploadError::TimedOut:
        return aboutPhone(BluetoothText::TimedOut);
    case ObexUploadError::Failed:
        break;
    }
    return LanguageText(PhoneText::PutFailed) + "\r\n"_L1 + m_errorDetail;
}

void ObexUploadJob::Begin()
{
    if (m_step != Step::Waiting)
        return;
    m_step = Step::Connecting;
    if (m_abortRequested)
        return End(UploadResult::Aborted);
    emit StatusChanged(LanguageText(PhoneText::Generating));
    if (!m_request.Phone.IsSet())
        return Fail(ObexUploadError::PhoneNotSet);
    if (!IsPlainFileName(m_request.RemoteName))
        return Fail(ObexUploadError::BadName);
    if (!MakeCopy())
        return Fail(ObexUploadError::FileNotWritten);

    emit StatusChanged(FillPlaceholders(LanguageText(BluetoothText::Connecting),
                                        {{"%d"_L1, m_request.Phone.ShownName()}}));
    QDBusConnection bus = QDBusConnection::sessionBus();
    // A call on a bus that is not there never answers, not even with an error.
    if (!bus.isConnected())
        return Fail(ObexUploadError::ServiceMissing);
    // obexd leaving the bus takes its transfers along without a word.
    auto *service = new QDBusServiceWatcher(ObexService, bus, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(service, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        if (m_step == Step::Connecting || m_step == Step::Sending)
            Fail(ObexUploadError::ServiceMissing);
    });
    // Listening before the transfer exists, so that no change is missed.
    Listen(true);

    const QString target = m_request.Phone.Method == ObexMethod::FileTransfer ? u"ftp"_s : u"opp"_s;
    QDBusMessage call = ClientCall(u"CreateSession"_s, m_request.Phone.Address);
    call << QVariantMap{{u"Target"_s, target}};
    // Not the job's child: the answer may come after the job has gone, and a
    // session made then must still be removed.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, ConnectTimeoutMs));
    connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
            [job = QPointer<ObexUploadJob>(this)](QDBusPendingCallWatcher *self) {
                self->deleteLater();
                const QDBusMessage reply = self->reply();
                if (job && job->m_step == Step::Connecting)
                    job->SessionCreated(reply);
                else if (reply.type() == QDBusMessage::ReplyMessage)
                    QDBusConnection::sessionBus().send(
                        RemoveSessionCall(reply.arguments().value(0).value<QDBusObjectPath>().path()));
            });
}

void ObexUploadJob::SessionCreated(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage)
        return Fail(ErrorOf(reply, true), ErrorDetail(reply));
    m_sessionPath = reply.arguments().value(0).value<QDBusObjectPath>().path();
    m_step = Step::Sending;
    if (!QDBusConnection::sessionBus().isConnected())
        return Fail(ObexUploadError::ServiceMissing);
    QDBusMessage call;
    if (m_request.Phone.Method == ObexMethod::FileTransfer) {
        call = QDBusMessage::createMethodCall(ObexService, m_sessionPath, u"org.bluez.obex.FileTransfer1"_s,
                                              u"PutFile"_s);
        call << m_copyPath << m_request.RemoteName;
    } else {
        // The phone stores the file under the copy's own name.
        call = QDBusMessage::createMethodCall(ObexService, m_sessionPath, u"org.bluez.obex.ObjectPush1"_s,
                                              u"SendFile"_s);
        call << m_copyPath;
    }
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, CallTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &ObexUploadJob::TransferQueued);
}

void ObexUploadJob::TransferQueued(QDBusPendingCallWatcher *watcher)
{
    watcher->deleteLater();
    if (m_step != Step::Sending)
        return;
    const QDBusMessage reply = watcher->reply();
    if (reply.type() != QDBusMessage::ReplyMessage)
        return Fail(ErrorOf(reply, false), ErrorDetail(reply));
    m_transferPath = reply.arguments().value(0).value<QDBusObjectPath>().path();
    const auto properties = qdbus_cast<QVariantMap>(reply.arguments().value(1));
    m_size = properties.value(u"Size"_s).toLongLong();
    m_clock.start();
    emit StatusChanged(SendingText(0));
    TakeTransferChanges(properties);
    const auto earlyChanges = std::exchange(m_earlyChanges, {});
    for (const auto &[path, changes] : earlyChanges) {
        if (path == m_transferPath && m_step == Step::Sending)
            TakeTransferChanges(changes);
    }
    if (std::exchange(m_earlyRemovals, {}).contains(m_transferPath))
        TransferGone();
}

void ObexUploadJob::PropertiesChanged(const QDBusMessage &message)
{
    if (m_step != Step::Sending || message.arguments().value(0).toString() != TransferInterface)
        return;
    const auto changes = qdbus_cast<QVariantMap>(message.arguments().value(1));
    if (m_transferPath.isEmpty()) {
        if (message.path().startsWith(m_sessionPath + u'/'))
            m_earlyChanges.append({message.path(), changes});
    } else if (message.path() == m_transferPath) {
        TakeTransferChanges(changes);
    }
}

void ObexUploadJob::InterfacesRemoved(const QDBusMessage &message)
{
    if (m_step != Step::Sending)
        return;
    const QString path = message.arguments().value(0).value<QDBusObjectPath>().path();
    if (m_transferPath.isEmpty()) {
        if (path.startsWith(m_sessionPath + u'/'))
            m_earlyRemovals.append(path);
    } else if (path == m_transferPath || path == m_sessionPath) {
        TransferGone();
    }
}

void ObexUploadJob::TakeTransferChanges(const QVariantMap &changes)
{
    if (changes.contains(u"Size"_s))
        m_size = changes.value(u"Size"_s).toLongLong();
    if (changes.contains(u"Transferred"_s)) {
        const qint64 sent = changes.value(u"Transferred"_s).toLongLong();
        emit ProgressChanged(sent, m_size, Rate(sent), SendingText(sent));
    }
    const QString status = changes.value(u"Status"_s).toString();
    if (status == "complete"_L1) {
        // The last piece is never reported: "complete" means every byte.
        emit ProgressChanged(m_size, m_size, Rate(m_size), SendingText(m_size));
        emit StatusChanged(FillPlaceholders(LanguageText(PhoneText::Sent),
                                            {{"%f"_L1, m_request.RemoteName},
                                             {"%t"_L1, QString::number(double(m_size) / 1024.0, 'f', 2)}}));
        End(UploadResult::Succeeded);
    } else if (status == "error"_L1) {
        // A phone that declines answers the first piece with an error, maybe
        // after the user took a while to say no: how much was reported sent
        // does not tell it from a link lost on the way.
        emit StatusChanged(LanguageText(PhoneText::UploadFailedStatus));
        Fail(ObexUploadError::Refused);
    }
}

void ObexUploadJob::TransferGone()
{
    Fail(ObexUploadError::Failed, LanguageText(BluetoothText::TransferDropped));
}

void ObexUploadJob::Fail(ObexUploadError error, const QString &detail)
{
    m_error = error;
    m_errorDetail = detail;
    End(UploadResult::Failed);
}

void ObexUploadJob::End(UploadResult result)
{
    if (m_step == Step::Ending || m_step == Step::Ended)
        return;
    m_step = Step::Ending;
    Listen(false);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (result == UploadResult::Aborted && !m_transferPath.isEmpty())
        bus.send(QDBusMessage::createMethodCall(ObexService, m_transferPath, TransferInterface, u"Cancel"_s));
    // obexd holds the copy open while it sends it; removing the name is safe.
    DeleteFiles();
    if (m_sessionPath.isEmpty() || !bus.isConnected()) {
        QTimer::singleShot(0, this, [this, result] { Finish(result); });
        return;
    }
    // Finished waits for the session's removal, so that a program that ends
    // then has not left it behind.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(RemoveSessionCall(m_sessionPath), RemoveTimeoutMs),
                                                this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, result](QDBusPendingCallWatcher *self) {
        self->deleteLater();
        Finish(result);
    });
}

void ObexUploadJob::Finish(UploadResult result)
{
    m_step = Step::Ended;
    emit Finished(result);
}

bool ObexUploadJob::MakeCopy()
{
    QFile profile(m_request.ProfilePath);
    if (m_request.ProfilePath.isEmpty() || !profile.open(QIODevice::ReadOnly))
        return false;
    m_copyPath = NewTempFileNamed(m_request.RemoteName);
    if (m_copyPath.isEmpty())
        return false;
    QFile copy(m_copyPath);
    const QByteArray data = profile.readAll();
    return profile.error() == QFileDevice::NoError && copy.open(QIODevice::WriteOnly | QIODevice::Truncate)
           && copy.write(data) == data.size() && copy.flush();
}

void ObexUploadJob::DeleteFiles()
{
    if (!m_copyPath.isEmpty()) {
        QFile::remove(m_copyPath);
        QDir().rmdir(QFileInfo(m_copyPath).path());
        m_copyPath.clear();
    }
    if (m_request.OwnsProfile && !m_request.ProfilePath.isEmpty())
        QFile::remove(m_request.ProfilePath);
}

void ObexUploadJob::Listen(bool on)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    const auto change = [&bus, on](auto &&...arguments) {
        return on ? bus.connect(arguments...) : bus.disconnect(arguments...);
    };
    change(ObexService, QString(), PropertiesInterface, u"PropertiesChanged"_s, this,
           SLOT(PropertiesChanged(QDBusMessage)));
    change(ObexService, u"/"_s, ObjectManagerInterface, u"InterfacesRemoved"_s, this,
           SLOT(InterfacesRemoved(QDBusMessage)));
}

QString ObexUploadJob::SendingText(qint64 bytesSent) const
{
    return FillPlaceholders(LanguageText(BluetoothText::Sending),
                            {{"%f"_L1, m_request.RemoteName},
                             {"%b"_L1, QString::number(bytesSent)},
                             {"%t"_L1, QString::number(m_size)},
                             {"%r"_L1, QString::number(std::lround(Rate(bytesSent) / 1024.0))}});
}

qint32 ObexUploadJob::Rate(qint64 bytesSent) const
{
    const qint64 elapsedMs = m_clock.isValid() ? m_clock.elapsed() : 0;
    if (elapsedMs <= 0)
        return 0;
    return qint32(std::min<qint64>(bytesSent * 1000 / elapsedMs, std::numeric_limits<qint32>::max()));
}
