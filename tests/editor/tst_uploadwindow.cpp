// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/uploadwindow.h"
#include "fakephone.h"
#include "keymap/keymapwriter.h"
#include "mainwindowharness.h"
#include "profile/document.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;

namespace {

const QString RemoteName = u"Game.hid"_s;
constexpr int QuickTimeoutMs = 300;
constexpr int TransferTimeoutMs = 30000;

QByteArray TestData(qsizetype size)
{
    QByteArray data(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        data[i] = char((i * 7 + i / 251) & 0xFF);
    return data;
}

// With PADMAPPER_SCREENSHOTS naming a folder, the window is saved there as a PNG.
void Screenshot(QWidget &window, const QString &name)
{
    const QString folder = qEnvironmentVariable("PADMAPPER_SCREENSHOTS");
    if (!folder.isEmpty() && QDir().mkpath(folder))
        window.grab().save(QDir(folder).filePath(name + ".png"_L1));
}

// One upload window over a fake phone; the copy is written into a temporary
// file of the program's own, as the main window does.
struct Upload
{
    ScriptedDialogs dialogs;
    QByteArray data;
    int writes = 0;
    bool offThread = false;
    QStringList copies;
    QStringList captions;
    std::unique_ptr<UploadWindow> window;

    Upload(const QString &portName, const QByteArray &bytes, bool copyFails = false)
        : data(bytes)
    {
        UploadRequest request;
        request.Port = SerialPort::Parse(portName).value_or(SerialPort());
        request.Speed = 115200;
        request.RemoteName = RemoteName;
        request.ReadTimeoutMs = QuickTimeoutMs;
        request.OpenPauseMs = 0;
        const auto writeProfileCopy = [this, copyFails] {
            ++writes;
            // The document belongs to the window's thread: no copy from the worker.
            offThread |= QThread::currentThread() != qApp->thread();
            if (copyFails)
                return QString();
            const QString path = NewTempFile(u"PMX"_s);
            copies << path;
            QFile file(path);
            return file.open(QIODevice::WriteOnly) && file.write(data) == data.size() ? path : QString();
        };
        window = std::make_unique<UploadWindow>(std::move(request), writeProfileCopy, dialogs);
        QObject::connect(window.get(), &QWidget::windowTitleChanged,
                         [this](const QString &caption) { captions << caption; });
        window->open();
    }
    bool CopiesGone() const
    {
        return std::none_of(copies.cbegin(), copies.cend(),
                            [](const QString &path) { return QFile::exists(path); });
    }
};

} // namespace

class tst_UploadWindow : public QObject, MainWindowHarness
{
    Q_OBJECT

private slots:
    void cleanup() { Close(); }

