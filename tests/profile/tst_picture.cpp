// SPDX-License-Identifier: GPL-3.0-or-later
#include "profile/picture.h"

#include <QImageWriter>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_Picture : public QObject
{
    Q_OBJECT

private slots:
    void fitRect_data()
    {
        QTest::addColumn<QSize>("frame");
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<bool>("shrinkOnly");
        QTest::addColumn<QRect>("shown");
        QTest::newRow("small picture centred") << QSize(200, 200) << QSize(100, 50) << true << QRect(50, 75, 100, 50);
        QTest::newRow("wide picture") << QSize(200, 200) << QSize(400, 200) << true << QRect(0, 50, 200, 100);
        QTest::newRow("tall picture") << QSize(200, 200) << QSize(200, 400) << true << QRect(50, 0, 100, 200);
        QTest::newRow("same ratio fills") << QSize(200, 200) << QSize(300, 300) << true << QRect(0, 0, 200, 200);
        QTest::newRow("tall, scaled") << QSize(200, 200) << QSize(150, 250) << true << QRect(40, 0, 120, 200);
        QTest::newRow("half rounds to even up") << QSize(203, 200) << QSize(100, 50) << true << QRect(52, 75, 100, 50);
        QTest::newRow("half rounds to even down") << QSize(201, 200) << QSize(100, 50) << true << QRect(50, 75, 100, 50);
        QTest::newRow("larger one way only is scaled")
            << QSize(200, 200) << QSize(100, 300) << true << QRect(66, 0, 67, 200);
        QTest::newRow("equal to the frame is scaled, not centred")
            << QSize(200, 100) << QSize(200, 50) << true << QRect(0, 25, 200, 50);
        QTest::newRow("enlarged without shrink-only") << QSize(200, 200) << QSize(100, 50) << false
                                                      << QRect(0, 50, 200, 100);
        QTest::newRow("empty picture") << QSize(200, 200) << QSize(0, 0) << true << QRect(0, 0, 0, 0);
    }
    void fitRect()
    {
        QFETCH(QSize, frame);
        QFETCH(QSize, picture);
        QFETCH(bool, shrinkOnly);
        QFETCH(QRect, shown);
        int width = picture.width();
        int height = picture.height();
        QCOMPARE(FitRect(frame.width(), frame.height(), width, height, shrinkOnly), shown);
        QCOMPARE(QSize(width, height), shown.size());
    }

    // Pictures come out of profiles as ".tmp" files: the format is told by the bytes.
    void everyProfileFormatDecodes_data()
    {
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<QByteArray>("told");
        QTest::newRow("bmp") << QByteArray("bmp") << QByteArray("bmp");
        QTest::newRow("gif") << QByteArray("gif") << QByteArray("gif");
        QTest::newRow("jpg") << QByteArray("jpg") << QByteArray("jpeg");
        QTest::newRow("png") << QByteArray("png") << QByteArray("png");
        // Not a profile format, but what the reader knows still decodes.
        QTest::newRow("ppm") << QByteArray("ppm") << QByteArray();
    }
    void everyProfileFormatDecodes()
    {
        QFETCH(QByteArray, format);
        QFETCH(QByteArray, told);
        QTemporaryDir dir;
        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(QColor(200, 40, 40));
        const QString path = dir.filePath(u"PMX1234.tmp"_s);
        // Qt reads GIF but does not write it: a minimal GIF made by hand then.
        if (format == "gif") {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray::fromBase64("R0lGODlhAQABAIAAAP///wAAACH5BAEAAAAALAAAAAABAAEAAAICRAEAOw=="));
        } else {
            QVERIFY2(QImageWriter(path, format).write(image), format.constData());
        }
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(PictureFormatOf(file.read(8)), told);
        const QImage loaded = LoadPictureFile(path);
        QVERIFY(!loaded.isNull());
        if (format != "gif")
            QCOMPARE(loaded.size(), image.size());
        QCOMPARE(IsProfilePictureName(u"PICTURE."_s + QString::fromLatin1(format).toUpper()), !told.isEmpty());
    }

    void transparentPartsBecomeBlack()
    {
        QTemporaryDir dir;
        QImage image(2, 1, QImage::Format_ARGB32);
        image.setPixel(0, 0, qRgba(255, 255, 255, 0));
        image.setPixel(1, 0, qRgba(10, 200, 30, 255));
        const QString path = dir.filePath(u"alpha.png"_s);
        QVERIFY(image.save(path));
        const QImage loaded = LoadPictureFile(path);
        QCOMPARE(loaded.pixel(0, 0), qRgb(0, 0, 0));
        QCOMPARE(loaded.pixel(1, 0), qRgb(10, 200, 30));
    }

    void junkDoesNotDecode()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"junk.png"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("\x89PNG\r\n\x1a\nnot really");
        file.close();
        QVERIFY(LoadPictureFile(path).isNull());
        QVERIFY(LoadPictureFile(dir.filePath(u"missing.jpg"_s)).isNull());
        QVERIFY(!IsProfilePictureName(u"photo.tif"_s));
        QVERIFY(!IsProfilePictureName(u"png"_s));
    }
};

QTEST_GUILESS_MAIN(tst_Picture)
#include "tst_picture.moc"
