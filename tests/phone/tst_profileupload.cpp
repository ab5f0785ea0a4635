// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakephone.h"
#include "phone/obexpacket.h"
#include "phone/profileupload.h"
#include "profile/tar.h"
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
// Short enough to keep the silent cases quick; the real 5000 ms is proven by
// the serial link's test.
constexpr int QuickTimeoutMs = 300;

QByteArray TestData(qsizetype size)
{
    QByteArray data(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        data[i] = char((i * 13 + i / 509) & 0xFF);
    return data;
}

// The sending line of the tests' language, with every placeholder it has.
constexpr QLatin1StringView SendingLine = "%f: %b at %r KB/s (%t)"_L1;

struct Outcome
{
    UploadResult Result = UploadResult::Failed;
    UploadError Error = UploadError::None;
    QString ErrorText;
    QStringList Statuses;
    QList<qint64> StatusTimes; // ms since the start
    int ProgressEvents = 0;
    // Each progress line, and what SendingLine says for its figures.
    QStringList ProgressLines;
    QStringList ExpectedLines;
    bool CopyLeft = false;
};

// Runs one upload of data to the phone on this thread, from a copy the upload
// owns; abortAtProgress > 0 presses Abort at that progress event.
Outcome Upload(const QString &portName, const QByteArray &data, int abortAtProgress = 0,
               std::function<void(UploadRequest &)> adjust = {})
{
    QTemporaryDir dir;
    const QString copyPath = dir.filePath(u"PMX1.tmp"_s);
    Outcome outcome;
    UploadRequest request;
    request.Port = *SerialPort::Parse(portName);
    request.Speed = 115200;
    request.RemoteName = RemoteName;
    request.ReadTimeoutMs = QuickTimeoutMs;
    request.OpenPauseMs = 0;
    request.ProfilePath = WriteFile(copyPath, data) ? copyPath : QString();
    request.OwnsProfile = true;
    if (adjust)
        adjust(request);
    ProfileUpload upload(request);
    QElapsedTimer clock;
    clock.start();
    QObject::connect(&upload, &ProfileUpload::StatusChanged, [&](const QString &text) {
        outcome.Statuses << text;
        outcome.StatusTimes << clock.elapsed();
    });
    QObject::connect(&upload, &ProfileUpload::ProgressChanged,
                     [&](qint64 bytesSent, qint64, qint32 rate, const QString &text) {
                         outcome.ProgressLines << text;
                         const QString rateKB = QString::number(std::lround(rate / 1024.0));
                         outcome.ExpectedLines << request.RemoteName + ": "_L1 + QString::number(bytesSent)
                                                      + " at "_L1 + rateKB + " KB/s (%t)"_L1;
                         if (++outcome.ProgressEvents == abortAtProgress)
                             upload.Abort();
                     });
    outcome.Result = upload.Run();
    outcome.Error = upload.Error();
    outcome.ErrorText = upload.ErrorText();
    outcome.CopyLeft = QFile::exists(copyPath);
    return outcome;
}

QByteArray LastRequest(const FakePhone &phone)
{
    const QList<QByteArray> requests = phone.Requests();
    return requests.isEmpty() ? QByteArray() : requests.last().toHex(' ');
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
    bool TempFolderEmpty() const { return QDir(temp.path()).isEmpty(); }
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
#ifdef Q_OS_WIN
        const SerialPort port = SerialPort::FromNumber(3);
        QCOMPARE(UploadErrorText(UploadError::PortNotOpened, port), u"Couldn't connect to COM3 !"_s);
#else
        const SerialPort port = *SerialPort::Parse(u"/dev/rfcomm0"_s);
        QCOMPARE(UploadErrorText(UploadError::PortNotOpened, port), u"Couldn't connect to /dev/rfcomm0 !"_s);
        QCOMPARE(FillPortPlaceholder(u"Opening COM%p ... (%p)"_s, port), u"Opening /dev/rfcomm0 ... (/dev/rfcomm0)"_s);
#endif
        QVERIFY(UploadErrorText(UploadError::PortInUse, port).contains(u"in use"_s));
        // Key 10 serves two messages; a language file's key 10 replaces both.
        QTemporaryDir dir;
        QVERIFY(WriteFile(dir.filePath(u"test.lng"_s), "[Errors]\r\n10=OBEX kaputt\r\n"));
        SetLanguage(dir.filePath(u"test.lng"_s));
        const QString started = UploadErrorText(UploadError::ObexNotStarted, port);
        const QString connected = UploadErrorText(UploadError::ObexNotConnected, port);
        SetLanguage(QString());
        QCOMPARE(started, u"OBEX kaputt"_s);
        QCOMPARE(connected, u"OBEX kaputt"_s);
    }

    void sizes_data()
    {
        QTest::addColumn<qsizetype>("size");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("defaultPause");
        const qsizetype limit = FirstPieceLimit(RemoteName);
        QTest::newRow("empty") << qsizetype(0) << RemoteName << false;
        QTest::newRow("one byte, after the usual pause") << qsizetype(1) << RemoteName << true;
        QTest::newRow("one-packet limit") << limit << RemoteName << false;
        QTest::newRow("one byte more") << limit + 1 << RemoteName << false;
        QTest::newRow("300 KB") << qsizetype(300000) << RemoteName << false;
        // No room for data beside the longest name: the first piece is empty.
        QTest::newRow("longest name") << qsizetype(3000) << QString(MaxRemoteNameLength - 4, u'n') + ".hid"_L1
                                      << false;
        QTest::newRow("non-ASCII name") << qsizetype(3000) << u"Spi\u00E8le f\u00FCr \u00C4.hid"_s << false;
        QTest::newRow("placeholders in the name stay") << qsizetype(3000) << u"A%b%t%r%f.hid"_s << false;
    }
    void sizes()
    {
        QFETCH(qsizetype, size);
        QFETCH(QString, name);
        QFETCH(bool, defaultPause);
        QTemporaryDir dir;
        const QByteArray language = "[FileuploadWindow]\r\nStatus4=" + QByteArray(SendingLine.latin1());
        QVERIFY(WriteFile(dir.filePath(u"test.lng"_s), language));
        SetLanguage(dir.filePath(u"test.lng"_s));
        const auto english = qScopeGuard([] { SetLanguage(QString()); });
        FakePhone phone;
        QVERIFY(phone.Start());
        const QByteArray data = TestData(size);
        const Outcome outcome = Upload(phone.PortName(), data, 0, [&](UploadRequest &request) {
            request.RemoteName = name;
            if (defaultPause)
                request.OpenPauseMs = UploadRequest().OpenPauseMs;
        });
        QCOMPARE(outcome.Result, UploadResult::Succeeded);
        QCOMPARE(outcome.ErrorText, QString());
        QCOMPARE(phone.Files().value(name), data);
        QCOMPARE(phone.Disconnects(), 1);
        QCOMPARE(phone.AtCommands(), QStringList{u"AT*EOBEX"_s});
        QVERIFY(!outcome.CopyLeft);
        QVERIFY(!phone.PortIsExclusive());
        if (defaultPause) { // from the port's status line to the next
            const qint64 pause = outcome.StatusTimes.value(2) - outcome.StatusTimes.value(1);
            QVERIFY2(pause >= 1000 && pause < 1500, QByteArray::number(pause));
            QCOMPARE(UploadRequest().ReadTimeoutMs, 5000);
        }

        const QString kilobytes = QString::number(double(size) / 1024, 'f', 2);
        const QStringList expected = {
            u"Generating File..."_s,
            u"Opening %1 ..."_s.arg(phone.PortName()),
            u"Initiating Obex Filetransfer..."_s,
            name + ": 0 at 0 KB/s (%t)"_L1,
            name + " ("_L1 + kilobytes + " KB) successfully transfered to phone !"_L1,
        };
        QCOMPARE(outcome.Statuses, expected);
        QCOMPARE(outcome.ProgressLines, outcome.ExpectedLines);
        const qsizetype pieces = size <= FirstPieceLimit(name)
                                     ? 1
                                     : 1 + (size - FirstPieceLimit(name) + PieceLimit - 1) / PieceLimit;
        QCOMPARE(outcome.ProgressEvents, pieces);
    }

    void failures_data()
    {
        QTest::addColumn<FakePhone::Options>("options");
        QTest::addColumn<UploadResult>("result");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QStringList>("commands");
        using A = FakePhone::Answer;
        const QStringList eobex{u"AT*EOBEX"_s};
        const QStringList both{u"AT*EOBEX"_s, u"AT+CPROT=0"_s};
        const auto with = [](auto change) {
            FakePhone::Options options;
            change(options);
            return options;
        };

        QTest::newRow("ERROR, then CONNECT to the standard command")
            << with([](auto &o) { o.Eobex = A::Error; }) << UploadResult::Succeeded << QString() << both;
        QTest::newRow("CME error falls back too")
            << with([](auto &o) { o.Eobex = A::CmeError; }) << UploadResult::Succeeded << QString() << both;
        QTest::newRow("OK without CONNECT") << with([](auto &o) { o.Eobex = A::Ok; }) << UploadResult::Failed
                                            << u"Initiating Obex-Protocol failed !"_s << eobex;
        QTest::newRow("ERROR to both") << with([](auto &o) { o.Eobex = o.Cprot = A::Error; }) << UploadResult::Failed
                                       << u"Initiating Obex-Protocol failed !"_s << both;
        QTest::newRow("silent phone")
            << with([](auto &o) { o.Eobex = A::Silent; }) << UploadResult::Failed
            << u"The phone didn't answer.\r\nPleas check the settings or try it once more."_s << eobex;
        QTest::newRow("echo, then nothing") << with([](auto &o) { o.Eobex = A::EchoOnly; }) << UploadResult::Failed
                                            << u"Initiating Obex-Protocol failed !"_s << eobex;
        QTest::newRow("OBEX connect unanswered") << with([](auto &o) { o.StallAfter = 0; }) << UploadResult::Failed
                                                 << u"Initializing Obex-Protocol failed !"_s << eobex;
        QTest::newRow("stops answering mid-upload") << with([](auto &o) { o.StallAfter = 3; })
                                                    << UploadResult::Failed << u"Fileupload failed !"_s << eobex;
        QTest::newRow("refuses a piece") << with([](auto &o) { o.RejectPut = 2; }) << UploadResult::Failed
                                         << u"Fileupload failed !"_s << eobex;
        QTest::newRow("line goes away mid-upload") << with([](auto &o) { o.VanishAfter = 3; })
                                                   << UploadResult::Failed << u"Fileupload failed !"_s << eobex;
    }
    void failures()
    {
        QFETCH(FakePhone::Options, options);
        FakePhone phone(options);
        QVERIFY(phone.Start());
        const QByteArray data = TestData(5000);
        const Outcome outcome = Upload(phone.PortName(), data);
        QTEST(outcome.Result, "result");
        QTEST(outcome.ErrorText, "message");
        QTEST(phone.AtCommands(), "commands");
        QVERIFY(!outcome.CopyLeft);
        if (outcome.Result == UploadResult::Succeeded)
            QCOMPARE(phone.Files().value(RemoteName), data);
        if (outcome.Error == UploadError::PutFailed)
            QCOMPARE(outcome.Statuses.last(), u"Fileupload failed !"_s);
        QVERIFY(!phone.PortIsExclusive());
    }

    void failuresBeforeThePort_data()
    {
        QTest::addColumn<qint32>("speed");
        QTest::addColumn<bool>("copyFails");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("message");
        const QString port = u"/dev/padmapper-none"_s;
        QTest::newRow("no speed") << 0 << false << RemoteName
                                  << u"The COM-Port is not set. Please check the settings !"_s;
        QTest::newRow("copy not written") << 115200 << true << RemoteName << u"Creating File failed !"_s;
        QTest::newRow("name too long for the first packet")
            << 115200 << false << QString(MaxRemoteNameLength + 1, u'n')
            << u"The name for the phone is too long: it may have at most 504 characters."_s;
        QTest::newRow("port missing") << 115200 << false << RemoteName
                                      << u"Couldn't connect to %1 !"_s.arg(port);
    }
    void failuresBeforeThePort()
    {
        QFETCH(qint32, speed);
        QFETCH(bool, copyFails);
        QFETCH(QString, name);
        const Outcome outcome = Upload(u"/dev/padmapper-none"_s, "x", 0, [&](UploadRequest &request) {
            request.Speed = speed;
            request.RemoteName = name;
            if (copyFails && QFile::remove(request.ProfilePath))
                request.ProfilePath.clear();
        });
        QCOMPARE(outcome.Result, UploadResult::Failed);
        QTEST(outcome.ErrorText, "message");
        QVERIFY(!outcome.CopyLeft);
    }

    void abortEndsAfterTheCurrentPiece()
    {
        FakePhone phone;
        QVERIFY(phone.Start());
        const Outcome outcome = Upload(phone.PortName(), TestData(20000), 2);
        QCOMPARE(outcome.Result, UploadResult::Aborted);
        QCOMPARE(outcome.ErrorText, QString());
        QCOMPARE(outcome.ProgressEvents, 2);
        QCOMPARE(LastRequest(phone), QByteArray("ff 00 03"));
        QVERIFY(phone.Files().isEmpty());
        QVERIFY(!outcome.CopyLeft);
        QVERIFY(!phone.PortIsExclusive());
    }

    // The serial job runs the upload on a thread of its own and reports on the
    // one that made it, Finished once and last; aborted or destroyed mid-transfer
    // it closes the port and deletes its copy.
    void serialJob_data()
    {
        QTest::addColumn<int>("ending"); // 0 runs to the end, 1 Abort(), 2 destroyed
        QTest::newRow("runs to the end") << 0;
        QTest::newRow("aborted") << 1;
        QTest::newRow("destroyed") << 2;
    }
    void serialJob()
    {
        QFETCH(int, ending);
        FakePhone::Options options;
        options.LineBps = 115200;
        FakePhone phone(options);
        QVERIFY(phone.Start());
        QTemporaryDir dir;
        UploadRequest request;
        request.Port = *SerialPort::Parse(phone.PortName());
        request.Speed = 115200;
        request.RemoteName = RemoteName;
        request.OpenPauseMs = 0;
        request.ProfilePath = dir.filePath(u"PMX1.tmp"_s);
        request.OwnsProfile = true;
        const QByteArray data = TestData(20000);
        QVERIFY(WriteFile(request.ProfilePath, data));
        QStringList events;
        bool offThread = false;
        const auto note = [&](const QString &event) {
            events << event;
            offThread |= QThread::currentThread() != thread();
        };
        // Without a receiver, as the console tool connects: called where emitted.
        std::unique_ptr<UploadJob> job = MakeUploadJob(request);
        connect(job.get(), &UploadJob::StatusChanged, [&] { note(u"status"_s); });
        connect(job.get(), &UploadJob::ProgressChanged, [&] { note(u"progress"_s); });
        connect(job.get(), &UploadJob::Finished, [&](UploadResult result) { note(u"finished %1"_s.arg(int(result))); });
        job->Start();
        QVERIFY(events.isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(events.contains(u"progress"_s), 20000);
        if (ending == 1)
            job->Abort();
        else if (ending == 2)
            job.reset();
        if (job)
            QTRY_VERIFY_WITH_TIMEOUT(events.last().startsWith(u"finished"_s), 20000);

        QVERIFY(!offThread);
        QCOMPARE(events.filter(u"finished"_s).size(), ending == 2 ? 0 : 1);
        if (ending == 0) {
            QCOMPARE(events.last(), u"finished %1"_s.arg(int(UploadResult::Succeeded)));
            QCOMPARE(events.count(u"status"_s), 5);
            QCOMPARE(phone.Files().value(RemoteName), data);
        } else {
            QCOMPARE(LastRequest(phone), QByteArray("ff 00 03"));
            QVERIFY(phone.Files().isEmpty());
        }
        if (ending == 1)
            QCOMPARE(events.last(), u"finished %1"_s.arg(int(UploadResult::Aborted)));
        if (job)
            QCOMPARE(job->ErrorText(), QString());
        QVERIFY(!QFile::exists(request.ProfilePath));
        QVERIFY(!phone.PortIsExclusive());
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
        QTest::newRow("a keymap is not a profile")
            << QByteArray("<SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION/>") << QStringList() << true
            << u"is not a profile"_s << 0;
        QTest::newRow("junk is not a profile")
            << TestData(5000) << QStringList() << true << u"is not a profile"_s << 0;
        QTest::newRow("name too long for the phone")
            << profile << QStringList{u"--name"_s, QString(MaxRemoteNameLength + 1, u'n')} << true
            << u"The name for the phone is too long: it may have at most 504 characters."_s << 0;
    }
    void cliUploads()
    {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, options);
        QFETCH(bool, obex);
        QFETCH(QString, message);
        FakePhone::Options answers;
        answers.Eobex = obex ? FakePhone::Answer::Connect : FakePhone::Answer::Ok;
        FakePhone phone(answers);
        QVERIFY(phone.Start());
        CliUpload upload(file, QStringList{u"--port"_s, phone.PortName()} + options);
        QVERIFY(upload.cli.waitForFinished(30000));
        const QString err = QString::fromLocal8Bit(upload.cli.readAllStandardError());
        QVERIFY2(message.isEmpty() ? err.isEmpty() : err.contains(message), qPrintable(err));
        QCOMPARE(upload.cli.exitCode(), message.isEmpty() ? 0 : 1);
        QCOMPARE(phone.Files().value(RemoteName), message.isEmpty() ? file : QByteArray());
        QTEST(int(phone.AtCommands().size()), "commands");
        QVERIFY(upload.TempFolderEmpty());
        QCOMPARE(ReadAll(upload.profile), file);
    }

    // Each signal aborts like the Abort button, which closes the port, and
    // then ends the tool as the signal does; a second signal, or a phone that
    // stops answering, ends it sooner, with the port released all the same.
    void cliSignalsAbortFirst_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::addColumn<bool>("twice");
        QTest::addColumn<int>("stallAfter"); // requests the phone answers
        QTest::addColumn<int>("withinMs");
        QTest::newRow("SIGTERM") << int(SIGTERM) << false << -1 << 5000;
        QTest::newRow("SIGHUP") << int(SIGHUP) << false << -1 << 5000;
        QTest::newRow("Ctrl-C") << int(SIGINT) << false << -1 << 5000;
        // Connect and the first piece are answered, the Abort is not.
        QTest::newRow("silent phone: ends before its read time-out") << int(SIGTERM) << false << 2 << 4000;
        QTest::newRow("a second signal ends at once") << int(SIGHUP) << true << 2 << 2000;
    }
    void cliSignalsAbortFirst()
    {
        QFETCH(int, signalNumber);
        QFETCH(bool, twice);
        QFETCH(int, stallAfter);
        QFETCH(int, withinMs);
        FakePhone::Options options;
        options.LineBps = 115200;
        options.StallAfter = stallAfter;
        FakePhone phone(options);
        QVERIFY(phone.Start());
        CliUpload upload(ProfileBytes(100000), {u"--port"_s, phone.PortName()});
        QVERIFY(upload.Sending());
        const auto tool = pid_t(upload.cli.processId());
        QCOMPARE(::kill(tool, signalNumber), 0);
        QTRY_COMPARE_WITH_TIMEOUT(LastRequest(phone), QByteArray("ff 00 03"), 10000);
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

    // A second upload on a port that a first one holds, or left locked when it
    // was killed, says which it is.
    void cliExplainsABusyPort_data()
    {
        QTest::addColumn<bool>("killFirst");
        QTest::addColumn<QString>("message"); // %1: the first upload's process
        QTest::newRow("held by another upload")
            << false << u"is open in another program (padmapper-cli, process %1)."_s;
        QTest::newRow("left locked by a killed upload")
            << true << u"is locked, yet no program of yours has it open"_s;
    }
    void cliExplainsABusyPort()
    {
        QFETCH(bool, killFirst);
        QFETCH(QString, message);
        FakePhone::Options options;
        options.LineBps = 115200;
        FakePhone phone(options);
        QVERIFY(phone.Start());
        const QByteArray profile = ProfileBytes(100000);
        CliUpload first(profile, {u"--port"_s, phone.PortName()});
        QVERIFY(first.Sending());
        const qint64 firstId = first.cli.processId();
        if (killFirst) {
            QCOMPARE(::kill(pid_t(firstId), SIGKILL), 0);
            QVERIFY(first.cli.waitForFinished(10000));
            QVERIFY(phone.PortIsExclusive());
        }
        CliUpload second(profile, {u"--port"_s, phone.PortName()}, true);
        QVERIFY(second.cli.waitForFinished(30000));
        QCOMPARE(second.cli.exitCode(), 1);
        const QString err = QString::fromLocal8Bit(second.cli.readAllStandardError());
        QVERIFY2(err.contains(message.replace("%1"_L1, QString::number(firstId))), qPrintable(err));
        first.cli.kill();
        (void)first.cli.waitForFinished(10000);
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
