// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/nativefile.h"

#include "../testfiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <unistd.h>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(FileProblem)

class tst_NativeFile : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString Path(const QString &name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(QDir().mkpath(Path(u"out"_s)) && MakePipe(Path(u"out/pipe"_s)) && WriteFile(Path(u"file"_s), "bytes"));
    }

    void namesSurviveTheFileSystem_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("UTF-8") << QByteArray("K\xC3\xA4se.kcf") << u"K\u00E4se.kcf"_s;
        QTest::newRow("four-byte UTF-8") << QByteArray("\xF0\x9F\x98\x80") << u"\U0001F600"_s;
        QTest::newRow("Latin-1") << QByteArray("\xE9t\xE9.png") << u"\xDCE9t\xDCE9.png"_s;
        QTest::newRow("not UTF-8 at all") << QByteArray("\xFF\xFE.hid") << u"\xDCFF\xDCFE.hid"_s;
        QTest::newRow("overlong slash") << QByteArray("\xC0\xAF") << u"\xDCC0\xDCAF"_s;
        QTest::newRow("encoded escape") << QByteArray("\xED\xB3\xBF") << u"\xDCED\xDCB3\xDCBF"_s;
        QTest::newRow("cut sequence, lowest escape") << QByteArray("a\xE2\x80") << u"a\xDCE2\xDC80"_s;
    }
    void namesSurviveTheFileSystem()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(DecodeFileName(bytes), text);
        QCOMPARE(EncodeFileName(text), bytes);
        // A dropped file's URL carries the same bytes, percent-encoded.
        QCOMPARE(LocalFileFromUrl(QUrl::fromEncoded("file:///d/" + bytes.toPercentEncoding())), u"/d/"_s + text);
        QVERIFY(WriteWholeFile(Path(text), "x"));
        QCOMPARE(::access((QFile::encodeName(m_dir.path()) + '/' + bytes).constData(), F_OK), 0);
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir.path()));
        QCOMPARE(AbsoluteFilePath(text), Path(text));
        QVERIFY(QDir::setCurrent(previous));
        QVERIFY(RemoveFile(Path(text)));
    }

    void readingOpensOnlyRegularFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<FileProblem>("problem");
        QTest::newRow("regular file") << u"file"_s << FileProblem::None;
        QTest::newRow("nothing there") << u"none"_s << FileProblem::Missing;
        QTest::newRow("pipe") << u"out/pipe"_s << FileProblem::NotRegularFile;
        QTest::newRow("below a file") << u"file/x"_s << FileProblem::FolderMissing;
    }
    void readingOpensOnlyRegularFiles()
    {
        QFETCH(QString, name);
        QFETCH(FileProblem, problem);
        QFile file;
        FileError error;
        QCOMPARE(OpenForReading(file, Path(name), &error), problem == FileProblem::None);
        QCOMPARE(error.Problem, problem);
        QCOMPARE(file.isOpen() ? file.readAll() : QByteArray(), problem == FileProblem::None ? "bytes" : "");
    }

    void failedWritesLeaveTheTargetAlone_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("sizeLimit"); // 0: none
        QTest::addColumn<FileProblem>("problem");
        QTest::newRow("replaces the file, keeping its permissions") << u"out/t"_s << 0 << FileProblem::None;
        QTest::newRow("no such folder") << u"out/none/t"_s << 0 << FileProblem::FolderMissing;
        QTest::newRow("target is a pipe") << u"out/pipe"_s << 0 << FileProblem::NotRegularFile;
        QTest::newRow("beyond the file-size limit") << u"out/t"_s << 4096 << FileProblem::TooLarge;
    }
    void failedWritesLeaveTheTargetAlone()
    {
        QFETCH(QString, target);
        QFETCH(int, sizeLimit);
        QFETCH(FileProblem, problem);
        QVERIFY(WriteFile(Path(u"out/t"_s), "previous"));
        QVERIFY(::chmod(QFile::encodeName(Path(u"out/t"_s)).constData(), 0640) == 0);
        const QStringList before = QDir(Path(u"out"_s)).entryList(QDir::AllEntries | QDir::Hidden);
        const QByteArray bytes(64 * 1024, 'n');
        FileError error;
        {
            std::optional<FileSizeLimit> limit;
            if (sizeLimit > 0)
                limit.emplace(sizeLimit);
            QCOMPARE(WriteWholeFile(Path(target), bytes, &error), problem == FileProblem::None);
        }
        {
            WholeFileWriter abandoned(Path(u"out/t"_s)); // never committed: leaves no trace
            QVERIFY(abandoned.Open() && abandoned.Write("abandoned"));
        }
        QCOMPARE(error.Problem, problem);
        QCOMPARE(error.Path, problem == FileProblem::None ? QString() : Path(target));
        QCOMPARE(ReadAll(Path(u"out/t"_s)), problem == FileProblem::None ? bytes : QByteArray("previous"));
        struct stat status = {};
        QVERIFY(::stat(QFile::encodeName(Path(u"out/t"_s)).constData(), &status) == 0);
        QCOMPARE(status.st_mode & 07777, 0640u);
        QCOMPARE(QDir(Path(u"out"_s)).entryList(QDir::AllEntries | QDir::Hidden), before);
    }
};

QTEST_GUILESS_MAIN(tst_NativeFile)
#include "tst_nativefile.moc"
