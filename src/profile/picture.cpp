// SPDX-License-Identifier: GPL-3.0-or-later
#include "picture.h"

#include "support/nativefile.h"

#include <QFile>
#include <QImageReader>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

int RoundHalfEven(double value)
{
    // nearbyint rounds in the current mode, which is to nearest, ties to even.
    return static_cast<int>(std::nearbyint(value));
}

} // namespace

QStringList ProfilePictureExtensions()
{
    return {u"jpg"_s, u"jpeg"_s, u"gif"_s, u"bmp"_s, u"png"_s};
}

bool IsProfilePictureName(const QString &fileName)
{
    const qsizetype dot = fileName.lastIndexOf(u'.');
    return dot >= 0 && ProfilePictureExtensions().contains(fileName.mid(dot + 1).toLower());
}

QByteArray PictureFormatOf(QByteArrayView head)
{
    if (head.startsWith("\x89PNG\r\n\x1a\n"))
        return "png";
    if (head.startsWith("\xff\xd8\xff"))
        return "jpeg";
    if (head.startsWith("GIF87a") || head.startsWith("GIF89a"))
        return "gif";
    if (head.startsWith("BM"))
        return "bmp";
    return {};
}

QImage LoadPictureFile(const QString &path)
{
    // Profiles keep their picture in temporary files without a telling name. Left
    // to guess, the reader would load every image plug-in to ask each of them;
    // naming the format that the first bytes show goes straight to its decoder.
    QFile file;
    if (!OpenForReading(file, path))
        return {};
    const QByteArray format = PictureFormatOf(file.peek(8));
    QImage image;
    if (!format.isEmpty()) {
        QImageReader reader(&file, format);
        reader.setAutoTransform(false);
        image = reader.read();
    }
    if (image.isNull() && file.seek(0)) {
        QImageReader reader(&file);
        reader.setAutoTransform(false);
        image = reader.read();
    }
    if (image.isNull())
        return {};
    if (!image.hasAlphaChannel())
        return image;
    // Composite onto black: premultiplied colours are exactly that, made opaque.
    QImage opaque = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < opaque.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(opaque.scanLine(y));
        for (int x = 0; x < opaque.width(); ++x)
            line[x] |= 0xFF000000u;
    }
    return opaque.convertToFormat(QImage::Format_RGB32);
}

QRect FitRect(int frameWidth, int frameHeight, int &pictureWidth, int &pictureHeight, bool shrinkOnly)
{
    if (frameWidth <= 0 || frameHeight <= 0 || pictureWidth <= 0 || pictureHeight <= 0) {
        pictureWidth = 0;
        pictureHeight = 0;
        return QRect(0, 0, 0, 0);
    }
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    if (shrinkOnly && pictureWidth < frameWidth && pictureHeight < frameHeight) {
        width = pictureWidth;
        height = pictureHeight;
        left = RoundHalfEven((frameWidth - width) / 2.0);
        top = RoundHalfEven((frameHeight - height) / 2.0);
    } else {
        const double pictureRatio = static_cast<double>(pictureWidth) / pictureHeight;
        const double frameRatio = static_cast<double>(frameWidth) / frameHeight;
        if (pictureRatio > frameRatio) {
            width = frameWidth;
            height = RoundHalfEven(frameWidth / pictureRatio);
            top = RoundHalfEven((frameHeight - height) / 2.0);
        } else if (pictureRatio == frameRatio) {
            width = frameWidth;
            height = frameHeight;
        } else {
            height = frameHeight;
            width = RoundHalfEven(frameHeight * pictureRatio);
            left = RoundHalfEven((frameWidth - width) / 2.0);
        }
    }
    pictureWidth = width;
    pictureHeight = height;
    return QRect(left, top, width, height);
}
