// SPDX-License-Identifier: GPL-3.0-or-later
#include "profileupload.h"

#include "settings/languagetext.h"

#include <QFile>
#include <QThread>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

const QString WindowSection = u"FileuploadWindow"_s;
const QString ErrorSection = u"Errors"_s;
constexpr int PauseSliceMs = 50;

QString WindowText(const QString &key, const QString &defaultText)
{
    return LanguageText(WindowSection, key, defaultText);
}

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
    const auto notConnected = [] {
        return LanguageText(ErrorSection, u"9"_s, u"Couldn't connect to COM%p !"_s) + "\r\n"_L1;
    };
    switch (error) {
    case UploadError::None:
        return QString();
    case UploadError::PortNotSet:
        return LanguageText(ErrorSection, u"14"_s, u"The COM-Port is not set. Please check the settings !"_s);
    case UploadError::FileNotWritten:
        return LanguageText(ErrorSection, u"8"_s, u"Creating File failed !"_s);
    case UploadError::NameTooLong:
        return FillPlaceholders(LanguageText(ErrorSection, u"NameTooLong"_s,
                                             u"The name for the phone is too long: it may have at most %m "
                                             "characters."_s),
                                {{"%m"_L1, QString::number(MaxRemoteNameLength)}});
    case UploadError::PortNotOpened:
        return FillPortPlaceholder(LanguageText(ErrorSection, u"9"_s, u"Couldn't connect to COM%p !"_s), port);
    case UploadError::PortInUse:
        return FillPortPlaceholder(notConnected()
                                       + LanguageText(ErrorSection, u"PortInUse"_s,
                                                      u"COM%p is in use by another program, or you may not "
                                                      "open it (on Linux the user must be in the group "
                                                      "dialout)."_s),
                                   port);
    case UploadError::PortHeld:
        return FillPlaceholders(notConnected()
                                    + LanguageText(ErrorSection, u"PortHeld"_s,
                                                   u"COM%p is open in another program (%a, process %i). "
                                                   "Let it close the port or end it, then try once more."_s),
                                {{"COM%p"_L1, port.Name()},
                                 {"%p"_L1, PortNumberText(port)},
                                 {"%a"_L1, holder.Program},
                                 {"%i"_L1, QString::number(holder.ProcessId)}});
    case UploadError::PortLeftLocked:
        return FillPortPlaceholder(notConnected()
                                       + LanguageText(ErrorSection, u"PortLeftLocked"_s,
                                                      u"COM%p is locked, yet no program of yours has it "
                                                      "open: one that was ended without closing it left it "
                                                      "so. Reconnect the phone or cable (Bluetooth: rfcomm "
                                                      "release, then bind)."_s),
                                   port);
    case UploadError::PhoneSilent:
        return LanguageText(ErrorSection, u"15"_s,
                            u"The phone didn't answer.%nPleas check the settings or try it once more."_s);
    // One key, two built-in texts: a language file's key 10 replaces both.
    case UploadError::ObexNotStarted:
        return LanguageText(ErrorSection, u"10"_s, u"Initiating Obex-Protocol failed !"_s);
    case UploadError::ObexNotConnected:
        return LanguageText(ErrorSection, u"10"_s, u"Initializing Obex-Protocol failed !"_s);
    case UploadError::PutFailed:
        return LanguageText(ErrorSection, u"11"_s, u"Fileupload failed !"_s);
    }
    return QString();
}

ProfileUpload::ProfileUpload(UploadRequest request, QObject *parent)
    : QObject(parent)
    , m_request(std::move(request))
    , m_session(m_link)
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
    m_sendingText = WindowText(u"Status4"_s, u"Sending %f  - %t Bytes..."_s);
    Status(WindowText(u"Status1"_s, u"Generating File..."_s));
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

    Status(FillPortPlaceholder(WindowText(u"Status2"_s, u"Opening COM%p ..."_s), m_request.Port));
    const bool opened = m_link.OpenPort(m_request.Port.Name(), m_request.Speed);
    if (!opened)
        Fail(OpenError(m_link.LastOpenError()));
    if (ended(opened))
        return failed();
    m_link.SetReadTimeout(m_request.ReadTimeoutMs);

    if (ended(Pause()))
        return failed();
    Status(WindowText(u"Status3"_s, u"Initiating Obex Filetransfer..."_s));
    AtResponse answer = m_link.SendAtCommand(u"AT*EOBEX"_s);
    // Phones without the vendor command take the standard one.
    if (answer.Raw.contains("ERROR"_L1))
        answer = m_link.SendAtCommand(u"AT+CPROT=0"_s);
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
        Status(WindowText(u"Status6"_s, u"Fileupload failed !"_s));
        Fail(UploadError::PutFailed);
        return failed();
    }
    if (!m_session.Disconnect())
        qCInfo(lcPhone) << "the phone did not confirm the disconnect";
    Status(FillPlaceholders(WindowText(u"Status5"_s, u"%f (%t KB) successfully transfered to phone !"_s),
                            {{"%f"_L1, m_request.RemoteName},
                             {"%t"_L1, QString::number(double(m_totalSize) / 1024.0, 'f', 2)}}));
    return IsAborted() ? UploadResult::Aborted : UploadResult::Succeeded;
}
