// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "keymap/keymapwriter.h"
#include "profile/document.h"
#include "profile/picture.h"
#include "profile/profilearchive.h"
#include "profile/tar.h"
#include "profile/tempfiles.h"

#include "../testfiles.h"

#include <QDir>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

Keymap SampleKeymap(int keyCode = 13)
{
    Keymap keymap;
    keymap.ResetToPhoneDefaults();
    keymap[PhoneKeys::Digit(5)] = KeyAction{false, 0, 0, static_cast<std::int16_t>(keyCode), u"Enter"_s};
    return keymap;
}

} // namespace

class tst_ProfileArchive : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString Path(const QString &name) const { return m_dir.filePath(name); }

    // Saves a profile of a picture of the given width and a keymap.
    bool Save(const QString &name, int width, int keyCode = 13)
    {
        ProfilePicture picture;
        QString path = Path(name);
        return AdoptPicture(MakePicture(Path(name + u".png"_s), width, 20), picture)
               && SaveProfile(path, false, SampleKeymap(keyCode), picture);
    }

    // Messages the document raises, in order.
    QStringList m_messages;
    void Listen(Document &document)
    {
        m_messages.clear();
        connect(&document, &Document::MessageRaised, this, [this](const DocumentMessage &m) { m_messages << m.Text; });
    }

