// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakephone.h"
#include "phone/obexsession.h"
#include "phone/serialuploadjob.h"
#include "profile/tar.h"
#include "scripteddevice.h"
#include "settings/languagetext.h"

#include "../testfiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <cmath>
#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString RemoteName = u"Game.hid"_s;
const QString PutFailed = u"Fileupload failed !"_s;
const QByteArray AbortRequest = "ff 00 03";

// An owned copy of data for the phone at portName, with a read time-out short
// enough to keep the silent cases quick and no pause after opening the port.
UploadRequest QuickRequest(const QString &portName, const QString &copyPath, const QByteArray &data)
{
    UploadRequest request;
    request.Port = *SerialPort::Parse(portName);
    request.Speed = 115200;
    request.RemoteName = RemoteName;
    request.ReadTimeoutMs = 300;
    request.OpenPauseMs = 0;
    request.ProfilePath = WriteFile(copyPath, data) ? copyPath : QString();
    request.OwnsProfile = true;
    return request;
}

struct Outcome
{
    UploadResult Result = UploadResult::Failed;
    QString ErrorText;
    QStringList Statuses;
    QList<qint64> StatusTimes; // ms since the start
    // Each progress line, and what the tests' sending line "%f: %b at %r KB/s
    // (%t)" says for its figures.
    QStringList ProgressLines;
    QStringList ExpectedLines;
    int Finished = 0;
    qint64 AbortToFinishMs = -1;
    bool OffThread = false; // a report not on the thread that made the job, or from within Start()
};

// Runs one upload through the serial job, which works on a thread of its own
// and reports on this one. tweak "abort" presses Abort at the second progress
// event, "destroy" drops the job at the first, "abort first" aborts before
// Start(), "Abort while silent" at the AT command's status line.
Outcome Upload(const UploadRequest &request, const QString &tweak)
{
    Outcome outcome;
    std::unique_ptr<UploadJob> job = std::make_unique<SerialUploadJob>(request);
    QElapsedTimer clock;
    clock.start();
    const auto note = [&outcome] {
        outcome.OffThread |= QThread::currentThread() != QCoreApplication::instance()->thread();
    };
    // Without a receiver, as the console tool connects: called where emitted.
    QObject::connect(job.get(), &UploadJob::StatusChanged, [&](const QString &text) {
        note();
        outcome.Statuses << text;
        outcome.StatusTimes << clock.elapsed();
        if (outcome.Statuses.size() == 3 && tweak == "Abort while silent"_L1) {
            job->Abort();
            outcome.AbortToFinishMs = clock.elapsed();
        }
    });
    QObject::connect(
        job.get(), &UploadJob::ProgressChanged, [&](qint64 bytesSent, qint64, qint32 rate, const QString &text) {
            note();
            outcome.ProgressLines << text;
            outcome.ExpectedLines
                << u"%1: %2 at %3 KB/s (%t)"_s.arg(request.RemoteName).arg(bytesSent).arg(std::lround(rate / 1024.0));
            if (outcome.ProgressLines.size() == 2 && tweak == "abort"_L1)
                job->Abort();
        });
    QObject::connect(job.get(), &UploadJob::Finished, [&](UploadResult result) {
        note();
        outcome.Result = result;
        ++outcome.Finished;
        outcome.AbortToFinishMs = clock.elapsed() - outcome.AbortToFinishMs;
    });
    if (tweak == "abort first"_L1)
        job->Abort();
    job->Start();
    outcome.OffThread |= !outcome.Statuses.isEmpty(); // nothing reported from within Start()
    if (tweak == "destroy"_L1) {
        (void)QTest::qWaitFor([&] { return !outcome.ProgressLines.isEmpty(); }, 20000);
        job.reset();
        return outcome;
    }
    (void)QTest::qWaitFor([&] { return outcome.Finished > 0; }, 30000);
    outcome.ErrorText = job->ErrorText();
    return outcome;
}

