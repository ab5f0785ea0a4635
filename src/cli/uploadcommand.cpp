// SPDX-License-Identifier: GPL-3.0-or-later
#include "uploadcommand.h"

#include "clioutput.h"
#include "phone/uploadjob.h"
#include "phone/uploadsignalguard.h"
#include "profile/picture.h"
#include "profile/profilearchive.h"
#include "profile/profiletexts.h"
#include "profile/tar.h"
#include "profile/tempfiles.h"
#include "settings/filemessage.h"
#include "settings/languagetext.h"
#include "transport/uploadjobs.h"

#ifdef PADMAPPER_HAS_DBUS
#include "bluetooth/paireddevices.h"
#endif

#include <QEventLoop>
#include <QFile>

#include <algorithm>
#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr qint32 DefaultSpeed = 115200;
constexpr int ProgressBarWidth = 30;
const QStringList ValueOptions = {u"--port"_s, u"--speed"_s, u"--name"_s, u"--bluetooth"_s, u"--method"_s};

bool StdoutIsTerminal()
{
#ifdef Q_OS_WIN
    return _isatty(_fileno(stdout));
#else
    return isatty(STDOUT_FILENO);
#endif
}

QByteArray ConsoleLine(QString text)
{
#ifndef Q_OS_WIN
    text.replace("\r\n"_L1, "\n"_L1);
#endif
    return text.toLocal8Bit();
}

int UsageError(const QString &message)
{
    Complain(message);
    WriteStderr(u"Try 'padmapper-cli --help'."_s);
    return ExitStatus::Usage;
}

// A profile lists as a tar archive with a picture entry and a keymap entry;
// only the headers are read, however large the file.
bool IsProfileFile(const QString &path)
{
    cTar tar;
    if (!tar.GetContents(path))
        return false;
    const QList<TarEntry> &entries = tar.Entries();
    const auto has = [&entries](auto isWanted) {
        return std::any_of(entries.begin(), entries.end(),
                           [&](const TarEntry &entry) { return isWanted(LowerExtension(entry.Name)); });
    };
    return has([](const QString &extension) { return ProfilePictureExtensions().contains(extension); })
           && has([](const QString &extension) { return extension == "kcf"_L1; });
}

// Draws "[#####.....]  42%  126.0 of 292.9 KB, 11 KB/s" over the current
// terminal line.
QByteArray ProgressBar(qint64 bytesSent, qint64 total, qint32 rate)
{
    const int percent = UploadJob::Percent(bytesSent, total);
    const int filled = percent * ProgressBarWidth / 100;
    return "\r[" + QByteArray(filled, '#') + QByteArray(ProgressBarWidth - filled, '.') + "] "
           + QByteArray::number(percent).rightJustified(3) + "%  "
           + QByteArray::number(double(bytesSent) / 1024, 'f', 1) + " of "
           + QByteArray::number(double(total) / 1024, 'f', 1) + " KB, " + QByteArray::number(qRound(rate / 1024.0))
           + " KB/s\x1b[K";
}

// The phone's name as BlueZ knows it, for the status lines; "" when it is not
// paired or BlueZ does not answer soon.
QString PairedName(const QString &address)
{
#ifdef PADMAPPER_HAS_DBUS
    constexpr int QuickAnswerMs = 2000;
    for (const PairedDevice &device : PairedDevices(QuickAnswerMs).value_or(QList<PairedDevice>())) {
        if (device.Address.compare(address, Qt::CaseInsensitive) == 0)
            return device.Alias;
    }
#else
    Q_UNUSED(address);
#endif
    return {};
}

} // namespace

bool IsUploadOption(const QString &argument)
{
    return ValueOptions.contains(argument.section(u'=', 0, 0));
}

