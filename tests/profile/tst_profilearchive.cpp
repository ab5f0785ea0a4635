// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "keymap/keymapwriter.h"
#include "profile/document.h"
#include "profile/profilearchive.h"
#include "profile/tar.h"
#include "profile/tempfiles.h"

#include "../testfiles.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

Keymap SampleKeymap()
{
    Keymap keymap;
    keymap.ResetToPhoneDefaults();
    keymap[PhoneKeys::Digit(5)] = KeyAction{false, 0, 0, 13, u"Enter"_s};
    return keymap;
}

} // namespace

class tst_ProfileArchive : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString Path(const QString &name) const { return m_dir.filePath(name); }

    QString MakePicture(const QString &name, const char *format)
    {
        QImage image(30, 20, QImage::Format_RGB32);
        image.fill(Qt::blue);
        const QString path = Path(name);
        return image.save(path, format) ? path : QString();
    }

    ProfilePicture Adopted(const QString &name, const char *format)
    {
        ProfilePicture picture;
        if (!AdoptPicture(MakePicture(name, format), picture))
            qWarning("picture not adopted");
        return picture;
    }

    QString WriteArchive(const QString &name, const QList<std::pair<QString, QByteArray>> &entries)
    {
        cTar tar;
        int i = 0;
        for (const auto &[entryName, bytes] : entries) {
            const QString source = Path(u"src%1.bin"_s.arg(i++));
            if (!WriteFile(source, bytes))
                return {};
            tar.AddFile(source, entryName, QString());
        }
        const QString path = Path(name);
        return tar.CreateTarFile(path) ? path : QString();
    }