    // Sizes at the packet limits are the upload job's own test; here the
    // window follows a transfer of many packets.
    void success()
    {
        const qsizetype size = 60000;
        FakePhone phone;
        QVERIFY(phone.Start());
        Upload upload(phone.PortName(), TestData(size));
        UploadWindow &window = *upload.window;
        QCOMPARE(window.windowTitle(), u"Fileupload"_s);
        QVERIFY(!window.OkButton()->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(!window.IsRunning(), TransferTimeoutMs);

        QCOMPARE(window.Result(), UploadResult::Succeeded);
        QCOMPARE(phone.Files().value(RemoteName), upload.data);
        QVERIFY(window.isVisible());
        const QString kilobytes = QString::number(double(size) / 1024, 'f', 2);
        QCOMPARE(window.StatusLabel()->text(),
                 u"Game.hid (%1 KB) successfully transfered to phone !"_s.arg(kilobytes));
        QCOMPARE(window.windowTitle(), u"100%  Fileupload"_s);
        QCOMPARE(window.Progress()->value(), 100);
        static const QRegularExpression progressCaption(u"^\\d{1,3}%  Fileupload$"_s);
        QVERIFY(!upload.captions.isEmpty());
        for (const QString &caption : std::as_const(upload.captions))
            QVERIFY2(progressCaption.match(caption).hasMatch(), qPrintable(caption));
        QVERIFY(upload.dialogs.Shown.isEmpty());
        QCOMPARE(upload.copies.size(), 1);
        QVERIFY(!upload.offThread);
        QVERIFY(upload.CopiesGone());
        QVERIFY(!phone.PortIsExclusive());
        QVERIFY(!window.AbortButton()->isEnabled());
        QVERIFY(window.OkButton()->isEnabled());
        Screenshot(window, u"upload-success"_s);

        window.OkButton()->click();
        QVERIFY(!window.isVisible());
        QCOMPARE(window.result(), int(QDialog::Accepted));
    }

    // Abort, Escape, the window's frame and the signals that end a program
    // all end the transfer after the current packet; the window then closes
    // without a message, and after a signal tells the program to end.
    void abortClosesSilently_data()
    {
        QTest::addColumn<int>("way"); // a signal number from 3 on
        QTest::newRow("Abort button") << 0;
        QTest::newRow("Escape") << 1;
        QTest::newRow("closed by the frame") << 2;
        QTest::newRow("SIGTERM") << int(SIGTERM);
        QTest::newRow("SIGHUP") << int(SIGHUP);
    }
    void abortClosesSilently()
    {
        QFETCH(int, way);
        FakePhone::Options options;
        options.LineBps = 115200;
        FakePhone phone(options);
        QVERIFY(phone.Start());
        Upload upload(phone.PortName(), TestData(80000));
        UploadWindow &window = *upload.window;
        QTRY_VERIFY_WITH_TIMEOUT(window.Progress()->value() >= 10, TransferTimeoutMs);
        QCOMPARE(window.windowTitle(), ProfileUpload::ProgressCaption(window.Progress()->value()));
        QVERIFY(window.StatusLabel()->text().startsWith(u"Sending Game.hid  - %t Bytes"_s));
        Screenshot(window, u"upload-sending"_s);

        if (way == 0)
            window.AbortButton()->click();
        else if (way == 1)
            QTest::keyClick(&window, Qt::Key_Escape);
        else if (way == 2)
            QVERIFY(!window.close());
        else
            QCOMPARE(std::raise(way), 0);
        QVERIFY(window.isVisible());
        QTRY_VERIFY(!window.AbortButton()->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(!window.isVisible(), TransferTimeoutMs);

        QCOMPARE(window.Result(), UploadResult::Aborted);
        QCOMPARE(window.EndedBySignal(), way > 2 ? way : 0);
        QVERIFY(upload.dialogs.Shown.isEmpty());
        QCOMPARE(phone.Requests().last().toHex(' '), QByteArray("ff 00 03"));
        QVERIFY(phone.Files().isEmpty());
        QVERIFY(upload.CopiesGone());
        QVERIFY(!phone.PortIsExclusive());
    }

    // One failure before the copy, one of the copy, one of the phone; every
    // message of the upload job itself is pinned by its own test.
    void failureShowsOneMessage_data()
    {
        QTest::addColumn<QString>("port"); // "phone" for the fake phone's
        QTest::addColumn<bool>("copyFails");
        QTest::addColumn<int>("stallAfter");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("writes");
        QTest::newRow("no port configured")
            << QString() << false << -1 << u"The COM-Port is not set. Please check the settings !"_s << 0;
        QTest::newRow("copy not written") << u"phone"_s << true << -1 << u"Creating File failed !"_s << 1;
        QTest::newRow("stops answering mid-upload") << u"phone"_s << false << 3 << u"Fileupload failed !"_s << 1;
    }
    void failureShowsOneMessage()
    {
        QFETCH(QString, port);
        QFETCH(bool, copyFails);
        FakePhone::Options options;
        QFETCH(int, stallAfter);
        options.StallAfter = stallAfter;
        FakePhone phone(options);
        QVERIFY(phone.Start());
        if (port == "phone"_L1)
            port = phone.PortName();
        Upload upload(port, TestData(5000), copyFails);
        UploadWindow &window = *upload.window;
        QTRY_VERIFY_WITH_TIMEOUT(!window.isVisible(), TransferTimeoutMs);

        QCOMPARE(window.Result(), UploadResult::Failed);
        QCOMPARE(upload.dialogs.Messages.size(), 1);
        QTEST(upload.dialogs.Messages.first().Text, "message");
        QCOMPARE(upload.dialogs.Messages.first().Title, u"Error"_s);
        QCOMPARE(upload.dialogs.Messages.first().Kind, DocumentMessage::Icon::Critical);
        QTEST(upload.writes, "writes");
        QVERIFY(upload.CopiesGone());
        QVERIFY(phone.Files().isEmpty());
        QVERIFY(!phone.PortIsExclusive());
    }

    void destroyedMidTransferWaitsForTheWorker()
    {
        FakePhone::Options options;
        options.LineBps = 115200;
        FakePhone phone(options);
        QVERIFY(phone.Start());
        Upload upload(phone.PortName(), TestData(80000));
        QTRY_VERIFY_WITH_TIMEOUT(upload.window->Progress()->value() > 0, TransferTimeoutMs);
        upload.window.reset();
        QVERIFY(upload.CopiesGone());
        QVERIFY(!phone.PortIsExclusive());
        QVERIFY(phone.Files().isEmpty());
    }

    // The send button opens the window on the open profile with the stored
    // port; the copy is the document's own profile, under its remote name.
    void mainWindowSendsTheOpenProfile()
    {
        FakePhone phone;
        QVERIFY(phone.Start());
        MainWindow &window = Start({}, phone.PortName());
        QVERIFY(window.SendButton()->isEnabled());
        const qsizetype tempFilesBefore = TempFiles().size();
        QString status;
        QTimer pressOk;
        connect(&pressOk, &QTimer::timeout, this, [&] {
            auto *upload = window.findChild<UploadWindow *>();
            if (upload && upload->isVisible() && upload->OkButton()->isEnabled()) {
                status = upload->StatusLabel()->text();
                upload->OkButton()->click();
            }
        });
        pressOk.start(20);
        window.SendButton()->click();

        QCOMPARE(m_dialogs->Shown, QStringList());
        QVERIFY2(status.startsWith(u"Unnamed.hid ("_s), qPrintable(status));
        QString expected = Path(u"expected.hid"_s);
        QVERIFY(window.Doc().SaveProfile(expected, true));
        QCOMPARE(phone.Files().value(u"Unnamed.hid"_s).size(), QFileInfo(expected).size());
        const QStringList made = TempFiles().mid(tempFilesBefore);
        QVERIFY(!made.isEmpty());
        for (const QString &path : made)
            QVERIFY2(!QFile::exists(path), qPrintable(path));
        QVERIFY(!phone.PortIsExclusive());
    }

    // A keymap has no picture: the document says so, then the upload ends as
    // a copy that could not be written, before the port is opened.
    void keymapWithoutPictureIsNotSent()
    {
        FakePhone phone;
        QVERIFY(phone.Start());
        const QString keymap = Path(u"Work.kcf"_s);
        QVERIFY(WriteKeymapText(Keymap(), keymap));
        MainWindow &window = Start({u"\""_s + keymap + u"\""_s}, phone.PortName());
        QVERIFY(!window.SendButton()->isEnabled());

        window.SendProfile();
        QCOMPARE(m_dialogs->Shown, (QStringList{u"No Picture is loadet !"_s, u"Creating File failed !"_s}));
        QVERIFY(phone.AtCommands().isEmpty());
    }
};

QTEST_MAIN(tst_UploadWindow)
#include "tst_uploadwindow.moc"