private slots:
    void cleanup() { DeleteTempFiles(); }

    void fitRect()
    {
        const struct
        {
            QSize frame, picture;
            bool shrinkOnly;
            QRect shown;
        } rows[] = {
            {{200, 200}, {100, 50}, true, {50, 75, 100, 50}}, // small picture centred
            {{200, 200}, {400, 200}, true, {0, 50, 200, 100}}, // wide picture
            {{200, 200}, {300, 300}, true, {0, 0, 200, 200}}, // same ratio fills
            {{200, 200}, {150, 250}, true, {40, 0, 120, 200}}, // tall picture
            {{203, 200}, {100, 50}, true, {52, 75, 100, 50}}, // a half rounds to even: up
            {{201, 200}, {100, 50}, true, {50, 75, 100, 50}}, // and down
            {{200, 200}, {100, 300}, true, {66, 0, 67, 200}}, // larger one way only is scaled
            {{200, 100}, {200, 50}, true, {0, 25, 200, 50}}, // equal to the frame is scaled, not centred
            {{200, 200}, {100, 50}, false, {0, 50, 200, 100}}, // enlarged without shrink-only
            {{200, 200}, {0, 0}, true, {0, 0, 0, 0}}, // empty picture
        };
        for (const auto &row : rows) {
            int width = row.picture.width(), height = row.picture.height();
            QCOMPARE(FitRect(row.frame.width(), row.frame.height(), width, height, row.shrinkOnly), row.shown);
            QCOMPARE(QSize(width, height), row.shown.size());
        }
    }

    // Pictures come out of profiles as ".tmp" files: the format is told by the bytes.
    void picturesDecode_data()
    {
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<QByteArray>("told");
        QTest::newRow("bmp") << QByteArray("bmp") << QByteArray("bmp");
        QTest::newRow("gif") << QByteArray("gif") << QByteArray("gif");
        QTest::newRow("jpg") << QByteArray("jpg") << QByteArray("jpeg");
        QTest::newRow("png, transparent parts become black") << QByteArray("png") << QByteArray("png");
        // Not a profile format, but what the reader knows still decodes.
        QTest::newRow("ppm") << QByteArray("ppm") << QByteArray();
        QTest::newRow("junk behind a PNG signature") << QByteArray("junk") << QByteArray("png");
    }
    void picturesDecode()
    {
        QFETCH(QByteArray, format);
        QFETCH(QByteArray, told);
        QImage image(40, 30, QImage::Format_ARGB32);
        image.fill(QColor(10, 200, 30));
        image.setPixel(0, 0, qRgba(255, 255, 255, 0));
        const QString path = Path(u"PMX1234.tmp"_s);
        // Qt reads GIF but does not write it: a minimal GIF made by hand then.
        if (format == "gif")
            QVERIFY(WriteFile(path,
                              QByteArray::fromBase64("R0lGODlhAQABAIAAAP///wAAACH5BAEAAAAALAAAAAABAAEAAAICRAEAOw==")));
        else if (format == "junk")
            QVERIFY(WriteFile(path, "\x89PNG\r\n\x1a\nnot really"));
        else
            QVERIFY(QImageWriter(path, format).write(image));
        QCOMPARE(PictureFormatOf(ReadAll(path).left(8)), told);
        const QImage loaded = LoadPictureFile(path);
        QCOMPARE(loaded.isNull(), format == "junk");
        if (format != "gif" && format != "junk")
            QCOMPARE(loaded.size(), image.size());
        if (format == "png")
            QCOMPARE(QList<QRgb>({loaded.pixel(0, 0), loaded.pixel(1, 0)}),
                     QList<QRgb>({qRgb(0, 0, 0), qRgb(10, 200, 30)}));
        QCOMPARE(IsProfilePictureName(u"PICTURE."_s + QString::fromLatin1(format).toUpper()),
                 !told.isEmpty() && !loaded.isNull());
    }

    void savedEntriesTakeTheProfilesName_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("asCopy");
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("base");
        QTest::newRow("extension added") << u"Games"_s << false << u"Games.hid"_s << u"Games"_s;
        QTest::newRow("upper-case HID kept") << u"Games.HID"_s << false << u"Games.HID"_s << u"Games"_s;
        QTest::newRow("other extension gets hid") << u"a.b.tar"_s << false << u"a.b.tar.hid"_s << u"a.b.tar"_s;
        QTest::newRow("copy keeps its path") << u"PMX1.tmp"_s << true << u"PMX1.tmp"_s << u"PMX1"_s;
        QTest::newRow("name of only an extension") << u".hid"_s << false << u".hid"_s << QString();
    }
    void savedEntriesTakeTheProfilesName()
    {
        QFETCH(QString, target);
        QFETCH(bool, asCopy);
        QFETCH(QString, written);
        QFETCH(QString, base);
        ProfilePicture picture;
        const QString original = MakePicture(Path(u"Photo.JPG"_s), 30, 20);
        QVERIFY(AdoptPicture(original, picture));
        QCOMPARE(picture.PictureName, u"Photo.JPG"_s);
        QVERIFY(QFileInfo(picture.PictureTempPath).fileName().startsWith(u"PMX"_s));
        QCOMPARE(TempFiles(), QStringList{picture.PictureTempPath});
        // The program's own copies are shown, not copied again.
        QVERIFY(AdoptPicture(picture.PictureTempPath, picture));
        QCOMPARE(TempFiles().size(), 1);

        QString path = Path(target);
        std::optional<ProfileMessage> message = ProfileMessage::NoPicture;
        QVERIFY(SaveProfile(path, asCopy, SampleKeymap(), picture, &message));
        QCOMPARE(path, Path(written));
        QCOMPARE(message, std::nullopt);
        cTar tar;
        QVERIFY(tar.GetContents(path));
        QCOMPARE(tar.TotalFiles(), 2);
        QCOMPARE(tar.Filename(1), base + u".jpg"_s);
        QCOMPARE(tar.FileToArray(1), ReadAll(original));
        QCOMPARE(tar.Filename(2), base + u".kcf"_s);
        QCOMPARE(tar.FileToArray(2), WriteKeymapText(SampleKeymap()).toLatin1());
    }

    // No picture, one that does not decode, or a temporary copy that vanished:
    // nothing is written. An empty name writes nothing either, without a message.
    void savingNeedsAPicture()
    {
        QString path = Path(u"keep.hid"_s);
        QVERIFY(Save(u"keep.hid"_s, 30));
        const QByteArray before = ReadAll(path);
        ProfilePicture none, junk, vanished, picture;
        QVERIFY(WriteFile(Path(u"junk.png"_s), "not a picture") && !AdoptPicture(Path(u"junk.png"_s), junk));
        QVERIFY(AdoptPicture(MakePicture(Path(u"p.png"_s), 8, 8), vanished)
                && QFile::remove(vanished.PictureTempPath));
        std::optional<ProfileMessage> message;
        for (const ProfilePicture &p : {none, junk, vanished}) {
            message.reset();
            QVERIFY(!SaveProfile(path, false, SampleKeymap(), p, &message));
            QCOMPARE(message, ProfileMessage::NoPicture);
        }
        QCOMPARE(ReadAll(path), before);
        QString empty;
        QVERIFY(AdoptPicture(Path(u"p.png"_s), picture)
                && !SaveProfile(empty, false, SampleKeymap(), picture, &message));
        QCOMPARE(message, std::nullopt);
    }

    void open_data()
    {
        QTest::addColumn<QStringList>("entries"); // empty: no file at all
        QTest::addColumn<int>("cut"); // bytes cut off the end of the archive
        QTest::addColumn<bool>("opened");
        QTest::addColumn<QList<int>>("messages");
        QTest::addColumn<QString>("picture"); // the entry whose picture is taken
        QTest::newRow("picture and keymap") << QStringList{u"pics/Logo.PNG"_s, u"readme.txt"_s, u"x.kcf"_s} << 0
                                            << true << QList<int>{} << u"pics/Logo.PNG"_s;
        QTest::newRow("only a keymap") << QStringList{u"a.kcf"_s} << 0 << true << QList<int>{6} << QString();
        QTest::newRow("two pictures, the second wins")
            << QStringList{u"one.png"_s, u"two.bmp"_s} << 0 << true << QList<int>{7} << u"two.bmp"_s;
        QTest::newRow("neither") << QStringList{u"a.txt"_s} << 0 << true << QList<int>{6, 7} << QString();
        QTest::newRow("no file") << QStringList() << 0 << false << QList<int>{4} << QString();
        // End block, padding and half of the keymap gone; the damage is said first.
        QTest::newRow("cut inside its keymap") << QStringList{u"a.png"_s, u"a.kcf"_s} << 1022 << true
                                               << QList<int>{int(ProfileMessage::ArchiveDamaged)} << u"a.png"_s;
    }
    void open()
    {
        QFETCH(QStringList, entries);
        QFETCH(int, cut);
        QFETCH(bool, opened);
        QFETCH(QList<int>, messages);
        QFETCH(QString, picture);
        const QString path = Path(u"open.hid"_s);
        QFile::remove(path);
        const QByteArray keymap = WriteKeymapText(SampleKeymap()).toLatin1();
        cTar tar;
        for (const QString &name : entries) {
            const QString source = Path(u"entry-"_s + QFileInfo(name).fileName());
            QVERIFY(WriteFile(source, name == "x.kcf"_L1 ? keymap : name.toLatin1()));
            tar.AddFile(source, name, QString());
        }
        if (!entries.isEmpty())
            QVERIFY(tar.CreateTarFile(path) && QFile::resize(path, QFileInfo(path).size() - cut));

        const OpenedProfile result = OpenProfileArchive(path);
        QCOMPARE(result.Opened, opened);
        QCOMPARE(result.Messages.size(), messages.size());
        for (const ProfileMessage m : result.Messages)
            QCOMPARE(int(m), messages.takeFirst());
        QVERIFY(messages.isEmpty());
        QCOMPARE(result.PictureName, picture.section(u'/', -1));
        QCOMPARE(result.PictureTempPath.isEmpty() ? QByteArray() : ReadAll(result.PictureTempPath),
                 picture.toLatin1());
        if (entries.contains(u"x.kcf"_s))
            QCOMPARE(result.KeymapText, QString::fromLatin1(keymap));
        QCOMPARE(ProfileMessageTitle(ProfileMessage::ExtractingArchiveFailed), u"Error"_s);
        QCOMPARE(ProfileMessageTitle(ProfileMessage::ArchiveDamaged), u"Note !"_s);
    }

    // A header declaring more keymap than any keymap file may hold, over a
    // sparse file that holds it all: the entry is not read.
    void oversizedKeymapEntryIsNotRead()
    {
        const QString path = Path(u"huge.hid"_s);
        const qint64 size = LargestKeymapSize + 1;
        QByteArray header(512, '\0');
        header.replace(0, 5, "k.kcf");
        header.replace(124, 11, QByteArray::number(size, 8).rightJustified(11, '0'));
        QVERIFY(WriteFile(path, header) && QFile::resize(path, 512 + size));
        Document document;
        Listen(document);
        document.OpenProfile(path);
        QCOMPARE(m_messages, QStringList({u"The Profile contains no Picture !"_s,
                                          u"Programinternal Error:\r\n7 Out of memory\r\n"_s + path
                                              + u": the file is too large"_s}));
    }

