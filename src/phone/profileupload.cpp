// SPDX-License-Identifier: GPL-3.0-or-later
#include "profileupload.h"

#include "phonetexts.h"
#include "settings/commontexts.h"

#include <QFile>
#include <QThread>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr int PauseSliceMs = 50;

// What "%p" alone stands for: the port number on Windows, the name elsewhere.
QString PortNumberText(const SerialPort &port)
{
#ifdef Q_OS_WIN
    return QString::number(port.Number());
#else
    return port.Name();
#endif
}

UploadError OpenError(PortOpenError error)
{
    switch (error) {
    case PortOpenError::InUse:
        return UploadError::PortInUse;
    case PortOpenError::HeldByProgram:
        return UploadError::PortHeld;
    case PortOpenError::LeftLocked:
        return UploadError::PortLeftLocked;
    default:
        return UploadError::PortNotOpened;
    }
}

} // namespace

QString FillPortPlaceholder(const QString &text, const SerialPort &port)
{
    return FillPlaceholders(text, {{"COM%p"_L1, port.Name()}, {"%p"_L1, PortNumberText(port)}});
}

QString UploadErrorText(UploadError error, const SerialPort &port, const PortHolder &holder)
{
    const auto notConnected = [] { return LanguageText(PhoneText::CouldNotConnect) + "\r\n"_L1; };
    switch (error) {
    case UploadError::None:
        return QString();
    case UploadError::PortNotSet:
        return LanguageText(PhoneText::PortNotSet);
    case UploadError::FileNotWritten:
        return LanguageText(CommonText::CreatingFileFailed);
    case UploadError::NameTooLong:
        return FillPlaceholders(LanguageText(PhoneText::NameTooLong),
                                {{"%m"_L1, QString::number(MaxRemoteNameLength)}});
    case UploadError::PortNotOpened:
        return FillPortPlaceholder(LanguageText(PhoneText::CouldNotConnect), port);
    case UploadError::PortInUse:
        return FillPortPlaceholder(notConnected() + LanguageText(PhoneText::PortInUse), port);
    case UploadError::PortHeld:
        return FillPlaceholders(notConnected() + LanguageText(PhoneText::PortHeld),
                                {{"COM%p"_L1, port.Name()},
                                 {"%p"_L1, PortNumberText(port)},
                                 {"%a"_L1, holder.Program},
                                 {"%i"_L1, QString::number(holder.ProcessId)}});
    case UploadError::PortLeftLocked:
        return FillPortPlaceholder(notConnected() + LanguageText(PhoneText::PortLeftLocked), port);
    case UploadError::PhoneSilent:
        return LanguageText(PhoneText::PhoneSilent);
    // One key, two built-in texts: a language file's key 10 replaces both.
    case UploadError::ObexNotStarted:
        return LanguageText(PhoneText::ObexNotStarted);
    case UploadError::ObexNotConnected:
        return LanguageText(PhoneText::ObexNotConnected);
    case UploadError::PutFailed:
        return LanguageText(PhoneText::PutFailed);
    }
    return QString();
}

ProfileUpload::ProfileUpload(UploadRequest request, QObject *parent)
    : QObject(parent), m_request(std::move(request)), m_session(m_link)
{
    // The session reports from the thread that runs the upload.
    connect(
        &m_session, &cOBEXObject::DataTransfer, this,
        [this](qint32 bytesSent, qint32 total, qint32 rate) {
            emit ProgressChanged(bytesSent, total, rate, SendingText(bytesSent, rate));
        },
        Qt::DirectConnection);
}

ProfileUpload::~ProfileUpload() = default;

void ProfileUpload::Abort()
{
    m_abort.store(true);
    m_session.SetAbortFlag(true);
}

QString ProfileUpload::ErrorText() const
{
    return IsAborted() ? QString() : UploadErrorText(m_error, m_request.Port, m_link.LastOpenHolder());
}

QString ProfileUpload::SendingText(qint64 bytesSent, qint32 rate) const
{
    // The sending text's "%t" is not one of its placeholders: it shows as it is.
    return FillPlaceholders(m_sendingText, {{"%f"_L1, m_request.RemoteName},
                                            {"%b"_L1, QString::number(bytesSent)},
                                            {"%r"_L1, QString::number(std::lround(rate / 1024.0))}});
}

