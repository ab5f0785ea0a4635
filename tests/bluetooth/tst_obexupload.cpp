// SPDX-License-Identifier: GPL-3.0-or-later
// Runs under run-with-mock-buses: BlueZ with the paired "Test Phone" on the
// system bus, the obexd stand-in (or, with --real-obexd, the installed obexd
// without a radio) on the session bus.
#include "bluetooth/obexuploadjob.h"
#include "profile/tempfiles.h"

#include "../testfiles.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QElapsedTimer>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(ObexMethod)
Q_DECLARE_METATYPE(ObexUploadError)
Q_DECLARE_METATYPE(UploadResult)

namespace {

const QString Phone = u"00:11:22:33:44:55"_s;
const QString Obex = u"org.bluez.obex"_s;
const QString Cli = QString::fromUtf8(PADMAPPER_CLI);
constexpr int ConnectDelayMs = 3000;

QDBusMessage ObexCall(const QString &path, const QString &interface, const QString &method,
                      const QVariantList &args = {})
{
    QDBusMessage call = QDBusMessage::createMethodCall(Obex, path, interface, method);
    call.setArguments(args);
    return QDBusConnection::sessionBus().call(call);
}

// Every row starts from the stand-in's plain behaviour.
bool SetMode(const QVariantMap &mode)
{
    QVariantMap plain{{u"Session"_s, u"accept"_s}, {u"RefuseMessage"_s, QString()},
                      {u"ConnectDelay"_s, 0},      {u"Transfer"_s, u"complete"_s},
                      {u"RejectAfter"_s, 1},       {u"ChunkSize"_s, 4096},
                      {u"Interval"_s, 20}};
    plain.insert(mode);
    return ObexCall(u"/org/bluez/obex"_s, u"org.bluez.obex.Mock"_s, u"SetMode"_s, {plain}).type()
           == QDBusMessage::ReplyMessage;
}

bool IsStandIn()
{
    return SetMode({});
}

QStringList ReceivedFiles()
{
    return QDir(qEnvironmentVariable("OBEX_MOCK_RECEIVED")).entryList(QDir::Files);
}

void ClearReceived()
{
    for (const QString &name : ReceivedFiles())
        QFile::remove(QDir(qEnvironmentVariable("OBEX_MOCK_RECEIVED")).filePath(name));
}

} // namespace

class tst_ObexUpload : public QObject
{
    Q_OBJECT

public slots:
    void SessionAdded(const QDBusMessage &message) { CountSession(message, m_sessionsAdded); }
    void SessionRemoved(const QDBusMessage &message) { CountSession(message, m_sessionsRemoved); }

private:
    QSet<QString> m_sessionsAdded;
    QSet<QString> m_sessionsRemoved;

