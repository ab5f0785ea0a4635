// SPDX-License-Identifier: GPL-3.0-or-later
#include "profile/tempfiles.h"

#include <QFileInfo>
#include <QProcess>
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

private slots:
    void filesAreUniqueAndPrivate()
    {
        QStringList made;
        for (int i = 0; i < 50; ++i) {
            const QString path = NewTempFile(u"PMX"_s);
            QVERIFY(!path.isEmpty());
            QVERIFY(QFileInfo(path).fileName().startsWith(u"PMX"_s));
            QVERIFY(path.endsWith(u".tmp"_s));
            QVERIFY(!made.contains(path));
            made << path;
        }
        QCOMPARE(TempFiles(), made);
#ifdef Q_OS_UNIX
        QCOMPARE(QFileInfo(made.first()).permissions() & (QFileDevice::ReadOther | QFileDevice::ReadGroup),
                 QFileDevice::Permissions());
#endif
        DeleteTempFiles();
        for (const QString &path : made)
            QVERIFY(!QFileInfo::exists(path));
    }

#ifdef Q_OS_UNIX
    void signalsLeaveNoFiles_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::newRow("SIGTERM") << int(SIGTERM);
        QTest::newRow("SIGINT") << int(SIGINT);
        QTest::newRow("SIGHUP") << int(SIGHUP);
    }
    void signalsLeaveNoFiles()
    {
        QFETCH(int, signalNumber);
        QProcess holder;
        holder.start(QString::fromUtf8(PADMAPPER_TEMPFILEHOLDER), {});
        QVERIFY(holder.waitForStarted());
        QStringList paths;
        while (paths.size() < 3 && holder.waitForReadyRead(10000)) {
            while (holder.canReadLine())
                paths << QString::fromLocal8Bit(holder.readLine().trimmed());
        }
        QCOMPARE(paths.size(), 3);
        for (const QString &path : paths)
            QVERIFY(QFileInfo::exists(path));
        QCOMPARE(::kill(static_cast<pid_t>(holder.processId()), signalNumber), 0);
        QVERIFY(holder.waitForFinished(10000));
        // It ends as the signal would have ended it, without the files.
        QCOMPARE(holder.exitStatus(), QProcess::CrashExit);
        for (const QString &path : paths)
            QVERIFY2(!QFileInfo::exists(path), qPrintable(path));
    }
#endif
};

QTEST_GUILESS_MAIN(tst_TempFiles)
#include "tst_tempfiles.moc"
