// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ansitext.h"

#include "../testfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Run
{
    int status = -1;
    QByteArray out;
    QByteArray err;
};

Run RunCli(const QStringList &arguments, const QProcessEnvironment &environment = {},
           const QString &program = QString::fromUtf8(PADMAPPER_CLI))
{
    QProcess process;
    if (!environment.isEmpty())
        process.setProcessEnvironment(environment);
    process.start(program, arguments);
    Run run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

// A picture with enough detail that it does not compress to nothing.
QString MakePicture(const QString &path, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb((x * 7 + y * 13) & 255, (x * y) & 255, (x ^ y) & 255));
    return image.save(path) ? path : QString();
}

} // namespace

class tst_Cli : public QObject
{
    Q_OBJECT

private slots:
    void showReproducesWrittenKeymaps_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("writer example") << QFINDTESTDATA("../fixtures/keymap-writer-example.kcf");
        QTest::newRow("bundled keymap") << QString::fromUtf8(PADMAPPER_DATA_FOLDER "/Desktop.kcf");
    }
    void showReproducesWrittenKeymaps()
    {
        QFETCH(QString, path);
        QVERIFY(QFileInfo::exists(path));
        const Run run = RunCli({u"show"_s, path});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.err, QByteArray());
        QCOMPARE(run.out, ReadAll(path));
    }

    void showReportsErrors()
    {
        const QString path = QFINDTESTDATA("../fixtures/keymap-with-errors.kcf");
        const Run run = RunCli({u"show"_s, path});
        QCOMPARE(run.status, 1);
        const QString err = QString::fromLocal8Bit(run.err);
        QVERIFY2(err.startsWith(u"By reading of the following keys raised an error:\n   KEY_LSK\t\t  -> "_s),
                 run.err.constData());
        QVERIFY(err.contains(u"KEY_CAM\t\t-> Keyboard Modifier ist keine Zahl (xx)"_s));
        // What was read is written all the same; the faulty keys keep what they got.
        QVERIFY(run.out.contains("<KEY_CAM>"));
        QVERIFY(run.out.contains("<!-- Kamera f\xFCr Fotos  -->"));
        QVERIFY(run.out.endsWith("</SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION>\r\n"));

        const QString report = QFileInfo(QString::fromUtf8(PADMAPPER_CLI)).absolutePath() + "/LastReadingError.txt"_L1;
        const QByteArray reportText = ReadAll(report);
        QVERIFY(reportText.startsWith("LastReadError.txt von Padmapper\r\n"));
        QVERIFY(reportText.contains("\r\n   KEY_5\t\t-> Unbekannte UsageID (4)\r\n"));
    }

    void showUsesTheLanguageFile()
    {
        QTemporaryDir dir;
        const QString lng = dir.filePath(u"deutsch.lng"_s);
        QVERIFY(WriteFile(lng, "[Errors]\r\n12=Fehler beim Lesen:\r\n13=Interner Fehler:\r\n"));
        const Run run = RunCli({u"--language"_s, lng, u"show"_s, QFINDTESTDATA("../fixtures/keymap-with-errors.kcf")});
        QCOMPARE(run.status, 1);
        QVERIFY(run.err.startsWith("Fehler beim Lesen:\n   KEY_LSK"));
        const Run missing = RunCli({u"--language"_s, lng, u"show"_s, dir.filePath(u"none.kcf"_s)});
        QCOMPARE(missing.status, 1);
        QCOMPARE(missing.err, QByteArray("Interner Fehler:\n53 File not found\n"));
    }

    void packListExtractShowRoundTrip()
    {
        QTemporaryDir dir;
        const QString picture = MakePicture(dir.filePath(u"Photo.PNG"_s), 80, 60);
        const QString keymap = QFINDTESTDATA("../fixtures/keymap-writer-example.kcf");
        const Run pack = RunCli({u"pack"_s, picture, keymap, dir.filePath(u"Games"_s)});
        QCOMPARE(pack.status, 0);
        QCOMPARE(pack.err, QByteArray());
        const QString profile = dir.filePath(u"Games.hid"_s);
        QVERIFY(QFileInfo::exists(profile));

        const Run list = RunCli({u"list"_s, profile});
        QCOMPARE(list.status, 0);
        const QByteArray keymapText = ReadAll(keymap).chopped(2); // stored without the final line end
        QCOMPARE(list.out, "1\t" + QByteArray::number(ReadAll(picture).size()) + "\tGames.png\n2\t"
                               + QByteArray::number(keymapText.size()) + "\tGames.kcf\n");

        QCOMPARE(RunCli({u"extract"_s, profile, u"1"_s, dir.filePath(u"out/pic.png"_s)}).status, 0);
        QCOMPARE(ReadAll(dir.filePath(u"out/pic.png"_s)), ReadAll(picture));
        QCOMPARE(RunCli({u"extract"_s, profile, u"2"_s, dir.filePath(u"out/k.kcf"_s)}).status, 0);
        QCOMPARE(ReadAll(dir.filePath(u"out/k.kcf"_s)), keymapText);

        const Run show = RunCli({u"show"_s, profile});
        QCOMPARE(show.status, 0);
        QCOMPARE(show.out, ReadAll(keymap));
        QCOMPARE(show.err, QByteArray());
    }

    void profileFailures_data()
    {
        QTest::addColumn<QStringList>("arguments"); // %1 stands for the temporary folder
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("err");
        QTest::newRow("list a missing archive") << QStringList{u"list"_s, u"%1/none.tar"_s} << 1
                                                << QByteArray("padmapper-cli: Extracting Archive failed !");
        QTest::newRow("extract entry 0") << QStringList{u"extract"_s, u"%1/k.tar"_s, u"0"_s, u"%1/x"_s} << 1
                                         << QByteArray("padmapper-cli: %1/k.tar has no entry 0");
        QTest::newRow("extract entry past the end")
            << QStringList{u"extract"_s, u"%1/k.tar"_s, u"2"_s, u"%1/x"_s} << 1
            << QByteArray("padmapper-cli: %1/k.tar has no entry 2");
        QTest::newRow("extract a non-number") << QStringList{u"extract"_s, u"%1/k.tar"_s, u"one"_s, u"%1/x"_s}
                                              << 2 << QByteArray("padmapper-cli: not an entry number");
        QTest::newRow("pack an undecodable picture")
            << QStringList{u"pack"_s, u"%1/k.tar"_s, u"%1/k.kcf"_s, u"%1/out"_s} << 1
            << QByteArray("padmapper-cli: No Picture is loadet !");
        QTest::newRow("pack a missing picture")
            << QStringList{u"pack"_s, u"%1/none.png"_s, u"%1/k.kcf"_s, u"%1/out"_s} << 1
            << QByteArray("padmapper-cli: no picture file");
        // Nothing is written when the keymap cannot be read, not even a profile of the defaults.
        QTest::newRow("pack a missing keymap") << QStringList{u"pack"_s, u"%1/p.png"_s, u"%1/typo.kcf"_s, u"%1/out"_s}
                                               << 1 << QByteArray("Programinternal Error:\n53 File not found");
        QTest::newRow("show a profile without entries") << QStringList{u"show"_s, u"%1/empty.hid"_s} << 1
                                                        << QByteArray("The Archive contained no Files !");
        QTest::newRow("extract a cut entry") << QStringList{u"extract"_s, u"%1/cut.hid"_s, u"2"_s, u"%1/x"_s} << 1
                                             << QByteArray("padmapper-cli: entry 2 of %1/cut.hid is cut short");
        QTest::newRow("show a cut profile notes the damage")
            << QStringList{u"show"_s, u"%1/cut.hid"_s} << 0 << QByteArray("The Archive is damaged");
        QTest::newRow("show a keymap-only profile notes the picture")
            << QStringList{u"show"_s, u"%1/k.tar"_s} << 0 << QByteArray("The Profile contains no Picture !");
        QTest::newRow("pack into a missing folder")
            << QStringList{u"pack"_s, u"%1/p.png"_s, u"%1/k.kcf"_s, u"%1/none/out"_s} << 1
            << QByteArray("padmapper-cli: Creating Archive failed !\n%1/none/out.hid: the folder does not exist\n");
        QTest::newRow("extract below a file")
            << QStringList{u"extract"_s, u"%1/two.hid"_s, u"1"_s, u"%1/p.png/x"_s} << 1
            << QByteArray("padmapper-cli: Creating File failed !\n%1/p.png: the folder does not exist\n");
        QTest::newRow("pack with a file for the temporary folder")
            << QStringList{u"TMPDIR=%1/k.kcf"_s, u"pack"_s, u"%1/p.png"_s, u"%1/k.kcf"_s, u"%1/out"_s} << 1
            << QByteArray("padmapper-cli: Creating File failed !\n%1/k.kcf: the folder does not exist\n");
#ifdef Q_OS_UNIX
        QTest::newRow("show a pipe named .hid") << QStringList{u"show"_s, u"%1/pipe.hid"_s} << 1
            << QByteArray("Extracting Archive failed !\n%1/pipe.hid: not a regular file\n");
        QTest::newRow("show a pipe named .kcf") << QStringList{u"show"_s, u"%1/pipe.kcf"_s} << 1
            << QByteArray("Programinternal Error:\n75 Path/File access error\n%1/pipe.kcf: not a regular file\n");
#endif
    }
    void profileFailures()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QByteArray, err);
        QTemporaryDir dir;
        QVERIFY(WriteFile(dir.filePath(u"k.kcf"_s), ReadAll(QFINDTESTDATA("../fixtures/keymap-writer-example.kcf"))));
        QCOMPARE(RunCli({u"pack"_s, MakePicture(dir.filePath(u"p.png"_s), 8, 8), dir.filePath(u"k.kcf"_s),
                         dir.filePath(u"two.hid"_s)})
                     .status,
                 0);
        // k.tar: a tar with only the keymap (entry 2 of the profile, repacked).
        QCOMPARE(RunCli({u"extract"_s, dir.filePath(u"two.hid"_s), u"2"_s, dir.filePath(u"only/k.kcf"_s)}).status, 0);
        QVERIFY(QProcess::execute(u"tar"_s, {u"-C"_s, dir.filePath(u"only"_s), u"-cf"_s, dir.filePath(u"k.tar"_s),
                                             u"k.kcf"_s})
                == 0);
        QVERIFY(WriteFile(dir.filePath(u"empty.hid"_s), QByteArray(1024, '\0')));
        // cut.hid: the profile without its end block and the keymap's last ten bytes.
        QVERIFY(WriteFile(dir.filePath(u"cut.hid"_s), ReadAll(dir.filePath(u"two.hid"_s)).chopped(522)));
