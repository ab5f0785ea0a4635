// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ansitext.h"

#include <QFile>
#include <QFileInfo>
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

Run RunCli(const QStringList &arguments)
{
    QProcess process;
    process.start(QString::fromUtf8(PADMAPPER_CLI), arguments);
    Run run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

QByteArray ReadAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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
        QFile file(lng);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Errors]\r\n12=Fehler beim Lesen:\r\n13=Interner Fehler:\r\n");
        file.close();
        const Run run = RunCli({u"--language"_s, lng, u"show"_s, QFINDTESTDATA("../fixtures/keymap-with-errors.kcf")});
        QCOMPARE(run.status, 1);
        QVERIFY(run.err.startsWith("Fehler beim Lesen:\n   KEY_LSK"));
        const Run missing = RunCli({u"--language"_s, lng, u"show"_s, dir.filePath(u"none.kcf"_s)});
        QCOMPARE(missing.status, 1);
        QCOMPARE(missing.err, QByteArray("Interner Fehler:\n53 File not found\n"));
    }

    void junkInputStillGivesAKeymap()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"junk.kcf"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        static const char junk[] = "\0\xFF\r\n<KEY_1>\r\n<KEYBOARD MODIFIERS = \"01";
        file.write(junk, sizeof junk - 1);
        file.close();
        const Run run = RunCli({u"show"_s, path});
        QCOMPARE(run.status, 1);
        QVERIFY(run.out.startsWith("<SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION"));
        QVERIFY(run.err.contains("KEY_1\t\t-> Keyboard Modifier ist keine Zahl ()"));
    }

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