private slots:
    void cleanup() { DeleteTempFiles(); }

    void adoptCopiesThePicture()
    {
        const QString original = MakePicture(u"Photo.JPG"_s, "jpg");
        ProfilePicture picture;
        QVERIFY(AdoptPicture(original, picture));
        QVERIFY(!picture.Image.isNull());
        QCOMPARE(picture.PictureName, u"Photo.JPG"_s);
        QVERIFY(picture.PictureTempPath.endsWith(u".tmp"_s));
        QVERIFY(QFileInfo(picture.PictureTempPath).fileName().startsWith(u"PMX"_s));
        QCOMPARE(ReadAll(picture.PictureTempPath), ReadAll(original));
        QVERIFY(TempFiles().contains(picture.PictureTempPath));

        // The program's own copies are shown, not copied again.
        const QString copy = picture.PictureTempPath;
        QVERIFY(AdoptPicture(copy, picture));
        QCOMPARE(picture.PictureTempPath, copy);
        QCOMPARE(TempFiles().size(), 1);
        QVERIFY(!AdoptPicture(QString(), picture));
    }

    void savedEntriesTakeTheProfilesName_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("asCopy");
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("base");
        QTest::newRow("extension added") << u"Games"_s << false << u"Games.hid"_s << u"Games"_s;
        QTest::newRow("upper-case HID kept") << u"Games.HID"_s << false << u"Games.HID"_s << u"Games"_s;
        QTest::newRow("other extension gets hid") << u"Games.tar"_s << false << u"Games.tar.hid"_s << u"Games.tar"_s;
        QTest::newRow("several dots") << u"a.b.hid"_s << false << u"a.b.hid"_s << u"a.b"_s;
        QTest::newRow("copy keeps its path") << u"PMX1.tmp"_s << true << u"PMX1.tmp"_s << u"PMX1"_s;
        QTest::newRow("name of only an extension") << u".hid"_s << false << u".hid"_s << QString();
    }
    void savedEntriesTakeTheProfilesName()
    {
        QFETCH(QString, target);
        QFETCH(bool, asCopy);
        QFETCH(QString, written);
        QFETCH(QString, base);
        const ProfilePicture picture = Adopted(u"Photo.JPG"_s, "jpg");
        QString path = Path(target);
        std::optional<ProfileMessage> message;
        QVERIFY(SaveProfile(path, asCopy, SampleKeymap(), picture, &message));
        QCOMPARE(path, Path(written));
        QCOMPARE(message, std::nullopt);

        cTar tar;
        QVERIFY(tar.GetContents(path));
        QCOMPARE(tar.TotalFiles(), 2);
        QCOMPARE(tar.Filename(1), base + u".jpg"_s);
        QCOMPARE(tar.FileToArray(1), ReadAll(picture.PictureTempPath));
        QCOMPARE(tar.Filename(2), base + u".kcf"_s);
        QCOMPARE(tar.FileToArray(2), WriteKeymapText(SampleKeymap()).toLatin1());
    }

    void savingNeedsAPicture()
    {
        QString path = Path(u"x.hid"_s);
        std::optional<ProfileMessage> message;
        QVERIFY(!SaveProfile(path, false, SampleKeymap(), ProfilePicture(), &message));
        QCOMPARE(message, ProfileMessage::NoPicture);
        QVERIFY(!QFile::exists(path));

        ProfilePicture undecodable;
        QVERIFY(WriteFile(Path(u"junk.png"_s), "not a picture"));
        QVERIFY(!AdoptPicture(Path(u"junk.png"_s), undecodable));
        QVERIFY(!SaveProfile(path, false, SampleKeymap(), undecodable, &message));
        QCOMPARE(message, ProfileMessage::NoPicture);

        QString empty;
        ProfilePicture picture = Adopted(u"p.png"_s, "png");
        QVERIFY(!SaveProfile(empty, false, SampleKeymap(), picture, &message));
        QCOMPARE(message, std::nullopt);
    }

    void vanishedPictureKeepsThePreviousFile()
    {
        ProfilePicture picture = Adopted(u"p.png"_s, "png");
        QString path = Path(u"keep.hid"_s);
        QVERIFY(SaveProfile(path, false, SampleKeymap(), picture));
        const QByteArray before = ReadAll(path);
        QVERIFY(QFile::remove(picture.PictureTempPath));
        std::optional<ProfileMessage> message;
        QVERIFY(!SaveProfile(path, false, Keymap(), picture, &message));
        QCOMPARE(message, ProfileMessage::NoPicture);
        QCOMPARE(ReadAll(path), before);
    }

    void openFindsPictureAndKeymap()
    {
        const QByteArray png = ReadAll(MakePicture(u"logo.png"_s, "png"));
        const QString path = WriteArchive(u"open.hid"_s, {{u"pics/Logo.PNG"_s, png},
                                                          {u"readme.txt"_s, "ignored"},
                                                          {u"x.kcf"_s, WriteKeymapText(SampleKeymap()).toLatin1()}});
        const OpenedProfile opened = OpenProfileArchive(path);
        QVERIFY(opened.Opened);
        QVERIFY(opened.Messages.isEmpty());
        QCOMPARE(opened.PictureName, u"Logo.PNG"_s);
        QCOMPARE(ReadAll(opened.PictureTempPath), png);
        Keymap keymap;
        QVERIFY(!ReadKeymapText(keymap, opened.KeymapText, true));
        QCOMPARE(keymap, SampleKeymap());
    }

    void openReportsWhatIsMissing_data()
    {
        QTest::addColumn<QByteArray>("archive"); // raw bytes; empty = build from entries below
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<bool>("opened");
        QTest::addColumn<QList<int>>("messages");
        QTest::addColumn<int>("cut"); // bytes cut off the end of the archive
        QTest::newRow("only a keymap") << QByteArray() << QStringList{u"a.kcf"_s} << true << QList<int>{6} << 0;
        QTest::newRow("only a picture") << QByteArray() << QStringList{u"a.gif"_s} << true << QList<int>{7} << 0;
        QTest::newRow("neither") << QByteArray() << QStringList{u"a.txt"_s} << true << QList<int>{6, 7} << 0;
        QTest::newRow("no entries") << QByteArray(1024, '\0') << QStringList() << false << QList<int>{5} << 0;
        QTest::newRow("not a tar file") << QByteArray(2000, 'z') << QStringList() << true << QList<int>{6, 7} << 0;
        // End block, padding and half of the keymap's four bytes gone.
        QTest::newRow("cut inside its keymap") << QByteArray() << QStringList{u"a.png"_s, u"a.kcf"_s} << true
                                               << QList<int>{int(ProfileMessage::ArchiveDamaged)} << 1022;
    }
    void openReportsWhatIsMissing()
    {
        QFETCH(QByteArray, archive);
        QFETCH(QStringList, entries);
        QFETCH(bool, opened);
        QFETCH(QList<int>, messages);
        QFETCH(int, cut);
        QString path;
        if (archive.isEmpty()) {
            QList<std::pair<QString, QByteArray>> list;
            for (const QString &name : entries)
                list.append({name, "data"});
            path = WriteArchive(u"missing.hid"_s, list);
            QVERIFY(QFile::resize(path, QFileInfo(path).size() - cut));
        } else {
            path = Path(u"raw.hid"_s);
            QVERIFY(WriteFile(path, archive));
        }
        const OpenedProfile result = OpenProfileArchive(path);
        QCOMPARE(result.Opened, opened);
        QList<int> got;
        for (const ProfileMessage m : result.Messages)
            got << static_cast<int>(m);
        QCOMPARE(got, messages);
    }

    void unreadableArchive()
    {
        const OpenedProfile result = OpenProfileArchive(Path(u"nowhere.hid"_s));
        QVERIFY(!result.Opened);
        QCOMPARE(result.Messages, QList<ProfileMessage>{ProfileMessage::ExtractingArchiveFailed});
        QCOMPARE(ProfileMessageText(ProfileMessage::ExtractingArchiveFailed), u"Extracting Archive failed !"_s);
        QCOMPARE(ProfileMessageTitle(ProfileMessage::ExtractingArchiveFailed), u"Error"_s);
        QCOMPARE(ProfileMessageTitle(ProfileMessage::NoKeymapEntry), u"Note !"_s);
    }

    void twoPicturesTheSecondWins()
    {
        const QString path = WriteArchive(u"two.hid"_s, {{u"one.png"_s, "first"}, {u"two.bmp"_s, "second"}});
        const int before = TempFiles().size();
        const OpenedProfile opened = OpenProfileArchive(path);
        QCOMPARE(TempFiles().size(), before + 2);
        QCOMPARE(opened.PictureName, u"two.bmp"_s);
        QCOMPARE(ReadAll(opened.PictureTempPath), QByteArray("second"));
    }

    // A header declaring more keymap than any keymap file may hold, over a
    // sparse file that holds it all: the entry is not read.
    void oversizedKeymapEntryIsNotRead()
    {
        const QString path = Path(u"huge.hid"_s);
        const qint64 size = 256 * 1024 * 1024 + 1;
        QByteArray header(512, '\0');
        header.replace(0, 5, "k.kcf");
        header.replace(124, 11, QByteArray::number(size, 8).rightJustified(11, '0'));
        QVERIFY(WriteFile(path, header) && QFile::resize(path, 512 + size));
        Document document;
        QStringList messages;
        connect(&document, &Document::MessageRaised, [&](const DocumentMessage &m) { messages << m.Text; });
        document.OpenProfile(path);
        QCOMPARE(messages, QStringList({u"The Profile contains no Picture !"_s,
                                        u"Programinternal Error:\r\n7 Out of memory\r\n"_s + path
                                            + u": the file is too large"_s}));
    }