#ifdef Q_OS_UNIX
        for (const char *pipe : {"pipe.hid", "pipe.kcf"})
            QCOMPARE(::mkfifo(QFile::encodeName(dir.filePath(QString::fromLatin1(pipe))).constData(), 0600), 0);
#endif

        QStringList expanded;
        for (const QString &argument : arguments)
            expanded << argument.arg(dir.path());
        QProcessEnvironment environment;
        if (expanded.first().startsWith("TMPDIR="_L1)) {
            environment = QProcessEnvironment::systemEnvironment();
            environment.insert(u"TMPDIR"_s, expanded.takeFirst().mid(7));
        }
        const Run run = RunCli(expanded, environment);
        QCOMPARE(run.status, status);
        QVERIFY2(run.err.startsWith(QString::fromLatin1(err).arg(dir.path()).toLocal8Bit()), run.err.constData());
        QVERIFY(!QFileInfo::exists(dir.filePath(u"x"_s)));
        QVERIFY(!QFileInfo::exists(dir.filePath(u"out.hid"_s)));
    }

#ifdef Q_OS_UNIX
    void fullDiskKeepsThePreviousProfile()
    {
        // A file-size limit makes writes fail the way a full disk does.
        QTemporaryDir dir;
        const QString keymap = QFINDTESTDATA("../fixtures/keymap-writer-example.kcf");
        const QString small = MakePicture(dir.filePath(u"small.png"_s), 8, 8);
        const QString large = MakePicture(dir.filePath(u"large.bmp"_s), 200, 200);
        const QString profile = dir.filePath(u"Games.hid"_s);
        QCOMPARE(RunCli({u"pack"_s, small, keymap, profile}).status, 0);
        const QByteArray before = ReadAll(profile);
        const QStringList filesBefore = QDir(dir.path()).entryList(QDir::Files);

        // Room for the picture's temporary copy, not for the archive around it.
        const qint64 limit = QFileInfo(large).size() + 512;
        QProcess process;
        process.start(u"sh"_s, {u"-c"_s, u"trap '' XFSZ; exec prlimit --fsize=$0 \"$1\" pack \"$2\" \"$3\" \"$4\""_s,
                                QString::number(limit), QString::fromUtf8(PADMAPPER_CLI), large, keymap, profile});
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("Creating Archive failed !"));
        QCOMPARE(ReadAll(profile), before);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), filesBefore);
    }

    void namesThatAreNotUtf8RoundTrip()
    {
        QTemporaryDir dir;
        const QString picture = MakePicture(dir.filePath(u"p.png"_s), 8, 8);
        // The shell spells the names in bytes; QProcess would pass them as UTF-8.
        const QString script = u"cd \"$0\" && hid=$(printf '\\377\\376.hid') && pic=$(printf '\\351.png') && "
                               "trap 'rm -f \"$hid\" \"$pic\"' EXIT && \"$1\" pack \"$2\" \"$3\" \"$hid\" && \"$1\" list \"$hid\" >/dev/null && "
                               "\"$1\" extract \"$hid\" 1 \"$pic\" && cmp \"$pic\" \"$2\" && \"$1\" show \"$hid\""_s;
        QProcess process;
        process.start(u"sh"_s, {u"-c"_s, script, dir.path(), QString::fromUtf8(PADMAPPER_CLI), picture,
                                QFINDTESTDATA("../fixtures/keymap-writer-example.kcf")});
        QVERIFY(process.waitForFinished(60000));
        QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());
        QCOMPARE(process.readAllStandardOutput(), ReadAll(QFINDTESTDATA("../fixtures/keymap-writer-example.kcf")));
    }

    void errorReportElsewhereIsNamed()
    {
        // A copy of the program whose folder cannot take the report.
        QTemporaryDir dir;
        const QString program = dir.filePath(u"bin/padmapper-cli"_s);
        QVERIFY(QDir().mkpath(dir.filePath(u"bin/LastReadingError.txt"_s)));
        QVERIFY(QFile::copy(QString::fromUtf8(PADMAPPER_CLI), program));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_DATA_HOME"_s, dir.filePath(u"data"_s));
        const Run run = RunCli({u"show"_s, QFINDTESTDATA("../fixtures/keymap-with-errors.kcf")}, environment, program);
        QCOMPARE(run.status, 1);
        const QString report = dir.filePath(u"data/padmapper/LastReadingError.txt"_s);
        QVERIFY2(run.err.endsWith("\nThe error report was written to " + report.toUtf8() + '\n'), run.err.constData());
        QVERIFY(ReadAll(report).startsWith("LastReadError.txt von Padmapper\r\n"));
    }
