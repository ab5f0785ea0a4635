// SPDX-License-Identifier: GPL-3.0-or-later
#include "../testfiles.h"
#include "keymap/keymapreader.h"
#include "phoneart/overview.h"
#include "settings/languagetext.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString Cli = QString::fromUtf8(PADMAPPER_CLI);

ProgramRun RunCli(const QStringList &arguments)
{
    return RunProgram(Cli, arguments);
}

} // namespace

class tst_Cli : public QObject
{
    Q_OBJECT

private:
    const QString m_example = QFINDTESTDATA("../fixtures/keymap-writer-example.kcf");
    const QString m_withErrors = QFINDTESTDATA("../fixtures/keymap-with-errors.kcf");

private slots:
    void showReportsErrors()
    {
        const ProgramRun run = RunCli({u"show"_s, m_withErrors});
        QCOMPARE(run.Status, 1);
        QVERIFY2(run.Err.startsWith("By reading of the following keys raised an error:\n   KEY_LSK\t\t  -> ")
                     && run.Err.endsWith("\n   KEY_5\t\t-> Unbekannte UsageID (4)\n   \n"),
                 run.Err.constData());
        // What was read is written all the same; the faulty keys keep what they got.
        QVERIFY(run.Out.contains("<!-- Kamera f\xFCr Fotos  -->"));
        QVERIFY(run.Out.endsWith("</SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION>\r\n"));
        const QByteArray report = ReadAll(QFileInfo(Cli).absolutePath() + "/LastReadingError.txt"_L1);
        QVERIFY(report.contains("\r\n   KEY_5\t\t-> Unbekannte UsageID (4)\r\n"));

        QTemporaryDir dir;
        const QString lng = dir.filePath(u"deutsch.lng"_s);
        QVERIFY(WriteFile(lng, "[Errors]\r\n12=Fehler beim Lesen:\r\n13=Interner Fehler:\r\n"));
        QVERIFY(
            RunCli({u"--language"_s, lng, u"show"_s, m_withErrors}).Err.startsWith("Fehler beim Lesen:\n   KEY_LSK"));
        const ProgramRun missing = RunCli({u"--language="_s + lng, u"show"_s, dir.filePath(u"none.kcf"_s)});
        QCOMPARE(std::pair(missing.Status, missing.Err),
                 std::pair(1, QByteArray("Interner Fehler:\n53 File not found\n")));

        // A copy of the program whose folder cannot take the report names where it went.
        QVERIFY(QDir().mkpath(dir.filePath(u"bin/LastReadingError.txt"_s)));
        QVERIFY(QFile::copy(Cli, dir.filePath(u"bin/padmapper-cli"_s)));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_DATA_HOME"_s, dir.filePath(u"data"_s));
        const QString written = dir.filePath(u"data/padmapper/LastReadingError.txt"_s);
        QCOMPARE(RunProgram(dir.filePath(u"bin/padmapper-cli"_s), {u"show"_s, m_withErrors}, {}, environment).Err,
                 run.Err + "The error report was written to " + written.toUtf8() + '\n');
        QVERIFY(ReadAll(written).startsWith("LastReadError.txt von Padmapper\r\n"));
    }

    void packAndList()
    {
        QTemporaryDir dir;
        const QString picture = MakePicture(dir.filePath(u"Photo.PNG"_s), 80, 60);
        const ProgramRun pack = RunCli({u"pack"_s, picture, m_example, dir.filePath(u"Games"_s)});
        QCOMPARE(pack.Status, 0);
        QCOMPARE(pack.Err, QByteArray());
        // The keymap is stored without its final line end.
        QCOMPARE(RunCli({u"list"_s, dir.filePath(u"Games.hid"_s)}).Out,
                 "1\t" + QByteArray::number(ReadAll(picture).size()) + "\tGames.png\n2\t"
                     + QByteArray::number(ReadAll(m_example).size() - 2) + "\tGames.kcf\n");
    }

