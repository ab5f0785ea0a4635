// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/uploadwindow.h"
#include "fakephone.h"
#include "keymap/keymapwriter.h"
#include "mainwindowharness.h"
#include "profile/document.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString RemoteName = u"Game.hid"_s;
// The job's own endings, as rows of the transfer test.
enum { Succeeds = -1, Fails = -2 };

// A job the test drives: it keeps what the window asked for, and ends, once,
// through the event loop as every job does.
class FakeJob : public UploadJob
{
public:
    explicit FakeJob(UploadRequest request) : Request(std::move(request)) {}
    void Start() override { Started = true; }
    void Abort() override { End(UploadResult::Aborted); }
    QString ErrorText() const override { return u"Fileupload failed !"_s; }
    void End(UploadResult result)
    {
        if (!std::exchange(m_ending, true))
            QTimer::singleShot(0, this, [this, result] { emit Finished(result); });
    }

    UploadRequest Request;
    bool Started = false;

private:
    bool m_ending = false;
};

// One upload window over a fake job; the copy is written into a temporary file
// of the program's own, as the main window does.
struct Upload
{
    ScriptedDialogs dialogs;
    int writes = 0;
    QString copy;
    FakeJob *job = nullptr;
    std::unique_ptr<UploadWindow> window;

    Upload(bool hasPort, bool copyFails = false)
    {
        UploadRequest request;
        if (hasPort)
            request.Port = *SerialPort::Parse(u"/dev/rfcomm0"_s);
        request.Speed = 115200;
        request.RemoteName = RemoteName;
        const auto writeProfileCopy = [this, copyFails] {
            ++writes;
            copy = copyFails ? QString() : NewTempFile(u"PMX"_s);
            return copy;
        };
        const auto makeJob = [this](UploadRequest made) {
            auto fake = std::make_unique<FakeJob>(std::move(made));
            job = fake.get();
            return std::unique_ptr<UploadJob>(std::move(fake));
        };
        window = std::make_unique<UploadWindow>(std::move(request), writeProfileCopy, dialogs, nullptr, makeJob);
        window->open();
    }
    bool Started() const { return job && job->Started; }
};

} // namespace

class tst_UploadWindow : public QObject, MainWindowHarness
{
    Q_OBJECT

private slots:
    void cleanup() { Close(); }