// A profile: a tar archive of a picture entry of pictureBytes and a keymap.
QByteArray ProfileBytes(qsizetype pictureBytes)
{
    QTemporaryDir dir;
    const QString picture = dir.filePath(u"p.png"_s);
    const QString profile = dir.filePath(u"p.hid"_s);
    cTar tar;
    tar.AddFile(picture, u"Game.png"_s, QString());
    tar.AddFile(QString(), u"Game.kcf"_s, u"<keymap/>"_s);
    const bool made = WriteFile(picture, TestData(pictureBytes)) && tar.CreateTarFile(profile);
    return made ? ReadAll(profile) : QByteArray();
}

// padmapper-cli upload of the file Game.hid, with a temporary folder of its
// own. Root opens a port that is locked for exclusive use all the same, so an
// unprivileged upload started by root runs without that privilege.
struct CliUpload
{
    QTemporaryDir dir;
    QTemporaryDir temp;
    QProcess cli;
    QString profile = dir.filePath(RemoteName);

    CliUpload(const QByteArray &file, const QStringList &options, bool unprivileged = false)
    {
        (void)WriteFile(profile, file);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TMPDIR"_s, temp.path());
        cli.setProcessEnvironment(environment);
        QStringList command = QStringList{QString::fromUtf8(PADMAPPER_CLI), u"upload"_s, profile} + options;
        if (unprivileged && ::geteuid() == 0)
            command = QStringList{u"setpriv"_s, u"--bounding-set"_s, u"-sys_admin"_s} + command;
        cli.start(command.takeFirst(), command);
    }
    bool Sending()
    {
        QByteArray out;
        while (!out.contains("Sending") && cli.waitForReadyRead(20000))
            out += cli.readAllStandardOutput();
        return out.contains("Sending");
    }
};

} // namespace

Q_DECLARE_METATYPE(FakePhone::Options)