void ProfileUpload::Status(const QString &text)
{
    emit StatusChanged(text);
}

bool ProfileUpload::Fail(UploadError error)
{
    m_error = error;
    return false;
}

bool ProfileUpload::Pause()
{
    for (int waited = 0; waited < m_request.OpenPauseMs && !IsAborted(); waited += PauseSliceMs)
        QThread::msleep(ulong(std::min(PauseSliceMs, m_request.OpenPauseMs - waited)));
    return !IsAborted();
}

UploadResult ProfileUpload::Run()
{
    m_error = UploadError::None;
    m_sendingText = LanguageText(PhoneText::Sending);
    Status(LanguageText(PhoneText::Generating));
    UploadResult result = Transfer();
    m_link.ClosePort();
    const QString &profile = m_request.ProfilePath;
    if (m_request.OwnsProfile && !profile.isEmpty() && QFile::exists(profile) && !QFile::remove(profile))
        qCWarning(lcPhone) << "could not delete" << profile;
    if (IsAborted())
        result = UploadResult::Aborted;
    return result;
}

UploadResult ProfileUpload::Transfer()
{
    const auto ended = [this](bool stepDone) { return !stepDone || IsAborted(); };
    const auto failed = [this] { return m_error == UploadError::None ? UploadResult::Aborted : UploadResult::Failed; };

    if (!m_request.HasConnection()) {
        Fail(UploadError::PortNotSet);
        return UploadResult::Failed;
    }
    if (FirstPieceLimit(m_request.RemoteName) < 0) {
        Fail(UploadError::NameTooLong);
        return UploadResult::Failed;
    }
    if (ended(!m_request.ProfilePath.isEmpty() || Fail(UploadError::FileNotWritten)))
        return failed();

    Status(FillPortPlaceholder(LanguageText(PhoneText::Opening), m_request.Port));
    const bool opened = m_link.OpenPort(m_request.Port.Name(), m_request.Speed);
    if (!opened)
        Fail(OpenError(m_link.LastOpenError()));
    if (ended(opened))
        return failed();
    m_link.SetReadTimeout(m_request.ReadTimeoutMs);

    if (ended(Pause()))
        return failed();
    Status(LanguageText(PhoneText::Initiating));
    // A silent phone would hold Abort for a whole read time-out here; once in
    // OBEX, Abort waits for the current packet's answer instead.
    m_link.SetCancelFlag(&m_abort);
    AtResponse answer = m_link.SendAtCommand(u"AT*EOBEX"_s);
    // Phones without the vendor command take the standard one.
    if (answer.Raw.contains("ERROR"_L1) && !IsAborted())
        answer = m_link.SendAtCommand(u"AT+CPROT=0"_s);
    m_link.SetCancelFlag(nullptr);
    if (answer.Raw.isEmpty())
        Fail(UploadError::PhoneSilent);
    else if (!answer.Raw.contains("CONNECT"_L1))
        Fail(UploadError::ObexNotStarted);
    if (ended(m_error == UploadError::None))
        return failed();

    quint16 maxPacketSize = 0;
    if (ended(m_session.Connect(maxPacketSize, cOBEXObject::UUID()) || Fail(UploadError::ObexNotConnected)))
        return failed();

    QFile profile(m_request.ProfilePath);
    if (ended(profile.open(QIODevice::ReadOnly) || Fail(UploadError::FileNotWritten)))
        return failed();
    const QByteArray data = profile.readAll();
    profile.close();
    m_totalSize = data.size();
    Status(SendingText(0, 0));

    if (!m_session.ObexPut(m_request.RemoteName, data)) {
        Status(LanguageText(PhoneText::UploadFailedStatus));
        Fail(UploadError::PutFailed);
        return failed();
    }
    if (!m_session.Disconnect())
        qCInfo(lcPhone) << "the phone did not confirm the disconnect";
    Status(FillPlaceholders(LanguageText(PhoneText::Sent),
                            {{"%f"_L1, m_request.RemoteName},
                             {"%t"_L1, QString::number(double(m_totalSize) / 1024.0, 'f', 2)}}));
    return IsAborted() ? UploadResult::Aborted : UploadResult::Succeeded;
}