    // However the transfer ends: a success waits for OK; Abort, Escape, the
    // window's frame and the signals that end a program abort the job and
    // close the window without a message (after a signal it tells the program
    // to end); a failure shows the job's text as the one message. No copy is
    // written without a port.
    void transfer_data()
    {
        QTest::addColumn<int>("way"); // a signal number from 3 on
        QTest::addColumn<bool>("hasPort");
        QTest::addColumn<bool>("copyFails");
        QTest::newRow("succeeds") << int(Succeeds) << true << false;
        QTest::newRow("Abort button") << 0 << true << false;
        QTest::newRow("Escape") << 1 << true << false;
        QTest::newRow("closed by the frame") << 2 << true << false;
        QTest::newRow("SIGTERM") << int(SIGTERM) << true << false;
        QTest::newRow("the job fails") << int(Fails) << true << false;
        QTest::newRow("no port configured") << int(Fails) << false << false;
        QTest::newRow("copy not written") << int(Fails) << true << true;
    }
    void transfer()
    {
        QFETCH(int, way);
        QFETCH(bool, hasPort);
        QFETCH(bool, copyFails);
        Upload upload(hasPort, copyFails);
        UploadWindow &window = *upload.window;
        QVERIFY(!window.OkButton()->isEnabled());
        QTRY_VERIFY(upload.Started());
        QCOMPARE(upload.writes, hasPort ? 1 : 0);
        QCOMPARE(upload.job->Request.ProfilePath, upload.copy);
        QVERIFY(upload.job->Request.OwnsProfile);
        emit upload.job->StatusChanged(u"Opening /dev/rfcomm0 ..."_s);
        QCOMPARE(window.StatusLabel()->text(), u"Opening /dev/rfcomm0 ..."_s);
        // A text longer than the first wraps, and the window grows to show all of it.
        emit upload.job->StatusChanged(
            u"Ein Profil mit recht langem Namen.hid (12 KB) erfolgreich zum Telefon übertragen!"_s);
        QLabel *status = window.StatusLabel();
        QVERIFY(status->height() >= status->heightForWidth(status->width()));
        emit upload.job->ProgressChanged(42999, 100000, 11000, u"Sending Game.hid"_s);
        QCOMPARE(window.windowTitle(), u"42%  Fileupload"_s);
        QCOMPARE(window.Progress()->value(), 42);
        QCOMPARE(window.StatusLabel()->text(), u"Sending Game.hid"_s);

        if (way == Succeeds || way == Fails) {
            upload.job->End(way == Succeeds ? UploadResult::Succeeded : UploadResult::Failed);
        } else if (way == 0) {
            window.AbortButton()->click();
        } else if (way == 1) {
            QTest::keyClick(&window, Qt::Key_Escape);
        } else if (way == 2) {
            QVERIFY(!window.close());
        } else {
            QCOMPARE(std::raise(way), 0);
        }
        QVERIFY(window.isVisible());
        QTRY_VERIFY(!window.IsRunning());
        QCOMPARE(window.isVisible(), way == Succeeds); // until OK is pressed
        QCOMPARE(window.AbortButton()->isEnabled(), way == Fails);
        QCOMPARE(window.EndedBySignal(), way > 2 ? way : 0);
        QCOMPARE(upload.dialogs.Shown, way == Fails ? QStringList{u"Fileupload failed !"_s} : QStringList());
        if (way == Succeeds) {
            QVERIFY(window.OkButton()->isEnabled());
            window.OkButton()->click();
            QCOMPARE(window.result(), int(QDialog::Accepted));
        }
        QVERIFY(!window.isVisible());
        QCOMPARE(window.Result(), way == Succeeds ? UploadResult::Succeeded
                                  : way == Fails  ? UploadResult::Failed
                                                  : UploadResult::Aborted);
        if (way == Fails) {
            QCOMPARE(upload.dialogs.Messages.first().Title, u"Error"_s);
            QCOMPARE(upload.dialogs.Messages.first().Kind, DocumentMessage::Icon::Critical);
        }
    }

    // The send button opens the window on the open profile with the stored
    // port; the copy is the document's own profile, under its remote name,
    // sent by the serial job.
    void mainWindowSendsTheOpenProfile()
    {
        FakePhone phone;
        QVERIFY(phone.Start());
        MainWindow &window = Start({}, phone.PortName());
        QVERIFY(window.SendButton()->isEnabled());
        const qsizetype tempFilesBefore = TempFiles().size();
        QString status;
        QString caption;
        QTimer pressOk;
        connect(&pressOk, &QTimer::timeout, this, [&] {
            auto *upload = window.findChild<UploadWindow *>();
            if (upload && upload->isVisible() && upload->OkButton()->isEnabled()) {
                status = upload->StatusLabel()->text();
                caption = upload->windowTitle();
                upload->OkButton()->click();
            }
        });
        pressOk.start(20);
        window.SendButton()->click();

        QCOMPARE(m_dialogs->Shown, QStringList());
        QVERIFY2(status.startsWith(u"Unnamed.hid ("_s), qPrintable(status));
        QCOMPARE(caption, u"100%  Fileupload"_s);
        QString expected = Path(u"expected.hid"_s);
        QVERIFY(window.Doc().SaveProfile(expected, true));
        QCOMPARE(phone.Seen().Files.value(u"Unnamed.hid"_s).size(), QFileInfo(expected).size());
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
        QVERIFY(phone.Seen().AtCommands.isEmpty());
    }
};

QTEST_MAIN(tst_UploadWindow)
#include "tst_uploadwindow.moc"