    static void CountSession(const QDBusMessage &message, QSet<QString> &sessions)
    {
        const QString path = message.arguments().value(0).value<QDBusObjectPath>().path();
        if (path.startsWith("/org/bluez/obex/client/session"_L1) && !path.contains("/transfer"_L1))
            sessions << path;
    }

private slots:
    void initTestCase()
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        QVERIFY2(bus.isConnected(), "run this under tests/bluetooth/run-with-mock-buses");
        for (const auto &[signal, slot] : {std::pair{"InterfacesAdded", SLOT(SessionAdded(QDBusMessage))},
                                           std::pair{"InterfacesRemoved", SLOT(SessionRemoved(QDBusMessage))}})
            QVERIFY(bus.connect(Obex, u"/"_s, u"org.freedesktop.DBus.ObjectManager"_s, QString::fromLatin1(signal),
                                this, slot));
    }

    void upload_data()
    {
        QTest::addColumn<ObexMethod>("method");
        QTest::addColumn<QVariantMap>("mode");
        QTest::addColumn<QString>("abortOn"); // the start of the status line, or "progress"
        QTest::addColumn<UploadResult>("result");
        QTest::addColumn<ObexUploadError>("error");
        QTest::addColumn<int>("sessions");

        const auto push = ObexMethod::Push;
        const auto none = ObexUploadError::None;
        QTest::newRow("push") << push << QVariantMap() << QString() << UploadResult::Succeeded << none << 1;
        QTest::newRow("file transfer") << ObexMethod::FileTransfer << QVariantMap() << QString()
                                       << UploadResult::Succeeded << none << 1;
        QTest::newRow("abort while sending")
            << push << QVariantMap{{u"ChunkSize"_s, 1000}} << u"progress"_s << UploadResult::Aborted << none << 1;
        // Ends at once; the session that comes later is removed all the same.
        QTest::newRow("abort while connecting") << push << QVariantMap{{u"ConnectDelay"_s, ConnectDelayMs}}
                                                << u"Connecting"_s << UploadResult::Aborted << none << 1;
        QTest::newRow("abort before start")
            << push << QVariantMap() << u"before"_s << UploadResult::Aborted << none << 0;
        QTest::newRow("phone off or out of range") << push << QVariantMap{{u"Session"_s, u"refuse"_s}} << QString()
                                                   << UploadResult::Failed << ObexUploadError::PhoneUnreachable << 0;
        QTest::newRow("connect refused")
            << push
            << QVariantMap{{u"Session"_s, u"refuse"_s}, {u"RefuseMessage"_s, u"OBEX Connect failed with 0x43"_s}}
            << QString() << UploadResult::Failed << ObexUploadError::Refused << 0;
        QTest::newRow("transfer declined") << push << QVariantMap{{u"Transfer"_s, u"reject"_s}} << QString()
                                           << UploadResult::Failed << ObexUploadError::Refused << 1;
    }
    void upload()
    {
        QFETCH(ObexMethod, method);
        QFETCH(QVariantMap, mode);
        QFETCH(QString, abortOn);
        QFETCH(UploadResult, result);
        QFETCH(ObexUploadError, error);
        QFETCH(int, sessions);
        QVERIFY2(IsStandIn(), "run this under tests/bluetooth/run-with-mock-buses");
        QVERIFY(SetMode(mode));
        ClearReceived();
        m_sessionsAdded.clear();
        m_sessionsRemoved.clear();

        QTemporaryDir dir;
        // A period of 251 matches no piece size: a piece lost or repeated shows.
        QByteArray data(50000, Qt::Uninitialized);
        for (qsizetype i = 0; i < data.size(); ++i)
            data[i] = char(i % 251);
        UploadRequest request;
        request.Connection = PhoneConnection::Bluetooth;
        request.Phone = {Phone, u"Test Phone"_s, method};
        request.RemoteName = u"Game.hid"_s;
        request.ProfilePath = dir.filePath(u"PMX1.tmp"_s);
        request.OwnsProfile = true;
        QVERIFY(WriteFile(request.ProfilePath, data));

        ObexUploadJob job(request);
        QStringList statuses;
        qint64 lastSent = -1;
        QList<UploadResult> finished;
        connect(&job, &UploadJob::StatusChanged, this, [&](const QString &text) {
            statuses << text;
            if (!abortOn.isEmpty() && text.startsWith(abortOn))
                job.Abort();
        });
        connect(&job, &UploadJob::ProgressChanged, this, [&](qint64 sent, qint64 total) {
            QCOMPARE(total, data.size());
            QVERIFY(sent > lastSent);
            lastSent = sent;
            if (abortOn == "progress"_L1)
                job.Abort();
        });
        connect(&job, &UploadJob::Finished, this, [&](UploadResult ended) { finished << ended; });
        if (abortOn == "before"_L1)
            job.Abort();
        QElapsedTimer clock;
        clock.start();
        job.Start();
        QVERIFY(finished.isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(!finished.isEmpty(), 20000);

        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.first(), result);
        QCOMPARE(job.Error(), error);
        QCOMPARE(job.ErrorText().isEmpty(), error == ObexUploadError::None);
        if (abortOn == "Connecting"_L1)
            QVERIFY(clock.elapsed() < ConnectDelayMs);
        // Every session made is removed, the copy and the profile deleted.
        QTRY_COMPARE_WITH_TIMEOUT(m_sessionsAdded.size(), sessions, 2 * ConnectDelayMs);
        QTRY_COMPARE(m_sessionsRemoved, m_sessionsAdded);
        QVERIFY(!QFile::exists(request.ProfilePath));
        for (const QString &file : TempFiles())
            QVERIFY2(!QFile::exists(file), qPrintable(file));
        QCOMPARE(finished.size(), 1);
        if (result == UploadResult::Succeeded) {
            QCOMPARE(ReceivedFiles(), QStringList{u"Game.hid"_s});
            QCOMPARE(ReadAll(QDir(qEnvironmentVariable("OBEX_MOCK_RECEIVED")).filePath(u"Game.hid"_s)), data);
            QCOMPARE(lastSent, data.size());
            QCOMPARE(statuses.mid(1, 2), (QStringList{u"Connecting to Test Phone ..."_s,
                                                      u"Sending Game.hid - 0 of 50000 Bytes (0 KB/s) ..."_s}));
            QCOMPARE(statuses.last(), u"Game.hid (48.83 KB) successfully transfered to phone !"_s);
        } else {
            QCOMPARE(ReceivedFiles(), QStringList());
        }
    }

    void cli_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("missing"); // the service the tool's bus lacks
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("out");
        QTest::addColumn<QByteArray>("err");
        QTest::addColumn<QString>("received");

        QTest::newRow("devices") << QStringList{u"devices"_s} << QString() << 0
                                 << QByteArray("00:11:22:33:44:55\tTest Phone\n") << QByteArray() << QString();
        QTest::newRow("devices without BlueZ") << QStringList{u"devices"_s} << u"bluez"_s << 1 << QByteArray()
                                               << QByteArray("cannot reach BlueZ") << QString();
        QTest::newRow("file transfer under a name")
            << QStringList{u"upload"_s, u"%1/Game.hid"_s, u"--bluetooth=00-11-22-33-44-55"_s, u"--method"_s, u"ftp"_s,
                           u"--name"_s, u"Other.hid"_s}
            << QString() << 0 << QByteArray("successfully transfered") << QByteArray() << u"Other.hid"_s;
        QTest::newRow("no obexd") << QStringList{u"upload"_s, u"%1/Game.hid"_s, u"--bluetooth"_s, Phone} << u"obexd"_s
                                  << 1 << QByteArray() << QByteArray("bluez-obexd") << QString();
        QTest::newRow("not an address") << QStringList{u"upload"_s, u"%1/Game.hid"_s, u"--bluetooth"_s, u"12:34"_s}
                                        << QString() << 2 << QByteArray() << QByteArray("--bluetooth") << QString();
        QTest::newRow("method without bluetooth")
            << QStringList{u"upload"_s, u"%1/Game.hid"_s, u"--port"_s, u"/dev/null"_s, u"--method"_s, u"ftp"_s}
            << QString() << 2 << QByteArray() << QByteArray("--method") << QString();
    }
    void cli()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, missing);
        QFETCH(int, status);
        QFETCH(QByteArray, out);
        QFETCH(QByteArray, err);
        QFETCH(QString, received);
        QVERIFY2(IsStandIn(), "run this under tests/bluetooth/run-with-mock-buses");
        ClearReceived();
        QTemporaryDir dir;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        QCOMPARE(RunProgram(Cli,
                            {u"pack"_s, MakePicture(dir.filePath(u"p.png"_s), 96, 64),
                             QFINDTESTDATA("../fixtures/keymap-writer-example.kcf"), dir.filePath(u"Game.hid"_s)},
                            {}, environment)
                     .Status,
                 0);
        // The other bus has neither the phone list nor obexd.
        if (!missing.isEmpty())
            environment.insert(missing == "obexd"_L1 ? u"DBUS_SESSION_BUS_ADDRESS"_s : u"DBUS_SYSTEM_BUS_ADDRESS"_s,
                               environment.value(missing == "obexd"_L1 ? u"DBUS_SYSTEM_BUS_ADDRESS"_s
                                                                       : u"DBUS_SESSION_BUS_ADDRESS"_s));
        for (QString &argument : arguments)
            argument.replace("%1"_L1, dir.path());

        const ProgramRun run = RunProgram(Cli, arguments, {}, environment);
        QCOMPARE(run.Status, status);
        QVERIFY2(run.Out.contains(out), run.Out);
        QVERIFY2(run.Err.contains(err), run.Err);
        QCOMPARE(ReceivedFiles(), received.isEmpty() ? QStringList() : QStringList{received});
        if (!received.isEmpty())
            QCOMPARE(ReadAll(QDir(qEnvironmentVariable("OBEX_MOCK_RECEIVED")).filePath(received)),
                     ReadAll(dir.filePath(u"Game.hid"_s)));
    }

    // The installed obexd, which has no radio here, fails the way it does
    // when the phone cannot be reached; the user gets the message for that.
    void realObexdWithoutRadio()
    {
        QVERIFY2(!IsStandIn(), "run this under tests/bluetooth/run-with-mock-buses --real-obexd");
        QTemporaryDir dir;
        UploadRequest request;
        request.Connection = PhoneConnection::Bluetooth;
        request.Phone = {Phone, u"Test Phone"_s, ObexMethod::Push};
        request.RemoteName = u"Game.hid"_s;
        request.ProfilePath = dir.filePath(u"Game.hid"_s);
        QVERIFY(WriteFile(request.ProfilePath, "profile"));
        ObexUploadJob job(request);
        bool finished = false;
        connect(&job, &UploadJob::Finished, this, [&] { finished = true; });
        job.Start();
        QTRY_VERIFY_WITH_TIMEOUT(finished, 20000);
        QCOMPARE(job.Error(), ObexUploadError::PhoneUnreachable);
        QVERIFY2(job.ErrorText().startsWith("The phone Test Phone could not be reached."_L1),
                 qPrintable(job.ErrorText()));
        QVERIFY(QFile::exists(request.ProfilePath)); // not the job's to delete
    }
};

QTEST_GUILESS_MAIN(tst_ObexUpload)
#include "tst_obexupload.moc"