#ifdef Q_OS_UNIX
    // Copies that a full disk (here: a file-size limit) would cut short fail
    // with the cause named, and the document keeps what it had.
    void fileSizeLimitChangesNothing()
    {
        QImage image(100, 250, QImage::Format_RGB32); // 75 kB as BMP
        image.fill(Qt::red);
        QVERIFY(image.save(Path(u"big.bmp"_s)));
        QString bigProfile = Path(u"big.hid"_s);
        ProfilePicture big;
        QVERIFY(AdoptPicture(Path(u"big.bmp"_s), big) && SaveProfile(bigProfile, false, SampleKeymap(), big));

        Document document;
        QStringList messages;
        connect(&document, &Document::MessageRaised, [&](const DocumentMessage &m) { messages << m.Text; });
        QVERIFY(document.AdoptPicture(MakePicture(u"small.png"_s, "png")));
        const ProfilePicture before = document.Picture();
        {
            FileSizeLimit limit(64 * 1024);
            QVERIFY(!document.AdoptPicture(Path(u"big.bmp"_s)));
            QVERIFY(!document.OpenProfile(bigProfile));
        }
        QCOMPARE(messages.size(), 2);
        QVERIFY2(messages[0].startsWith(u"Creating File failed !\r\n"_s + QDir::tempPath()), qPrintable(messages[0]));
        QVERIFY2(messages[1].startsWith(u"Extracting Archive failed !\r\n"_s + QDir::tempPath()), qPrintable(messages[1]));
        for (const QString &message : std::as_const(messages))
            QVERIFY(message.endsWith(u": the file is too large"_s));
        QCOMPARE(document.Picture().PictureTempPath, before.PictureTempPath);
        QCOMPARE(document.Picture().Image, before.Image);
        QVERIFY(document.CurrentFile().isEmpty());
        QCOMPARE(ReadAll(before.PictureTempPath), ReadAll(Path(u"small.png"_s)));
    }