#ifdef Q_OS_UNIX
    // Copies that a full disk (here: a file-size limit) would cut short fail
    // with the cause named, and the document and the profile keep what they had.
    void fileSizeLimitChangesNothing()
    {
        QString bigProfile = Path(u"big.hid"_s);
        ProfilePicture big;
        QVERIFY(AdoptPicture(MakePicture(Path(u"big.bmp"_s), 100, 250), big) // 75 kB
                && SaveProfile(bigProfile, false, SampleKeymap(), big));
        const QByteArray saved = ReadAll(bigProfile);

        Document document;
        Listen(document);
        QVERIFY(document.AdoptPicture(MakePicture(Path(u"small.png"_s), 30, 20)));
        const ProfilePicture before = document.Picture();
        {
            FileSizeLimit limit(64 * 1024);
            QVERIFY(!document.AdoptPicture(Path(u"big.bmp"_s)));
            QVERIFY(!document.OpenProfile(bigProfile));
            QVERIFY(!SaveProfile(bigProfile, false, SampleKeymap(27), big));
        }
        QCOMPARE(ReadAll(bigProfile), saved);
        QCOMPARE(m_messages.size(), 2);
        const QString heads[] = {u"Creating File failed !\r\n"_s, u"Extracting Archive failed !\r\n"_s};
        for (int i = 0; i < 2; ++i)
            QVERIFY2(m_messages[i].startsWith(heads[i] + QDir::tempPath())
                         && m_messages[i].endsWith(u": the file is too large"_s),
                     qPrintable(m_messages[i]));
        QCOMPARE(document.Picture().PictureTempPath, before.PictureTempPath);
        QCOMPARE(document.Picture().Image, before.Image);
        QVERIFY(document.CurrentFile().isEmpty());
        QCOMPARE(ReadAll(before.PictureTempPath), ReadAll(Path(u"small.png"_s)));
    }
