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
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// A member in a folder, its path too long for the name field alone.
const QString DeepName = u"folder-%1/%2.kcf"_s.arg(QString(60, u'd'), QString(60, u'k'));

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
        for (const char *tool : {"tar", "bsdtar"}) // GNU tar and libarchive-tools (scripts/bootstrap installs them)
            QVERIFY2(!QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty(), tool);
        const QString picturePath = MakePicture(m_dir.filePath(u"Photo.PNG"_s), 64, 48);
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

    void toolsExtractOurProfiles_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<int>("status");
        QTest::newRow("GNU tar") << u"tar"_s << 0;
        // The keymap is stored unpadded, directly followed by the single end
        // block: bsdtar calls that truncated, having read everything.
        QTest::newRow("bsdtar") << u"bsdtar"_s << 1;
    }
    void toolsExtractOurProfiles()
    {
        QFETCH(QString, tool);
        QFETCH(int, status);
        QTemporaryDir into;
        const ProgramRun run = RunProgram(tool, {u"-xf"_s, m_profile}, into.path());
        QCOMPARE(run.Status, status);
        QVERIFY2(status == 0 || run.Err.contains("Truncated tar archive"), run.Err.constData());
        QCOMPARE(ReadAll(into.filePath(u"Games.png"_s)), m_pictureBytes);
        QCOMPARE(ReadAll(into.filePath(u"Games.kcf"_s)), m_keymapBytes);
    }

    void weListTheirArchives_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QStringList>("expected"); // names as our reader lists them; empty: pax
        QTest::newRow("GNU tar, gnu") << u"tar"_s << u"gnu"_s
                                      << QStringList{u"short.png"_s, u"././@LongLink"_s, QString(100, u'n'),
                                                     u"././@LongLink"_s, DeepName.left(100)};
        // ustar cannot store the long name at all, and puts the folder in a prefix field.
        QTest::newRow("bsdtar, ustar") << u"bsdtar"_s << u"ustar"_s
                                       << QStringList{u"short.png"_s, DeepName.section(u'/', 1)};
        QTest::newRow("GNU tar, posix") << u"tar"_s << u"posix"_s << QStringList{};
    }
    void weListTheirArchives()
    {
        QFETCH(QString, tool);
        QFETCH(QString, format);
        QFETCH(QStringList, expected);
        QTemporaryDir work;
        QStringList members{u"short.png"_s, QString(120, u'n'), DeepName};
        if (format == "ustar"_L1)
            members.removeAt(1);
        QVERIFY(QDir(work.path()).mkpath(members.last().section(u'/', 0, 0)));
        for (const QString &member : members)
            QVERIFY(WriteFile(work.filePath(member), member == "short.png"_L1 ? QByteArray(700, 'p') : "x"));
        const QString archive = work.filePath(u"theirs.tar"_s);
        const ProgramRun run = RunProgram(tool, QStringList{u"-cf"_s, archive, u"--format="_s + format} + members,
                                          work.path());
        QVERIFY2(run.Status == 0, run.Err.constData());

        cTar tar;
        QVERIFY(tar.GetContents(archive));
        QStringList names;
        for (int i = 1; i <= tar.TotalFiles(); ++i)
            names << tar.Filename(i);
        // pax: every member is preceded by an extension header, listed as an
        // ordinary entry with its own name; the members themselves follow.
        if (expected.isEmpty())
            QVERIFY2(names.size() >= 4 && !names.filter(u"PaxHeader"_s).isEmpty(), qPrintable(names.join(u", "_s)));
        else
            QCOMPARE(names, expected);
        // Whatever the layout, the first member's bytes come out right.
        QCOMPARE(tar.FileToArray(int(names.indexOf(u"short.png"_s)) + 1), QByteArray(700, 'p'));
    }
};

QTEST_GUILESS_MAIN(tst_TarInterop)
#include "tst_tarinterop.moc"