#endif

    void temporaryFilesAreDeleted()
    {
        ProfilePicture picture = Adopted(u"t.png"_s, "png");
        QString path = Path(u"t.hid"_s);
        QVERIFY(SaveProfile(path, false, SampleKeymap(), picture));
        (void)OpenProfileArchive(path);
        const QStringList files = TempFiles();
        QCOMPARE(files.size(), 2);
        for (const QString &file : files)
            QVERIFY(QFile::exists(file));
        DeleteTempFiles();
        for (const QString &file : files)
            QVERIFY(!QFile::exists(file));
        QVERIFY(TempFiles().isEmpty());
    }

    // A profile read ahead is used only for the same, unchanged file.
    void readAheadServesOnlyTheUnchangedFile_data()
    {
        QTest::addColumn<QString>("readAhead");
        QTest::addColumn<bool>("rewrite");
        QTest::newRow("same file") << u"a.hid"_s << false;
        QTest::newRow("file changed since") << u"a.hid"_s << true;
        QTest::newRow("another file") << u"b.hid"_s << false;
    }
    void readAheadServesOnlyTheUnchangedFile()
    {
        QFETCH(QString, readAhead);
        QFETCH(bool, rewrite);
        const auto profile = [this](const QString &name, int width, Qt::GlobalColor colour, int key) {
            QImage image(width, 20, QImage::Format_RGB32);
            image.fill(colour);
            const QString picturePath = Path(name + u".png"_s);
            Keymap keymap;
            keymap.ResetToPhoneDefaults();
            keymap[PhoneKeys::Digit(5)] = KeyAction{false, 0, 0, static_cast<std::int16_t>(key), QString()};
            ProfilePicture picture;
            QString path = Path(name);
            QVERIFY(image.save(picturePath) && AdoptPicture(picturePath, picture));
            QVERIFY(SaveProfile(path, false, keymap, picture));
        };
        profile(u"a.hid"_s, 30, Qt::red, 13);
        profile(u"b.hid"_s, 31, Qt::green, 27);
        const qsizetype before = TempFiles().size();

        Document document;
        document.ReadAhead(Path(readAhead));
        const QStringList extractedAhead = TempFiles().mid(before);
        QCOMPARE(extractedAhead.size(), 1);
        if (rewrite)
            profile(u"a.hid"_s, 32, Qt::blue, 9);
        document.OpenProfile(Path(u"a.hid"_s));

        const QColor colour = rewrite ? QColor(Qt::blue) : QColor(Qt::red);
        QCOMPARE(document.Picture().Image.width(), rewrite ? 32 : 30);
        QCOMPARE(document.Picture().Image.pixelColor(0, 0), colour);
        QCOMPARE(document.Action(PhoneKeys::Digit(5)).KeyCode, rewrite ? 9 : 13);
        QCOMPARE(document.CurrentFile(), Path(u"a.hid"_s));
        QVERIFY(document.IsSaved());
        // The picture read ahead is the document's, or it is gone.
        const bool used = readAhead == "a.hid"_L1 && !rewrite;
        QCOMPARE(document.Picture().PictureTempPath == extractedAhead.at(0), used);
        QCOMPARE(QFile::exists(extractedAhead.at(0)), used);
        QVERIFY(QFile::exists(document.Picture().PictureTempPath));
    }
};

QTEST_GUILESS_MAIN(tst_ProfileArchive)
#include "tst_profilearchive.moc"
