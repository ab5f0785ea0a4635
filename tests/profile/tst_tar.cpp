// SPDX-License-Identifier: GPL-3.0-or-later
#include "profile/tar.h"

#include "../testfiles.h"

#include <QFile>
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
    void octalToLong_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<int>("value");
        QTest::newRow("eleven digits and NUL") << QByteArray("00000001750\0", 12) << 1000;
        QTest::newRow("blanks around") << QByteArray("   17 ") << 15;
        QTest::newRow("all NUL") << QByteArray(12, '\0') << 0;
        QTest::newRow("all zero") << QByteArray("00000000000") << 0;
        QTest::newRow("NUL inside") << QByteArray("1\0" "7", 3) << 15;
        QTest::newRow("letters count zero") << QByteArray("1a") << 8;
        QTest::newRow("eight and nine at face value") << QByteArray("19") << 17;
        QTest::newRow("largest 32-bit") << QByteArray("17777777777") << 2147483647;
        QTest::newRow("beyond 32 bits fails") << QByteArray("20000000000") << -1;
        QTest::newRow("nines beyond 32 bits fail") << QByteArray("99999999999") << -1;
    }
    void octalToLong()
    {
        QFETCH(QByteArray, field);
        QFETCH(int, value); // -1: no number
        QCOMPARE(cTar::OctalToLong(field), value < 0 ? std::nullopt : std::optional<std::int32_t>(value));
    }

    void sizeBeyond32BitsFails()
    {
        QVERIFY(WriteFile(Path(u"huge.tar"_s), RawHeader("big", "77777777777") + QByteArray(512, '\0')));
        cTar tar;
        QVERIFY(!tar.GetContents(Path(u"huge.tar"_s)));
    }

    void headerLayout()
    {
        QVERIFY(WriteFile(Path(u"data.bin"_s), QByteArray(1000, 'x')));
        cTar tar;
        tar.AddFile(Path(u"data.bin"_s), u"Games.png"_s, QString());
        QVERIFY(tar.CreateTarFile(Path(u"layout.tar"_s)));
        const QByteArray archive = ReadAll(Path(u"layout.tar"_s));
        QCOMPARE(archive.size(), 2048); // header, 1000 bytes, 24 NULs, end block
        const QByteArray header = archive.left(512);
        QCOMPARE(header.left(100), QByteArray("Games.png") + QByteArray(91, '\0'));
        QCOMPARE(header.mid(100, 8), QByteArray("000644 \0", 8));
        QCOMPARE(header.mid(108, 16), QByteArray(16, '\0'));
        QCOMPARE(header.mid(124, 12), QByteArray("00000001750\0", 12));
        QCOMPARE(header[147], '\0');
        QCOMPARE(header[156], '0');
        QCOMPARE(header.mid(157, 100), QByteArray(100, '\0'));
        QCOMPARE(header.mid(257, 8), QByteArray("ustar  \0", 8));
        QCOMPARE(header.mid(265, 247), QByteArray(247, '\0'));
        // Checksum: seven octal digits and NUL over the header with blanks in its place.
        QByteArray blanked = header;
        blanked.replace(148, 8, QByteArray(8, ' '));
        int sum = 0;
        for (const char c : std::as_const(blanked))
            sum += static_cast<unsigned char>(c);
        QCOMPARE(header.mid(148, 8), QByteArray::number(sum, 8).rightJustified(7, '0') + '\0');
        // mtime: the local wall clock, as if it were UTC.
        const qint64 mtime = header.mid(136, 11).toLongLong(nullptr, 8);
        const QDateTime now = QDateTime::currentDateTime();
        QVERIFY(qAbs(mtime - (now.toSecsSinceEpoch() + now.offsetFromUtc())) < 120);
        QCOMPARE(archive.mid(512, 1000), QByteArray(1000, 'x'));
        QCOMPARE(archive.mid(1512), QByteArray(536, '\0'));
    }

    void layoutSizes_data()
    {
        QTest::addColumn<int>("fileBytes");
        QTest::addColumn<QString>("content");
        QTest::addColumn<int>("archiveBytes");
        QTest::newRow("content text is not padded") << -1 << QString(1000, u'k') << 2024;
        QTest::newRow("zero-length file has no data block") << 0 << QString() << 1024;
        QTest::newRow("exactly one block") << 512 << QString() << 1536;
        QTest::newRow("one byte more") << 513 << QString() << 2048;
    }
    void layoutSizes()
    {
        QFETCH(int, fileBytes);
        QFETCH(QString, content);
        QFETCH(int, archiveBytes);
        cTar tar;
        if (fileBytes >= 0) {
            QVERIFY(WriteFile(Path(u"sized.bin"_s), QByteArray(fileBytes, 'z')));
            tar.AddFile(Path(u"sized.bin"_s), u"a"_s, QString());
        } else {
            tar.AddFile(QString(), u"a.kcf"_s, content);
        }
        QVERIFY(tar.CreateTarFile(Path(u"sized.tar"_s)));
        QCOMPARE(ReadAll(Path(u"sized.tar"_s)).size(), archiveBytes);
        cTar back;
        QVERIFY(back.GetContents(Path(u"sized.tar"_s)));
        QCOMPARE(back.TotalFiles(), 1);
        QCOMPARE(back.Size(1), fileBytes >= 0 ? fileBytes : int(content.size()));
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
        tar.AddFile(Path(u"p.bin"_s), u"again.png"_s, QString());
        // Content text is unpadded, so only the end block may follow it.
        tar.AddFile(QString(), u"Games.kcf"_s, u"K\u00E4se"_s);
        QVERIFY(tar.CreateTarFile(Path(u"round.tar"_s)));

        cTar back;
        QVERIFY(back.GetContents(Path(u"round.tar"_s)));
        QCOMPARE(back.TotalFiles(), 3);
        QCOMPARE(back.Filename(1), u"Games.png"_s);
        QCOMPARE(back.FileToArray(1), picture);
        QCOMPARE(back.Filename(2), u"again.png"_s);
        QCOMPARE(back.FileToArray(2), picture);
        QCOMPARE(back.Filename(3), u"Games.kcf"_s);
        QCOMPARE(back.FileToArray(3), QByteArray("K\xE4se"));
        QVERIFY(back.ExtractFile(Path(u"deep/er/out.png"_s), 1));
        QCOMPARE(ReadAll(Path(u"deep/er/out.png"_s)), picture);
        // Writing twice writes the same entries again.
        QVERIFY(tar.CreateTarFile(Path(u"round2.tar"_s)));
        QVERIFY(back.GetContents(Path(u"round2.tar"_s)));
        QCOMPARE(back.TotalFiles(), 3);
    }

    void badNumbersGiveEmptyResults()
    {
        cTar tar;
        tar.AddFile(QString(), u"one"_s, u"1"_s);
        QVERIFY(tar.CreateTarFile(Path(u"one.tar"_s)));
        QVERIFY(tar.GetContents(Path(u"one.tar"_s)));
        for (const int bad : {0, 2, -1}) {
            QCOMPARE(tar.Filename(bad), QString());
            QCOMPARE(tar.Size(bad), 0);
            QVERIFY(!tar.IsDir(bad));
            QCOMPARE(tar.FileToArray(bad), QByteArray(1, '\0'));
            QVERIFY(!tar.ExtractFile(Path(u"bad.out"_s), bad));
        }
        QVERIFY(!QFile::exists(Path(u"bad.out"_s)));
    }

    void readerRules_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QList<int>>("sizes");
        QTest::newRow("all-NUL first name lists nothing") << QByteArray(1024, '\0') << QStringList() << QList<int>();
        QTest::newRow("NULs removed anywhere in the name")
            << RawHeader(QByteArray("abc\0\0\0x", 7), "0") + QByteArray(512, '\0') << QStringList{u"abcx"_s}
            << QList<int>{0};
        QTest::newRow("no end block") << RawHeader("a", "3") + "xyz" << QStringList{u"a"_s} << QList<int>{3};
        QTest::newRow("header cut short by the end")
            << RawHeader("a", "0") + QByteArray("b") << QStringList{u"a"_s} << QList<int>{0};
        QTest::newRow("junk is read as a header")
            << QByteArray(600, 'J') << QStringList{QString(100, u'J')} << QList<int>{0};
        QTest::newRow("empty file") << QByteArray() << QStringList() << QList<int>();
    }
    void readerRules()
    {
        QFETCH(QByteArray, archive);
        QFETCH(QStringList, names);
        QFETCH(QList<int>, sizes);
        QVERIFY(WriteFile(Path(u"rules.tar"_s), archive));
        cTar tar;
        QVERIFY(tar.GetContents(Path(u"rules.tar"_s)));
        QCOMPARE(tar.TotalFiles(), int(names.size()));
        for (int i = 0; i < names.size(); ++i) {
            QCOMPARE(tar.Filename(i + 1), names[i]);
            QCOMPARE(tar.Size(i + 1), sizes[i]);
        }
    }

    void truncatedDataGivesWhatIsThere()
    {
        // The header promises 2 GB; only 512 bytes follow. Nothing beyond the
        // file is allocated or returned.
        QVERIFY(WriteFile(Path(u"short.tar"_s), RawHeader("big", "17777777777") + QByteArray(512, 'd')));
        cTar tar;
        QVERIFY(tar.GetContents(Path(u"short.tar"_s)));
        QCOMPARE(tar.Size(1), 2147483647);
        QCOMPARE(tar.FileToArray(1), QByteArray(512, 'd'));
        QVERIFY(tar.ExtractFile(Path(u"short.out"_s), 1));
        QCOMPARE(ReadAll(Path(u"short.out"_s)), QByteArray(512, 'd'));
    }

    void directoriesAndPlaceholders()
    {
        QByteArray archive = RawHeader("pics/", "0") + RawHeader("pics5/", "5") + QByteArray("12345")
                             + QByteArray(507, '\0') + RawHeader("pics", "0") + RawHeader("zero", "1")
                             + QByteArray(1, '\0') + QByteArray(511, '\0') + RawHeader("one", "1") + "Q"
                             + QByteArray(511, '\0') + QByteArray(512, '\0');
        QVERIFY(WriteFile(Path(u"dirs.tar"_s), archive));
        cTar tar;
        QVERIFY(tar.GetContents(Path(u"dirs.tar"_s)));
        QCOMPARE(tar.TotalFiles(), 5);
        QVERIFY(tar.IsDir(1));
        QVERIFY(!tar.IsDir(2));
        QVERIFY(!tar.IsDir(3));
        QVERIFY(!tar.ExtractFile(Path(u"x/dir.out"_s), 1));
        QVERIFY(!tar.ExtractFile(Path(u"x/empty.out"_s), 3));
        // A stored single byte 0 is taken for the empty placeholder.
        QVERIFY(!tar.ExtractFile(Path(u"x/zero.out"_s), 4));
        QVERIFY(!QFile::exists(Path(u"x/zero.out"_s)));
        QVERIFY(tar.ExtractFile(Path(u"x/one.out"_s), 5));
        QCOMPARE(ReadAll(Path(u"x/one.out"_s)), QByteArray("Q"));
    }

    void tooManyEntriesFail()
    {
        QByteArray archive;
        archive.reserve(40000 * 512 + 512);
        for (int i = 0; i < 40000; ++i)
            archive += RawHeader("e" + QByteArray::number(i), "0");
        QVERIFY(WriteFile(Path(u"many.tar"_s), archive));
        cTar tar;
        QVERIFY(!tar.GetContents(Path(u"many.tar"_s)));
        QCOMPARE(tar.TotalFiles(), cTar::MaximumEntries);
        archive.truncate(10000 * 512);
        QVERIFY(WriteFile(Path(u"many.tar"_s), archive));
        QVERIFY(tar.GetContents(Path(u"many.tar"_s)));
        QCOMPARE(tar.TotalFiles(), 10000);
        QCOMPARE(tar.Filename(10000), u"e9999"_s);
    }

    void missingArchiveFails()
    {
        cTar tar;
        QVERIFY(!tar.GetContents(Path(u"none.tar"_s)));
        QVERIFY(!tar.GetContents(m_dir.path()));
    }

    void failedWriteKeepsThePreviousFile()
    {
        const QString target = Path(u"keep.hid"_s);
        QVERIFY(WriteFile(target, "previous archive"));
        cTar empty;
        QVERIFY(!empty.CreateTarFile(target));
        QCOMPARE(ReadAll(target), QByteArray("previous archive"));

        cTar tar;
        tar.AddFile(QString(), u"k.kcf"_s, u"text"_s);
        QVERIFY(!tar.CreateTarFile(Path(u"no-such-folder/x.hid"_s)));
#ifdef Q_OS_UNIX
        const QString locked = Path(u"locked"_s);
        QVERIFY(QDir().mkpath(locked));
        const QString lockedTarget = locked + u"/keep.hid"_s;
        QVERIFY(WriteFile(lockedTarget, "previous archive"));
        QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        if (QFileInfo(locked).isWritable())
            qInfo("running as a user who may write anywhere; the read-only folder case is not meaningful");
        else
            QVERIFY(!tar.CreateTarFile(lockedTarget));
        QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                                  | QFileDevice::ExeOwner));
        QCOMPARE(ReadAll(lockedTarget), QByteArray("previous archive"));
#endif
    }
};

QTEST_GUILESS_MAIN(tst_Tar)
#include "tst_tar.moc"