    void commands_data()
    {
        QTest::addColumn<QString>("command"); // split at blanks; %1 stands for the temporary folder
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("err"); // the start of standard error
        QTest::addColumn<QByteArray>("out"); // the start of standard output
        const auto row = [](const char *name, const QString &command, int status, const QByteArray &err,
                            const QByteArray &out = {}) { QTest::newRow(name) << command << status << err << out; };
        row("list a missing archive", u"list %1/none.tar"_s, 1, "padmapper-cli: Extracting Archive failed !");
        row("extract entry 0", u"extract %1/k.tar 0 %1/x"_s, 1, "padmapper-cli: %1/k.tar has no entry 0");
        row("extract entry past the end", u"extract %1/k.tar 2 %1/x"_s, 1, "padmapper-cli: %1/k.tar has no entry 2");
        row("extract a non-number", u"extract %1/k.tar one %1/x"_s, 2, "padmapper-cli: not an entry number");
        row("pack an undecodable picture", u"pack %1/k.tar %1/k.kcf %1/out"_s, 1,
            "padmapper-cli: No Picture is loadet !");
        row("pack a missing picture", u"pack %1/none.png %1/k.kcf %1/out"_s, 1, "padmapper-cli: no picture file");
        // Nothing is written when the keymap cannot be read, not even a profile of the defaults.
        row("pack a missing keymap", u"pack %1/p.png %1/typo.kcf %1/out"_s, 1,
            "Programinternal Error:\n53 File not found");
        row("pack a keymap with errors", u"pack %1/p.png "_s + m_withErrors + u" %1/out"_s, 1,
            "By reading of the following keys raised an error:\n");
        row("show a keymap beyond 256 MB", u"show %1/huge.kcf"_s, 1,
            "Programinternal Error:\n7 Out of memory\n%1/huge.kcf: the file is too large\n");
        // Read as one line, hence as no key: no error, but the user is told why.
        row("show a keymap with LF line ends", u"show %1/lf.kcf"_s, 0,
            "The lines of this keymap do not end with CR LF");
        row("show a profile without entries", u"show %1/empty.hid"_s, 1, "The Archive contained no Files !");
        row("extract a cut entry", u"extract %1/cut.hid 2 %1/x"_s, 1,
            "padmapper-cli: entry 2 of %1/cut.hid is cut short");
        row("overview into a .txt", u"overview %1/two.hid %1/out.txt"_s, 1,
            "padmapper-cli: the overview is written as .pdf or .png, not %1/out.txt\n");
        row("pack into a missing folder", u"pack %1/p.png %1/k.kcf %1/none/out"_s, 1,
            "padmapper-cli: Creating Archive failed !\n%1/none/out.hid: the folder does not exist\n");
#ifdef Q_OS_UNIX
        row("show a pipe named .kcf", u"show %1/pipe.kcf"_s, 1,
            "Programinternal Error:\n75 Path/File access error\n%1/pipe.kcf: not a regular file\n");
#endif
        for (const char *usage : {"", "frobnicate", "show", "show a b", "--frob show a", "show a --language",
                                  "--language /no/such.lng show a", "overview a"})
            row(*usage ? usage : "nothing", QString::fromLatin1(usage), 2, "padmapper-cli: ");
        const QString bundled = QString::fromUtf8(PADMAPPER_TEMPLATES_FOLDER "/Desktop.kcf");
        row("show writes what it reads", u"show "_s + bundled, 0, {}, ReadAll(bundled));
        row("help", u"--help"_s, 0, {}, "Usage: padmapper-cli [--language FILE.lng]");
        row("version", u"-v"_s, 0, {}, "padmapper-cli " PADMAPPER_VERSION "\n");
    }
    void commands()
    {
        QFETCH(QString, command);
        QFETCH(int, status);
        QFETCH(QByteArray, err);
        QFETCH(QByteArray, out);
        QTemporaryDir dir;
        QVERIFY(QFile::copy(m_example, dir.filePath(u"k.kcf"_s)));
        const QString picture = MakePicture(dir.filePath(u"p.png"_s), 8, 8);
        QCOMPARE(RunCli({u"pack"_s, picture, dir.filePath(u"k.kcf"_s), dir.filePath(u"two.hid"_s)}).Status, 0);
        // k.tar: a tar with only the keymap.
        QCOMPARE(RunProgram(u"tar"_s, {u"-cf"_s, u"k.tar"_s, u"k.kcf"_s}, dir.path()).Status, 0);
        QVERIFY(WriteFile(dir.filePath(u"empty.hid"_s), QByteArray(1024, '\0')));
        QVERIFY(WriteFile(dir.filePath(u"lf.kcf"_s), ReadAll(m_example).replace("\r\n", "\n")));
        QVERIFY(WriteFile(dir.filePath(u"huge.kcf"_s), {})
                && QFile::resize(dir.filePath(u"huge.kcf"_s), (256 << 20) + 1));
        // cut.hid: the profile without its end block and the keymap's last ten bytes.
        QVERIFY(WriteFile(dir.filePath(u"cut.hid"_s), ReadAll(dir.filePath(u"two.hid"_s)).chopped(522)));
#ifdef Q_OS_UNIX
        QVERIFY(MakePipe(dir.filePath(u"pipe.kcf"_s)));
#endif
        const ProgramRun run = RunCli(command.replace(u"%1"_s, dir.path()).split(u' ', Qt::SkipEmptyParts));
        QCOMPARE(run.Status, status);
        QVERIFY2(run.Err.startsWith(err.replace("%1", dir.path().toUtf8())), run.Err.constData());
        QVERIFY(run.Out.startsWith(out) && (!err.isEmpty() || run.Err.isEmpty()));
        QVERIFY(!QFileInfo::exists(dir.filePath(u"x"_s)));
        QVERIFY(!QFileInfo::exists(dir.filePath(u"out.hid"_s)) && !QFileInfo::exists(dir.filePath(u"out.txt"_s)));
    }

