// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakephone.h"
#include "phone/obexpacket.h"
#include "phone/profileupload.h"
#include "settings/languagetext.h"

#include "../testfiles.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

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

struct Outcome
{
    UploadResult Result = UploadResult::Failed;
    UploadError Error = UploadError::None;
    QString ErrorText;
    QStringList Statuses;
    int ProgressEvents = 0;
    bool CopyWritten = false;
    bool CopyLeft = false;
};

// Runs one upload of data to the phone on this thread; abortAtProgress > 0
// presses Abort at that progress event.
Outcome Upload(const QString &portName, const QByteArray &data, int abortAtProgress = 0,
               std::function<void(UploadRequest &)> adjust = {})
{
    QTemporaryDir dir;
    const QString copyPath = dir.filePath(u"PMX1.tmp"_s);
    Outcome outcome;
    UploadRequest request;
    request.Port.PortName = portName;
    request.Port.ComPort = 1;
    request.Port.Speed = 115200;
    request.RemoteName = RemoteName;
    request.ReadTimeoutMs = QuickTimeoutMs;
    request.OpenPauseMs = 0;
    request.WriteProfileCopy = [&] {
        outcome.CopyWritten = true;
        return WriteFile(copyPath, data) ? copyPath : QString();
    };
    if (adjust)
        adjust(request);
    ProfileUpload upload(request);
    QObject::connect(&upload, &ProfileUpload::StatusChanged, [&](const QString &text) { outcome.Statuses << text; });
    QObject::connect(&upload, &ProfileUpload::ProgressChanged, [&] {
        if (++outcome.ProgressEvents == abortAtProgress)
            upload.Abort();
    });
    outcome.Result = upload.Run();
    outcome.Error = upload.Error();
    outcome.ErrorText = upload.ErrorText();
    outcome.CopyLeft = QFile::exists(copyPath);
    return outcome;
}

// A port that is still held cannot be opened again: this proves it was closed.
bool PortIsFree(const QString &portName)
{
    SerialLink link;
    return link.OpenPort(portName, 115200);
}

// padmapper-cli upload of a profile Game.hid holding data, with a temporary
// folder of its own.
struct CliUpload
{
    QTemporaryDir dir;
    QTemporaryDir temp;
    QProcess cli;