class tst_ProfileUpload : public QObject
{
    Q_OBJECT

private slots:
    void remoteName_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("expected");
        QTest::newRow("Windows path") << u"C:\\Profiles\\Game.hid"_s << u"Game.hid"_s;
        QTest::newRow("keymap gets .hid") << u"/home/me/My.Game.kcf"_s << u"My.Game.hid"_s;
        QTest::newRow("no extension") << u"Game"_s << u"Game.hid"_s;
        QTest::newRow("never saved") << QString() << u"Unnamed.hid"_s;
    }
    void remoteName()
    {
        QFETCH(QString, path);
        QTEST(RemoteProfileName(path), "expected");
    }

    void errorTexts()
    {
        const SerialPort port = *SerialPort::Parse(u"/dev/rfcomm0"_s);
        QCOMPARE(FillPortPlaceholder(u"Opening COM%p ... (%p)"_s, port), u"Opening /dev/rfcomm0 ... (/dev/rfcomm0)"_s);
        QVERIFY(UploadErrorText(UploadError::PortInUse, port).contains(u"/dev/rfcomm0 is in use"_s));
    }

    // One upload per row, each phone behaviour a row: the result, the one
    // message, the AT commands the phone saw; whatever the ending, the port is
    // released and the owned copy deleted.
    void upload_data()
    {
        QTest::addColumn<FakePhone::Options>("options");
        QTest::addColumn<int>("size");
        QTest::addColumn<UploadResult>("result");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("commands");
        QTest::addColumn<QString>("tweak"); // of the request, or "abort" at the second piece
        QTest::addColumn<QString>("name");
        using A = FakePhone::Answer;
        const auto row = [](const char *what, FakePhone::Options phone, int size, UploadResult result,
                            const QString &message, int commands, const QString &tweak = {},
                            const QString &name = RemoteName) {
            QTest::newRow(what) << phone << size << result << message << commands << tweak << name;
        };
        const auto ok = UploadResult::Succeeded;
        const auto failed = UploadResult::Failed;
        // The test's language file gives key 10, which serves both OBEX messages.
        const QString obexFailed = u"OBEX kaputt"_s;

        row("one byte, after the usual pause", {}, 1, ok, {}, 1, u"usual pause"_s);
        // Non-ASCII on the wire, and placeholders in the name that stay as they are.
        row("300 KB under an odd name", {}, 300000, ok, {}, 1, {}, u"Spi\u00E8le f\u00FCr %b%t%r%f.hid"_s);
        row("longest name: no room for data in the first piece", {}, 3000, ok, {}, 1, {},
            QString(MaxRemoteNameLength - 4, u'n') + ".hid"_L1);
        // Any error to the vendor's command, even an extended one, falls back to the standard one.
        row("CME error, then CONNECT to the standard command", {.Eobex = A::CmeError}, 5000, ok, {}, 2);
        row("OK without CONNECT", {.Eobex = A::Ok}, 5000, failed, obexFailed, 1);
        row("ERROR to both", {.Eobex = A::Error, .Cprot = A::Error}, 5000, failed, obexFailed, 2);
        row("silent phone", {.Eobex = A::Silent}, 5000, failed,
            u"The phone didn't answer.\r\nPleas check the settings or try it once more."_s, 1);
        row("OBEX connect unanswered", {.StallAfter = 0}, 5000, failed, obexFailed, 1);
        row("stops answering mid-upload", {.StallAfter = 3}, 5000, failed, PutFailed, 1);
        // The job's own endings: aborted mid-transfer, destroyed, or aborted before it starts.
        row("aborted", {.LineBps = 115200}, 20000, UploadResult::Aborted, {}, 1, u"abort"_s);
        row("destroyed", {.LineBps = 115200}, 20000, UploadResult::Aborted, {}, 1, u"destroy"_s);
        row("aborted before it starts", {}, 20000, UploadResult::Aborted, {}, 0, u"abort first"_s);
        row("aborted while the phone is silent", {.Eobex = A::Silent}, 1, UploadResult::Aborted, {}, 1,
            u"Abort while silent"_s);
        // Refused before the port is opened.
        row("no speed", {}, 1, failed, u"The COM-Port is not set. Please check the settings !"_s, 0, u"no speed"_s);
        row("copy not written", {}, 1, failed, u"Creating File failed !"_s, 0, u"no copy"_s);
        row("name too long for the first packet", {}, 1, failed,
            u"The name for the phone is too long: it may have at most 504 characters."_s, 0, {},
            QString(MaxRemoteNameLength + 1, u'n'));
        row("port missing", {}, 1, failed, u"Couldn't connect to /dev/padmapper-none !"_s, 0, u"no port"_s);
    }
    void upload()
    {
        QFETCH(FakePhone::Options, options);
        QFETCH(int, size);
        QFETCH(QString, name);
        QFETCH(QString, tweak);
        QFETCH(UploadResult, result);
        QTemporaryDir dir;
        QVERIFY(WriteFile(dir.filePath(u"test.lng"_s),
                          "[Errors]\r\n10=OBEX kaputt\r\n[FileuploadWindow]\r\nStatus4=%f: %b at %r KB/s (%t)"));
        SetLanguage(dir.filePath(u"test.lng"_s));
        const auto english = qScopeGuard([] { SetLanguage(QString()); });
        FakePhone phone(options);
        QVERIFY(phone.Start());
        const QByteArray data = TestData(size);
        UploadRequest request = QuickRequest(phone.PortName(), dir.filePath(u"PMX1.tmp"_s), data);
        const QString copy = request.ProfilePath;
        request.RemoteName = name;
        if (tweak == "usual pause"_L1)
            request.OpenPauseMs = UploadRequest().OpenPauseMs;
        else if (tweak == "Abort while silent"_L1) // Abort does not wait out the read time-out
            request.ReadTimeoutMs = DefaultReadTimeoutMs;
        else if (tweak == "no speed"_L1)
            request.Speed = 0;
        else if (tweak == "no copy"_L1 && QFile::remove(copy))
            request.ProfilePath.clear();
        else if (tweak == "no port"_L1)
            request.Port = *SerialPort::Parse(u"/dev/padmapper-none"_s);
        const Outcome outcome = Upload(request, tweak);

        if (tweak != "destroy"_L1) // a destroyed job reports no result
            QCOMPARE(outcome.Result, result);
        QTEST(outcome.ErrorText, "message");
        QTEST(int(phone.Seen().AtCommands.size()), "commands");
        QVERIFY(!QFile::exists(copy));
        QVERIFY(!phone.PortIsExclusive());
        QCOMPARE(phone.Seen().Files.value(name), result == UploadResult::Succeeded ? data : QByteArray());
        QCOMPARE(phone.Seen().LastRequest.startsWith("81"), result == UploadResult::Succeeded); // Disconnect
        QCOMPARE(outcome.ProgressLines, outcome.ExpectedLines);
        QVERIFY(!outcome.OffThread);
        QCOMPARE(outcome.Finished, tweak == "destroy"_L1 ? 0 : 1);
        if (tweak.startsWith("abort"_L1) || tweak == "destroy"_L1)
            QCOMPARE(phone.Seen().LastRequest, tweak == "abort first"_L1 ? QByteArray() : AbortRequest);
        if (outcome.ErrorText == PutFailed)
            QCOMPARE(outcome.Statuses.last(), PutFailed);
        if (tweak == "usual pause"_L1) { // from the port's status line to the next
            // Measured where the queued reports arrive, which may shift either
            // end by some milliseconds: a band, not the exact second.
            const qint64 pause = outcome.StatusTimes.value(2) - outcome.StatusTimes.value(1);
            QVERIFY2(pause >= 900 && pause < 1500, QByteArray::number(pause));
        }
        if (tweak == "Abort while silent"_L1) // within 0.5 s, give or take the queued reports' delivery
            QVERIFY2(outcome.AbortToFinishMs < 500, QByteArray::number(outcome.AbortToFinishMs));
        if (result != UploadResult::Succeeded)
            return;
        const QStringList expected = {
            u"Generating File..."_s,
            u"Opening %1 ..."_s.arg(phone.PortName()),
            u"Initiating Obex Filetransfer..."_s,
            name + ": 0 at 0 KB/s (%t)"_L1,
            name + " ("_L1 + QString::number(double(size) / 1024, 'f', 2)
                + " KB) successfully transfered to phone !"_L1,
        };
        QCOMPARE(outcome.Statuses, expected);
    }

    // The sizes are the upload job's; the tool sends the user's file as it is
    // (neither copied nor deleted) and refuses what cannot work before the
    // port is touched.
    void cliUploads_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<bool>("obex"); // whether the phone has OBEX
        QTest::addColumn<QString>("message"); // "" for a success
        QTest::addColumn<int>("commands"); // AT commands the phone received
        const QByteArray profile = ProfileBytes(2000);
        QTest::newRow("a profile") << profile << QStringList() << true << QString() << 1;
        QTest::newRow("phone without OBEX")
            << profile << QStringList() << false << u"Initiating Obex-Protocol failed !"_s << 1;
        QTest::newRow("a keymap is not a profile") << QByteArray("<SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION/>")
                                                   << QStringList() << true << u"is not a profile"_s << 0;
    }
    void cliUploads()
    {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, options);
        QFETCH(bool, obex);
        QFETCH(QString, message);
        FakePhone phone({.Eobex = obex ? FakePhone::Answer::Connect : FakePhone::Answer::Ok});
        QVERIFY(phone.Start());
        CliUpload upload(file, QStringList{u"--port"_s, phone.PortName()} + options);
        QVERIFY(upload.cli.waitForFinished(30000));
        const QString err = QString::fromLocal8Bit(upload.cli.readAllStandardError());
        QVERIFY2(message.isEmpty() ? err.isEmpty() : err.contains(message), qPrintable(err));
        QCOMPARE(upload.cli.exitCode(), message.isEmpty() ? 0 : 1);
        QCOMPARE(phone.Seen().Files.value(RemoteName), message.isEmpty() ? file : QByteArray());
        QTEST(int(phone.Seen().AtCommands.size()), "commands");
        QVERIFY(QDir(upload.temp.path()).isEmpty());
        QCOMPARE(ReadAll(upload.profile), file);
    }

    // A signal aborts like the Abort button, which closes the port, and then
    // ends the tool as the signal does; a second signal, or a phone that stops
    // answering, ends it sooner. A second upload on the port that the first
    // holds, or left locked when it was killed, says which it is.
    void cliInterrupted_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::addColumn<bool>("twice");
        QTest::addColumn<int>("stallAfter"); // requests the phone answers
        QTest::addColumn<int>("withinMs");
        QTest::addColumn<QString>("busy"); // what a second upload says; %1: the first upload's process
        QTest::newRow("Ctrl-C") << int(SIGINT) << false << -1 << 5000 << QString();
        // Connect and the first piece are answered, the Abort is not.
        QTest::newRow("silent phone: ends before its read time-out")
            << int(SIGTERM) << false << 2 << 4000 << QString();
        QTest::newRow("a second signal ends at once") << int(SIGHUP) << true << 2 << 2000 << QString();
        QTest::newRow("held by another upload")
            << 0 << false << -1 << 0 << u"is open in another program (padmapper-cli, process %1)."_s;
        QTest::newRow("left locked by a killed upload")
            << int(SIGKILL) << false << -1 << 0 << u"is locked, yet no program of yours has it open"_s;
    }
    void cliInterrupted()
    {
        QFETCH(int, signalNumber);
        QFETCH(bool, twice);
        QFETCH(int, stallAfter);
        QFETCH(int, withinMs);
        QFETCH(QString, busy);
        FakePhone phone({.StallAfter = stallAfter, .LineBps = 115200});
        QVERIFY(phone.Start());
        const QByteArray profile = ProfileBytes(100000);
        CliUpload upload(profile, {u"--port"_s, phone.PortName()});
        QVERIFY(upload.Sending());
        const auto tool = pid_t(upload.cli.processId());
        if (!busy.isEmpty()) {
            if (signalNumber != 0) {
                QCOMPARE(::kill(tool, signalNumber), 0);
                QVERIFY(upload.cli.waitForFinished(10000));
            }
            QVERIFY(phone.PortIsExclusive());
            CliUpload second(profile, {u"--port"_s, phone.PortName()}, true);
            QVERIFY(second.cli.waitForFinished(30000));
            QCOMPARE(second.cli.exitCode(), 1);
            const QString err = QString::fromLocal8Bit(second.cli.readAllStandardError());
            QVERIFY2(err.contains(busy.replace("%1"_L1, QString::number(tool))), qPrintable(err));
            upload.cli.kill();
            return;
        }
        QCOMPARE(::kill(tool, signalNumber), 0);
        QTRY_COMPARE_WITH_TIMEOUT(phone.Seen().LastRequest, AbortRequest, 10000);
        QElapsedTimer timer;
        timer.start();
        if (twice)
            QCOMPARE(::kill(tool, signalNumber), 0);
        QTRY_COMPARE_WITH_TIMEOUT(upload.cli.state(), QProcess::NotRunning, 30000);
        QVERIFY2(timer.elapsed() < withinMs, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(upload.cli.exitStatus(), QProcess::CrashExit);
        QCOMPARE(upload.cli.exitCode(), signalNumber);
        QCOMPARE(upload.cli.readAllStandardError().contains("upload aborted"), stallAfter < 0);
        QVERIFY(!phone.PortIsExclusive());
    }

    void cliListsPorts()
    {
        QProcess cli;
        cli.start(QString::fromUtf8(PADMAPPER_CLI), {u"ports"_s});
        QVERIFY(cli.waitForFinished(30000));
        QCOMPARE(cli.exitCode(), 0);
        QVERIFY(cli.readAllStandardOutput().startsWith("/dev/rfcomm0\n/dev/ttyACM0\n/dev/ttyUSB0\n"));
    }
};

QTEST_GUILESS_MAIN(tst_ProfileUpload)
#include "tst_profileupload.moc"