    // One A4 page whose texts hold every key's label, and a PNG of it at 2x.
    void overview_data()
    {
        QTest::addColumn<QStringList>("arguments"); // the output file follows
        QTest::addColumn<QStringList>("labels");
        Keymap desktop;
        QVERIFY(!ReadKeymapText(desktop, QString::fromUtf8(PADMAPPER_TEMPLATES_FOLDER "/Desktop.kcf"), false));
        QStringList all; // in English, the tool's language when none is given
        SetLanguage(QString::fromUtf8(PADMAPPER_DATA_FOLDER "/English.lng"));
        for (const OverviewLabel &label : MakeOverview({}, desktop, {}).Labels)
            all << label.Action << label.Comment;
        SetLanguage(QString());
        all.removeAll(QString());
        QCOMPARE(all.size(), 2 * PhoneKeys::Count);
        QTest::newRow("the default profile")
            << QStringList{u"overview"_s, QFileInfo(Cli).absolutePath() + u"/Desktop.hid"_s} << all;
        // A chord with a modifier, a special key with a comment, a mouse
        // action, keys without action, in the language given.
        QTest::newRow("every kind of key, in German")
            << QStringList{u"--language"_s, QString::fromUtf8(PADMAPPER_DATA_FOLDER "/Deutsch.lng"), u"overview"_s,
                           m_example}
            << QStringList{u"keymap-writer-example"_s, u"STRG + C"_s,    u"Eingabe"_s, u"OK"_s,
                           u"Nach oben bewegen"_s,     u"Nicht belegt"_s};
    }
    void overview()
    {
        QFETCH(QStringList, arguments);
        QTemporaryDir dir;
        const QString pdf = dir.filePath(u"out.pdf"_s);
        const QString png = dir.filePath(u"out.png"_s);
        QCOMPARE(RunCli(arguments + QStringList{pdf}).Status, 0);
        QVERIFY(RunProgram(QString::fromUtf8(PADMAPPER_PDFINFO), {pdf}).Out.simplified().contains(" Pages: 1 "));
        const QString text =
            QString::fromUtf8(RunProgram(QString::fromUtf8(PADMAPPER_PDFTOTEXT), {u"-layout"_s, pdf, u"-"_s}).Out);
        QFETCH(QStringList, labels);
        for (const QString &label : labels)
            QVERIFY2(text.contains(label), qPrintable(label + u" not in\n"_s + text));
        QCOMPARE(RunCli(arguments + QStringList{png}).Status, 0);
        const QImage picture(png);
        QCOMPARE(picture.size(), QSize(1586, 2246));
        // The PDF shows what the PNG shows: a PDF fills fading gradients solid.
        QCOMPARE(RunProgram(QString::fromUtf8(PADMAPPER_PDFTOPPM),
                            {u"-png"_s, u"-r"_s, u"24"_s, u"-singlefile"_s, pdf, dir.filePath(u"page"_s)})
                     .Status,
                 0);
        // Looked at from afar, where the words are grey smudges.
        const QSize afar(50, 70);
        const QImage page =
            QImage(dir.filePath(u"page.png"_s)).scaled(afar, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        const QImage small = picture.scaled(afar, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        qsizetype differing = 0;
        for (int y = 0; y < page.height(); ++y)
            for (int x = 0; x < page.width(); ++x)
                differing += std::abs(qGray(page.pixel(x, y)) - qGray(small.pixel(x, y))) > 48;
        QVERIFY2(differing < 10, qPrintable(QString::number(differing)));
    }

#ifdef Q_OS_UNIX
    void namesThatAreNotUtf8RoundTrip()
    {
        QTemporaryDir dir;
        // The shell spells the names in bytes; QProcess would pass them as UTF-8.
        const QString script =
            u"cd \"$0\" && hid=$(printf '\\377\\376.hid') && pic=$(printf '\\351.png') && "
            "trap 'rm -f \"$hid\" \"$pic\"' EXIT && \"$1\" pack \"$2\" \"$3\" \"$hid\" && \"$1\" list "
            "\"$hid\" >/dev/null && "
            "\"$1\" extract \"$hid\" 1 \"$pic\" && cmp \"$pic\" \"$2\" && \"$1\" show \"$hid\""_s;
        const ProgramRun run = RunProgram(u"sh"_s, {u"-c"_s, script, dir.path(), Cli,
                                                    MakePicture(dir.filePath(u"p.png"_s), 8, 8), m_example});
        QVERIFY2(run.Status == 0, run.Err.constData());
        QCOMPARE(run.Out, ReadAll(m_example));
    }
#endif
};

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