#endif

    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("nothing") << QStringList();
        QTest::newRow("unknown command") << QStringList{u"frobnicate"_s};
        QTest::newRow("show without file") << QStringList{u"show"_s};
        QTest::newRow("show with two files") << QStringList{u"show"_s, u"a"_s, u"b"_s};
        QTest::newRow("unknown option") << QStringList{u"--frob"_s, u"show"_s, u"a"_s};
        QTest::newRow("language without file") << QStringList{u"show"_s, u"a"_s, u"--language"_s};
        QTest::newRow("language file missing") << QStringList{u"--language"_s, u"/no/such.lng"_s, u"show"_s, u"a"_s};
    }
    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        const Run run = RunCli(arguments);
        QCOMPARE(run.status, 2);
        QVERIFY(run.err.startsWith("padmapper-cli: "));
        QCOMPARE(run.out, QByteArray());
    }

    void helpAndVersion()
    {
        const Run help = RunCli({u"--help"_s});
        QCOMPARE(help.status, 0);
        QVERIFY(help.out.contains("show FILE"));
        const Run version = RunCli({u"--version"_s});
        QCOMPARE(version.status, 0);
        QCOMPARE(version.out, "padmapper-cli " + QByteArray(PADMAPPER_VERSION) + "\n");
    }
};

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
