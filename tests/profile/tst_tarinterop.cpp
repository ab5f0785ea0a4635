// SPDX-License-Identifier: GPL-3.0-or-later
// Archives made by other tools are opened as profiles: how our reader lists
// what GNU tar and bsdtar write. (What we write is pinned byte for byte in tst_tar.)
#include "profile/tar.h"

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

private slots:
    void initTestCase()
    {
        for (const char *tool : {"tar", "bsdtar"}) // GNU tar and libarchive-tools (scripts/bootstrap installs them)
            QVERIFY2(!QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty(), tool);
    }

    void weListTheirArchives_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QStringList>("expected"); // names as our reader lists them
        QTest::newRow("GNU tar, gnu") << u"tar"_s << u"gnu"_s
                                      << QStringList{u"short.png"_s, u"././@LongLink"_s, QString(100, u'n'),
                                                     u"././@LongLink"_s, DeepName.left(100)};
        // ustar cannot store the long name at all, and puts the folder in a prefix field.
        QTest::newRow("bsdtar, ustar") << u"bsdtar"_s << u"ustar"_s
                                       << QStringList{u"short.png"_s, DeepName.section(u'/', 1)};
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
        QCOMPARE(names, expected);
        // Whatever the layout, the first member's bytes come out right.
        QCOMPARE(tar.FileToArray(int(names.indexOf(u"short.png"_s)) + 1), QByteArray(700, 'p'));
    }
};

QTEST_GUILESS_MAIN(tst_TarInterop)
#include "tst_tarinterop.moc"