int RunUpload(const QStringList &arguments)
{
    QString profile;
    QString port;
    QString name;
    QString bluetooth;
    QString method;
    qint32 speed = DefaultSpeed;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (!IsUploadOption(argument)) {
            if (!profile.isEmpty())
                return UsageError(u"upload takes one profile"_s);
            profile = argument;
            continue;
        }
        QString value;
        if (argument.contains(u'='))
            value = argument.section(u'=', 1);
        else if (i + 1 < arguments.size())
            value = arguments[++i];
        else
            return UsageError(u"%1 needs a value"_s.arg(argument));
        const QString option = argument.section(u'=', 0, 0);
        if (option == "--port"_L1) {
            port = value;
        } else if (option == "--bluetooth"_L1) {
            bluetooth = value;
        } else if (option == "--method"_L1) {
            method = value;
        } else if (option == "--name"_L1) {
            name = value;
        } else {
            bool ok = false;
            speed = value.toInt(&ok);
            if (!ok || speed <= 0)
                return UsageError(u"--speed needs a positive number of bit/s"_s);
        }
    }
    if (profile.isEmpty())
        return UsageError(u"upload needs a profile"_s);
    if (port.isEmpty() == bluetooth.isEmpty())
        return UsageError(u"upload needs either --port or --bluetooth"_s);
    const std::optional<ObexMethod> obexMethod = ParseObexMethod(method.isEmpty() ? u"push"_s : method);
    if (!method.isEmpty() && bluetooth.isEmpty())
        return UsageError(u"--method goes with --bluetooth"_s);
    if (!obexMethod)
        return UsageError(u"--method takes push or ftp"_s);
    const std::optional<QString> address = ParseBluetoothAddress(bluetooth);
    if (!bluetooth.isEmpty() && !address)
        return UsageError(u"--bluetooth needs an address such as 00:11:22:33:44:55"_s);
    if (address && !BluetoothAvailable()) {
        Complain(u"Bluetooth is not available on this system"_s);
        return ExitStatus::Failure;
    }
    FileError profileError;
    if (QFile file; !OpenForReading(file, profile, &profileError)) {
        Complain(FileFailureMessage(u"no profile"_s, profileError));
        return ExitStatus::Failure;
    }
    if (!IsProfileFile(profile)) {
        Complain(FillPlaceholders(LanguageText(ProfileText::NotAProfile), {{"%f"_L1, profile}}));
        return ExitStatus::Failure;
    }

    // The user's file is finished already: it is sent as it is, not copied.
    UploadRequest request;
    if (address) {
        request.Connection = PhoneConnection::Bluetooth;
        request.Phone = {*address, PairedName(*address), *obexMethod};
    }
    request.Port = SerialPort::Parse(port).value_or(SerialPort());
    request.Speed = speed;
    request.RemoteName = name.isEmpty() ? RemoteProfileName(profile) : name;
    request.ProfilePath = profile;
    request.OwnsProfile = false;

    const std::unique_ptr<UploadJob> upload = MakeUploadJob(request);
    const bool terminal = StdoutIsTerminal();
    bool barShown = false;
    QObject::connect(upload.get(), &UploadJob::StatusChanged, [&](const QString &text) {
        WriteStdout((barShown ? "\n" : "") + ConsoleLine(text) + '\n');
        barShown = false;
    });
    // The status line of each piece only repeats the sending line: a terminal
    // gets a bar with the figures instead.
    QObject::connect(upload.get(), &UploadJob::ProgressChanged,
                     [&](qint64 bytesSent, qint64 total, qint32 rate, const QString &) {
                         if (!terminal)
                             return;
                         WriteStdout(ProgressBar(bytesSent, total, rate));
                         barShown = true;
                     });
    QEventLoop loop;
    UploadResult result = UploadResult::Failed;
    QObject::connect(upload.get(), &UploadJob::Finished, &loop, [&](UploadResult ended) {
        result = ended;
        loop.quit();
    });

    int signalNumber = 0;
    {
        const UploadSignalGuard guard(*upload, DeleteTempFilesFromSignalHandler);
        upload->Start();
        loop.exec();
        signalNumber = guard.Received();
    }
    if (barShown)
        WriteStdout("\n");
    if (signalNumber != 0) {
        Complain(u"upload aborted"_s);
        DeleteTempFiles();
        UploadSignalGuard::EndAsSignalled(signalNumber);
    }

    switch (result) {
    case UploadResult::Succeeded:
        return ExitStatus::Success;
    case UploadResult::Aborted:
        Complain(u"upload aborted"_s);
        return ExitStatus::Failure;
    case UploadResult::Failed:
        break;
    }
    Complain(upload->ErrorText());
    return ExitStatus::Failure;
}