#endif

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
        // Two profiles of the same size and time: only the name tells them apart.
        QVERIFY(Save(u"a.hid"_s, 30) && Save(u"b.hid"_s, 30, 27));
        const QDateTime time = QDateTime::currentDateTime().addSecs(-60);
        for (QFile file : {Path(u"a.hid"_s), Path(u"b.hid"_s)})
            QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(time, QFileDevice::FileModificationTime));
        Document document;
        document.ReadAhead(Path(readAhead));
        QCOMPARE(TempFiles().size(), 3);
        const QString extractedAhead = TempFiles().last();
        if (rewrite)
            QVERIFY(Save(u"a.hid"_s, 32, 9));
        document.OpenProfile(Path(u"a.hid"_s));
        QCOMPARE(document.Picture().Image.width(), rewrite ? 32 : 30);
        QCOMPARE(document.Action(PhoneKeys::Digit(5)).KeyCode, rewrite ? 9 : 13);
        QCOMPARE(document.CurrentFile(), Path(u"a.hid"_s));
        QVERIFY(document.IsSaved());
        // The picture read ahead is the document's, or it is gone.
        const bool used = readAhead == "a.hid"_L1 && !rewrite;
        QCOMPARE(document.Picture().PictureTempPath == extractedAhead, used);
        QCOMPARE(QFile::exists(extractedAhead), used);
    }
};

QTEST_GUILESS_MAIN(tst_ProfileArchive)
#include "tst_profilearchive.moc"
