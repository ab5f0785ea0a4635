// SPDX-License-Identifier: GPL-3.0-or-later
#include "profile/tar.h"

#include "../testfiles.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// A header with the given raw name and size fields (other fields zero).
QByteArray RawHeader(const QByteArray &name, const QByteArray &size)
{
    QByteArray header(512, '\0');
    header.replace(0, name.size(), name);
    header.replace(124, size.size(), size);
    return header;
}

} // namespace

class tst_Tar : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString Path(const QString &name) const { return m_dir.filePath(name); }

private slots:
    // Away from UTC, so that the local wall clock differs from UTC.
    void initTestCase() { qputenv("TZ", "XXX-3"); }

    void octalToLong()
    {
        const std::pair<QByteArray, std::optional<std::int32_t>> fields[] = {
            {QByteArray("00000001750\0", 12), 1000},
            {"   17 ", 15}, // blanks around
            {QByteArray(12, '\0'), 0},
            {QByteArray("1\0007", 3), 15}, // NULs anywhere are dropped
            {"1a", 8}, // a letter counts 0
            {"19", 17}, // 8 and 9 at face value
            {"17777777777", 2147483647},
            {"99999999999", std::nullopt}, // beyond 32 bits
        };
        for (const auto &[field, value] : fields)
            QCOMPARE(cTar::OctalToLong(field), value);
    }

    void headerLayout()
    {
        QVERIFY(WriteFile(Path(u"data.bin"_s), QByteArray(1000, 'x')));
        cTar tar;
        tar.AddFile(Path(u"data.bin"_s), u"Games.png"_s, QString());
        QVERIFY(tar.CreateTarFile(Path(u"layout.tar"_s)));
        const QByteArray archive = ReadAll(Path(u"layout.tar"_s));
        const QByteArray header = archive.left(512);
        // Name, mode "000644 ", owner and group 0, size, mtime and checksum
        // (checked below), type '0', the old GNU magic, the rest NUL.
        QByteArray expected = "Games.png" + QByteArray(91, '\0') + QByteArray("000644 \0", 8) + QByteArray(16, '\0')
                              + QByteArray("00000001750\0", 12) + header.mid(136, 20) + '0' + QByteArray(100, '\0')
                              + QByteArray("ustar  \0", 8) + QByteArray(247, '\0');
        QCOMPARE(header, expected);
        // Checksum: seven octal digits and NUL over the header with blanks in its place.
        int sum = 0;
        for (const char c : expected.replace(148, 8, QByteArray(8, ' ')))
            sum += uchar(c);
        QCOMPARE(header.mid(148, 8), QByteArray::number(sum, 8).rightJustified(7, '0') + '\0');
        // mtime: the local wall clock, as if it were UTC.
        const QDateTime now = QDateTime::currentDateTime();
        QCOMPARE(header.at(147), '\0');
        QVERIFY(qAbs(header.mid(136, 11).toLongLong(nullptr, 8) - now.toSecsSinceEpoch() - now.offsetFromUtc()) < 120);
        QCOMPARE(archive.mid(512), QByteArray(1000, 'x') + QByteArray(24 + 512, '\0'));
    }

    void layoutSizes()
    {
        // File data is padded to whole blocks, content text (here 1000 bytes) is not.
        for (const auto &[fileBytes, archiveBytes] : {std::pair{-1, 2024}, {0, 1024}, {512, 1536}, {513, 2048}}) {
            cTar tar;
            QVERIFY(WriteFile(Path(u"sized.bin"_s), QByteArray(std::max(fileBytes, 0), 'z')));
            tar.AddFile(Path(u"sized.bin"_s), u"a"_s, fileBytes < 0 ? QString(1000, u'k') : QString());
            cTar back;
            QVERIFY(tar.CreateTarFile(Path(u"sized.tar"_s)) && back.GetContents(Path(u"sized.tar"_s)));
            QCOMPARE(ReadAll(Path(u"sized.tar"_s)).size(), archiveBytes);
            QCOMPARE(std::pair(back.TotalFiles(), back.Size(1)), std::pair(1, fileBytes < 0 ? 1000 : fileBytes));
        }
    }

    void entriesRoundTrip()
    {
        QByteArray picture;
        for (int i = 0; i < 5000; ++i)
            picture += char(i * 7);
        QVERIFY(WriteFile(Path(u"p.bin"_s), picture));
        cTar tar;
        tar.AddFile(Path(u"p.bin"_s), u"Games.png"_s, QString());
        tar.AddFile(Path(u"missing.bin"_s), u"skipped"_s, QString());
        // Content text is unpadded, so only the end block may follow it.
        tar.AddFile(QString(), u"Games.kcf"_s, u"K\u00E4se"_s);
        QVERIFY(tar.CreateTarFile(Path(u"round.tar"_s)));
        QVERIFY(!cTar().CreateTarFile(Path(u"round.tar"_s))); // nothing to write: the file stays

        cTar back;
        QVERIFY(back.GetContents(Path(u"round.tar"_s)) && back.ExtractFile(Path(u"deep/er/out.png"_s), 1));
        QCOMPARE(std::pair(back.Entries().size(), back.Filename(2)), std::pair(qsizetype(2), u"Games.kcf"_s));
        QCOMPARE(back.FileToArray(2), QByteArray("K\xE4se"));
        QCOMPARE(ReadAll(Path(u"deep/er/out.png"_s)), picture);
        QVERIFY(!back.GetContents(Path(u"none.tar"_s)) && !back.GetContents(m_dir.path()));
    }

    void listing_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<bool>("listed");
        QTest::addColumn<QString>("listing"); // name and size of each entry
        QTest::newRow("empty file") << QByteArray() << true << QString();
        QTest::newRow("all-NUL first name lists nothing")
            << QByteArray(1024, '\0') + RawHeader("a", "0") << true << QString();
        QTest::newRow("NULs removed anywhere in the name")
            << RawHeader(QByteArray("abc\0\0\0x", 7), "0") << true << u"abcx 0;"_s;
        QTest::newRow("no end block") << RawHeader("a", "3") + "xyz" << true << u"a 3;"_s;
        QTest::newRow("header cut short by the end") << RawHeader("a", "0") + QByteArray("b") << true << u"a 0;"_s;
        QTest::newRow("junk is read as a header") << QByteArray(600, 'J') << true << QString(100, u'J') + u" 0;"_s;
        QTest::newRow("size beyond 32 bits fails") << RawHeader("big", "77777777777") << false << QString();
        QByteArray many;
        for (int i = 0; i < cTar::MaximumEntries; ++i)
            many += RawHeader("e", "0");
        QTest::newRow("most entries") << many << true << u"e 0;"_s.repeated(cTar::MaximumEntries);
        QTest::newRow("one entry too many")
            << many + RawHeader("x", "0") << false << u"e 0;"_s.repeated(cTar::MaximumEntries);
    }
    void listing()
    {
        QFETCH(QByteArray, archive);
        QFETCH(bool, listed);
        QFETCH(QString, listing);
        QVERIFY(WriteFile(Path(u"rules.tar"_s), archive));
        cTar tar;
        QCOMPARE(tar.GetContents(Path(u"rules.tar"_s)), listed);
        QString got;
        for (int i = 1; i <= tar.TotalFiles(); ++i)
            got += u"%1 %2;"_s.arg(tar.Filename(i)).arg(tar.Size(i));
        QCOMPARE(got, listing);
    }

    void entries_data()
    {
        QTest::addColumn<int>("entry");
        QTest::addColumn<bool>("isDir");
        QTest::addColumn<QByteArray>("data"); // FileToArray; "\0" is the placeholder
        QTest::addColumn<bool>("extracted");
        QTest::addColumn<bool>("cut");
        const QByteArray placeholder(1, '\0');
        for (const int bad : {0, 7, -1})
            QTest::addRow("entry %d does not exist", bad) << bad << false << placeholder << false << false;
        QTest::newRow("directory") << 1 << true << placeholder << false << false;
        QTest::newRow("folder name with data is a file") << 2 << false << QByteArray("12345") << true << false;
        QTest::newRow("empty file") << 3 << false << placeholder << false << false;
        QTest::newRow("a stored byte 0 is the placeholder") << 4 << false << placeholder << false << false;
        QTest::newRow("one byte") << 5 << false << QByteArray("Q") << true << false;
        // The header promises 2 GB: what is there is given, nothing beyond the file.
        QTest::newRow("cut short") << 6 << false << QByteArray(512, 'd') << true << true;
    }
    void entries()
    {
        QFETCH(int, entry);
        QFETCH(bool, isDir);
        QFETCH(QByteArray, data);
        QFETCH(bool, extracted);
        QFETCH(bool, cut);
        const QByteArray block(512, '\0');
        QVERIFY(WriteFile(Path(u"entries.tar"_s),
                          RawHeader("pics/", "0") + RawHeader("pics5/", "5") + "12345" + block.left(507)
                              + RawHeader("pics", "0") + RawHeader("zero", "1") + block + RawHeader("one", "1") + "Q"
                              + block.left(511) + RawHeader("big", "17777777777") + QByteArray(512, 'd')));
        cTar tar;
        QVERIFY(tar.GetContents(Path(u"entries.tar"_s)));
        QCOMPARE(tar.TotalFiles(), 6);
        QCOMPARE(tar.IsDir(entry), isDir);
        QCOMPARE(tar.IsCut(entry), cut);
        QCOMPARE(tar.FileToArray(entry), data);
        const QString out = Path(u"x/%1.out"_s.arg(QString::fromLatin1(QTest::currentDataTag())));
        QCOMPARE(tar.ExtractFile(out, entry), extracted);
        QCOMPARE(ReadAll(out), extracted ? data : QByteArray());
        if (entry < 1 || entry > 6)
            QVERIFY(tar.Filename(entry).isEmpty() && tar.Size(entry) == 0);
    }
};

QTEST_GUILESS_MAIN(tst_Tar)
#include "tst_tar.moc"