    CliUpload(const QByteArray &data, const QStringList &options)
    {
        const QString profile = dir.filePath(RemoteName);
        (void)WriteFile(profile, data);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TMPDIR"_s, temp.path());
        cli.setProcessEnvironment(environment);
        cli.start(QString::fromUtf8(PADMAPPER_CLI), QStringList{u"upload"_s, profile} + options);
    }
    bool TempFolderEmpty() const { return QDir(temp.path()).isEmpty(); }
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
        PortSettings port;
        port.PortName = u"/dev/rfcomm0"_s;
        port.ComPort = 3;
#ifdef Q_OS_WIN
        QCOMPARE(UploadErrorText(UploadError::PortNotOpened, port), u"Couldn't connect to COM3 !"_s);
#else
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
        const qsizetype limit = FirstPieceLimit(RemoteName);
        QTest::newRow("empty") << qsizetype(0);
        QTest::newRow("one byte") << qsizetype(1);
        QTest::newRow("one-packet limit") << limit;
        QTest::newRow("one byte more") << limit + 1;
        QTest::newRow("50 KB") << qsizetype(50000);
        QTest::newRow("300 KB") << qsizetype(300000);
    }
    void sizes()
    {
        QFETCH(qsizetype, size);
        FakePhone phone;
        QVERIFY(phone.Start());
        const QByteArray data = TestData(size);
        const Outcome outcome = Upload(phone.PortName(), data);
        QCOMPARE(outcome.Result, UploadResult::Succeeded);
        QCOMPARE(outcome.ErrorText, QString());
        QCOMPARE(phone.Files().value(RemoteName), data);
        QCOMPARE(phone.Disconnects(), 1);
        QCOMPARE(phone.AtCommands(), QStringList{u"AT*EOBEX"_s});
        QVERIFY(!outcome.CopyLeft);
        QVERIFY(PortIsFree(phone.PortName()));

        const QString kilobytes = QString::number(double(size) / 1024, 'f', 2);
        const QStringList expected = {
            u"Generating File..."_s,
            u"Opening %1 ..."_s.arg(phone.PortName()),
            u"Initiating Obex Filetransfer..."_s,
            u"Sending Game.hid  - %t Bytes..."_s,
            u"Game.hid (%1 KB) successfully transfered to phone !"_s.arg(kilobytes),
        };
        QCOMPARE(outcome.Statuses, expected);
        const qsizetype pieces = size <= FirstPieceLimit(RemoteName)
                                     ? 1
                                     : 1 + (size - FirstPieceLimit(RemoteName) + PieceLimit - 1) / PieceLimit;
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
        if (options.VanishAfter < 0)
            QVERIFY(PortIsFree(phone.PortName()));
    }

    void failuresBeforeThePort_data()
    {
        QTest::addColumn<QString>("port");
        QTest::addColumn<qint32>("speed");
        QTest::addColumn<bool>("copyFails");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("copyWritten"); // by the test's own writer
        QTest::newRow("no port") << QString() << 115200 << false
                                 << u"The COM-Port is not set. Please check the settings !"_s << false;
        QTest::newRow("no speed") << u"/dev/null"_s << 0 << false
                                  << u"The COM-Port is not set. Please check the settings !"_s << false;
        QTest::newRow("copy not written") << u"/dev/null"_s << 115200 << true << u"Creating File failed !"_s << false;
        QTest::newRow("port missing") << u"/dev/padmapper-none"_s << 115200 << false
                                      << u"Couldn't connect to /dev/padmapper-none !"_s << true;
    }
    void failuresBeforeThePort()
    {
        QFETCH(QString, port);
        QFETCH(qint32, speed);
        QFETCH(bool, copyFails);
        const Outcome outcome = Upload(port, "x", 0, [&](UploadRequest &request) {
            request.Port.Speed = speed;
            if (copyFails)
                request.WriteProfileCopy = [] { return QString(); };
        });
        QCOMPARE(outcome.Result, UploadResult::Failed);
        QTEST(outcome.ErrorText, "message");
        QTEST(outcome.CopyWritten, "copyWritten");
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
        QCOMPARE(phone.Requests().last().toHex(' '), QByteArray("ff 00 03"));
        QVERIFY(phone.Files().isEmpty());
        QVERIFY(!outcome.CopyLeft);
        QVERIFY(PortIsFree(phone.PortName()));
    }

    // The sizes are the upload job's; the tool adds its reports and clean-up.
    void cliUploads()
    {
        const qsizetype size = FirstPieceLimit(RemoteName) + 1;
        FakePhone phone;
        QVERIFY(phone.Start());
        CliUpload upload(TestData(size), {u"--port"_s, phone.PortName()});
        QVERIFY(upload.cli.waitForFinished(30000));
        QCOMPARE(upload.cli.readAllStandardError(), QByteArray());
        QCOMPARE(upload.cli.exitCode(), 0);
        const QByteArray out = upload.cli.readAllStandardOutput();
        QVERIFY2(out.startsWith("Generating File...\nOpening " + phone.PortName().toUtf8() + " ...\n"), out);
        QVERIFY2(out.endsWith(" successfully transfered to phone !\n"), out);
        QCOMPARE(phone.Files().value(RemoteName), TestData(size));
        QVERIFY(upload.TempFolderEmpty());
    }

    void cliReportsFailure()
    {
        FakePhone::Options options;
        options.Eobex = FakePhone::Answer::Ok;
        FakePhone phone(options);
        QVERIFY(phone.Start());
        CliUpload upload("abc", {u"--port"_s, phone.PortName(), u"--name"_s, u"Other.hid"_s});
        QVERIFY(upload.cli.waitForFinished(30000));
        QCOMPARE(upload.cli.exitCode(), 1);
        QVERIFY(upload.cli.readAllStandardError().contains("Initiating Obex-Protocol failed !"));
        QVERIFY(upload.TempFolderEmpty());
    }

    void cliCtrlCAborts()
    {
        FakePhone::Options options;
        options.LineBps = 115200;
        FakePhone phone(options);
        QVERIFY(phone.Start());
        CliUpload upload(TestData(100000), {u"--port"_s, phone.PortName()});
        QByteArray out;
        while (!out.contains("Sending") && upload.cli.waitForReadyRead(20000))
            out += upload.cli.readAllStandardOutput();
        QVERIFY2(out.contains("Sending"), out);
        ::kill(pid_t(upload.cli.processId()), SIGINT);
        QVERIFY(upload.cli.waitForFinished(30000));
        QCOMPARE(upload.cli.exitStatus(), QProcess::NormalExit);
        QCOMPARE(upload.cli.exitCode(), 1);
        QVERIFY(upload.cli.readAllStandardError().contains("aborted"));
        QCOMPARE(phone.Requests().last().toHex(' '), QByteArray("ff 00 03"));
        QVERIFY(upload.TempFolderEmpty());
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
