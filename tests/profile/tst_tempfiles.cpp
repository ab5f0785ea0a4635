// SPDX-License-Identifier: GPL-3.0-or-later
#include "profile/tempfiles.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#ifdef Q_OS_UNIX
#include <sys/types.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

class tst_TempFiles : public QObject
{
    Q_OBJECT

    QTemporaryDir m_temp; // the system's temporary folder for this test and its helpers

private slots:
    void initTestCase() { qputenv("TMPDIR", QFile::encodeName(m_temp.path())); }

    void filesAreUniqueAndPrivate()
    {
        // The names become entry names inside an uploaded profile: short ones.
        static const QRegularExpression name(u"^PMX[0-9A-F]{1,4}\\.tmp$"_s);
        QStringList made;
        for (int i = 0; i < 50; ++i) {
            const QString path = NewTempFile(u"PMX"_s);
            QVERIFY2(name.match(QFileInfo(path).fileName()).hasMatch(), qPrintable(path));
            QVERIFY(!made.contains(path));
            made << path;
        }
        QCOMPARE(TempFiles(), made);
        const QFileInfo folder(QFileInfo(made.first()).path());
#ifdef Q_OS_UNIX
        QCOMPARE(folder.permissions() & QFileDevice::Permissions(0x0077),
                 QFileDevice::Permissions()); // no group, no others
#endif
        DeleteTempFiles();
        QVERIFY(!QFileInfo::exists(folder.filePath()));

        // A temporary folder that cannot be used gives no file, and is not made.
        qputenv("TMPDIR", QFile::encodeName(m_temp.filePath(u"gone"_s)));
        QCOMPARE(NewTempFile(u"PMX"_s), QString());
        QVERIFY(!QFileInfo::exists(m_temp.filePath(u"gone"_s)));
        qputenv("TMPDIR", QFile::encodeName(m_temp.path()));
    }

#ifdef Q_OS_UNIX
    void signalsLeaveNoFiles_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::addColumn<bool>("handled"); // false: the files stay until a later start
        QTest::newRow("SIGTERM") << int(SIGTERM) << true;
        QTest::newRow("SIGINT") << int(SIGINT) << true;
        QTest::newRow("SIGHUP") << int(SIGHUP) << true;
        QTest::newRow("SIGKILL") << int(SIGKILL) << false;
    }
    void signalsLeaveNoFiles()
    {
        QFETCH(int, signalNumber);
        QFETCH(bool, handled);
        QProcess holder;
        holder.start(QString::fromUtf8(PADMAPPER_TEMPFILEHOLDER), {});
        QVERIFY(holder.waitForStarted());
        QStringList paths;
        while (paths.size() < 3 && holder.waitForReadyRead(10000)) {
            while (holder.canReadLine())
                paths << QString::fromLocal8Bit(holder.readLine().trimmed());
        }
        QCOMPARE(paths.size(), 3);
        // Neither the files of a running program nor a folder still without
        // its lock (being made) are stale.
        QVERIFY(QDir(m_temp.path()).mkpath(u"padmapper-files-new"_s));
        DeleteStaleTempFiles();
        QVERIFY(QFileInfo::exists(m_temp.filePath(u"padmapper-files-new"_s)));
        for (const QString &path : paths)
            QVERIFY(QFileInfo::exists(path));
        QCOMPARE(::kill(static_cast<pid_t>(holder.processId()), signalNumber), 0);
        QVERIFY(holder.waitForFinished(10000));
        // It ends as the signal would have ended it; one it handles takes the files along,
        // and what a killed program leaves goes at the next start.
        QCOMPARE(holder.exitStatus(), QProcess::CrashExit);
        for (const QString &path : paths)
            QVERIFY2(QFileInfo::exists(path) != handled, qPrintable(path));
        QCOMPARE(QFileInfo::exists(QFileInfo(paths.first()).path()), !handled);
        DeleteStaleTempFiles();
        QVERIFY(!QFileInfo::exists(QFileInfo(paths.first()).path()));
    }
#endif
};

QTEST_GUILESS_MAIN(tst_TempFiles)
#include "tst_tempfiles.moc"
