// SPDX-License-Identifier: GPL-3.0-or-later
// Profiles are tar archives that users open with other tools, and archives from
// other tools are opened as profiles: both directions against GNU tar and bsdtar.
#include "keymap/keymap.h"
#include "keymap/keymapwriter.h"
#include "profile/profilearchive.h"
#include "profile/tar.h"
#include "profile/tempfiles.h"

#include "../testfiles.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct ToolRun
{
    int status = -1;
    QByteArray out;
    QByteArray err;
};

ToolRun RunTool(const QString &program, const QStringList &arguments, const QString &folder)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    ToolRun run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

QString Tool(const char *name)
{
    return QStandardPaths::findExecutable(QString::fromLatin1(name));
}

} // namespace

class tst_TarInterop : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_profile;
    QByteArray m_pictureBytes;
    QByteArray m_keymapBytes;

private slots:
    void initTestCase()
    {
        QVERIFY2(!Tool("tar").isEmpty(), "GNU tar is needed (scripts/bootstrap setup installs it)");
        QVERIFY2(!Tool("bsdtar").isEmpty(), "bsdtar is needed (package libarchive-tools)");

        QImage image(64, 48, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, qRgb(x * 4, y * 5, (x ^ y) * 3));
        const QString picturePath = m_dir.filePath(u"Photo.PNG"_s);
        QVERIFY(image.save(picturePath));
        m_pictureBytes = ReadAll(picturePath);
        ProfilePicture picture;
        QVERIFY(AdoptPicture(picturePath, picture));
        Keymap keymap;
        keymap.ResetToPhoneDefaults();
        keymap[PhoneKeys::Cam] = KeyAction{false, 0, 4, 59, u"Alt+F2"_s};
        m_keymapBytes = WriteKeymapText(keymap).toLatin1();
        m_profile = m_dir.filePath(u"Games.hid"_s);
        QVERIFY(SaveProfile(m_profile, false, keymap, picture));
        DeleteTempFiles();
    }

    void toolsListOurProfiles_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::newRow("GNU tar") << u"tar"_s;
        QTest::newRow("bsdtar") << u"bsdtar"_s;
    }
    void toolsListOurProfiles()
    {
        QFETCH(QString, tool);
        const ToolRun run = RunTool(Tool(tool.toLatin1().constData()), {u"-tvf"_s, m_profile}, m_dir.path());
        qInfo("%s -tvf: status %d, stderr: %s", qPrintable(tool), run.status, run.err.trimmed().constData());
        QVERIFY(run.out.contains("Games.png"));
        QVERIFY(run.out.contains("Games.kcf"));
        QVERIFY(run.out.contains(QByteArray::number(m_pictureBytes.size())));
        QVERIFY(run.out.contains(QByteArray::number(m_keymapBytes.size())));
        if (tool == "tar"_L1) {
            QCOMPARE(run.status, 0);
        } else {
            // The keymap is stored unpadded, directly followed by the single end
            // block: bsdtar calls that truncated but has listed everything.
            QCOMPARE(run.status, 1);
            QVERIFY(run.err.contains("Truncated tar archive"));
        }
    }

    void toolsExtractOurProfiles_data() { toolsListOurProfiles_data(); }
    void toolsExtractOurProfiles()
    {
        QFETCH(QString, tool);
        QTemporaryDir into;
        const ToolRun run = RunTool(Tool(tool.toLatin1().constData()), {u"-xf"_s, m_profile}, into.path());
        qInfo("%s -xf: status %d, stderr: %s", qPrintable(tool), run.status, run.err.trimmed().constData());
        QCOMPARE(ReadAll(into.filePath(u"Games.png"_s)), m_pictureBytes);
        QCOMPARE(ReadAll(into.filePath(u"Games.kcf"_s)), m_keymapBytes);
    }

    void weListTheirArchives_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QStringList>("expected"); // names as our reader lists them, in order
        const QString longName = QString(120, u'n');
        const QString deepName = u"folder-%1/%2.kcf"_s.arg(QString(60, u'd'), QString(60, u'k'));
        QTest::newRow("gnu tar, gnu format")
            << u"tar"_s << QStringList{u"--format=gnu"_s}
            << QStringList{u"short.png"_s, u"././@LongLink"_s, longName.left(100), u"././@LongLink"_s,
                           deepName.left(100)};
        QTest::newRow("gnu tar, ustar format")
            << u"tar"_s << QStringList{u"--format=ustar"_s}
            << QStringList{u"short.png"_s, QString(60, u'k') + u".kcf"_s};
        QTest::newRow("gnu tar, posix format") << u"tar"_s << QStringList{u"--format=posix"_s} << QStringList{};
        QTest::newRow("bsdtar, ustar format")
            << u"bsdtar"_s << QStringList{u"--format"_s, u"ustar"_s}
            << QStringList{u"short.png"_s, QString(60, u'k') + u".kcf"_s};
        QTest::newRow("bsdtar, pax format") << u"bsdtar"_s << QStringList{u"--format"_s, u"pax"_s}
                                            << QStringList{};
    }
    void weListTheirArchives()
    {
        QFETCH(QString, tool);
        QFETCH(QStringList, options);
        QFETCH(QStringList, expected);
        QTemporaryDir work;
        const QString longName = QString(120, u'n');
        const QString deepFolder = u"folder-"_s + QString(60, u'd');
        const QString deepName = deepFolder + u'/' + QString(60, u'k') + u".kcf"_s;
        QVERIFY(QDir(work.path()).mkpath(deepFolder));
        const QList<std::pair<QString, QByteArray>> files = {
            {u"short.png"_s, QByteArray(700, 'p')}, {longName, "long"}, {deepName, "deep"}};
        for (const auto &[name, bytes] : files) {
            QFile file(work.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(bytes);
        }
        // ustar cannot store the long name at all: leave it out there.
        const bool ustar = options.contains(u"--format=ustar"_s) || options.contains(u"ustar"_s);
        QStringList members{u"short.png"_s};
        if (!ustar)
            members << longName;
        members << deepName;
        const QString archive = work.filePath(u"theirs.tar"_s);
        const ToolRun run = RunTool(Tool(tool.toLatin1().constData()),
                                    QStringList{u"-cf"_s, archive} + options + members, work.path());
        QVERIFY2(run.status == 0, run.err.constData());

        cTar tar;
        QVERIFY(tar.GetContents(archive));
        QStringList names;
        for (int i = 1; i <= tar.TotalFiles(); ++i)
            names << tar.Filename(i);
        if (expected.isEmpty()) {
            // pax: every member is preceded by an extension header, listed as an
            // ordinary entry with its own name; the members themselves follow.
            QVERIFY2(names.size() >= 4, qPrintable(names.join(u", "_s)));
            QVERIFY(names.contains(u"short.png"_s));
            QVERIFY(names.filter(u"PaxHeader"_s).size() >= 1);
        } else {
            QCOMPARE(names, expected);
        }
        // Whatever the layout, the first member's bytes come out right.
        const int shortEntry = int(names.indexOf(u"short.png"_s)) + 1;
        QVERIFY(shortEntry > 0);
        QCOMPARE(tar.FileToArray(shortEntry), QByteArray(700, 'p'));
    }
};

QTEST_GUILESS_MAIN(tst_TarInterop)
#include "tst_tarinterop.moc"
