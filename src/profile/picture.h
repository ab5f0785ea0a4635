// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QImage>
#include <QRect>
#include <QString>
#include <QStringList>

// The picture formats a profile may carry, as lower-case extensions.
QStringList ProfilePictureExtensions();
// Whether a file name's extension (after its last ".", any case) is one of them.
bool IsProfilePictureName(const QString &fileName);

// The image format that a file's first bytes show ("png", "jpeg", "gif" or
// "bmp"), for the image reader; empty for anything else.
QByteArray PictureFormatOf(QByteArrayView head);

// Decodes a picture file; transparent parts become black. A null image when the
// file cannot be decoded.
QImage LoadPictureFile(const QString &path);

// Where to show a picture of the given size in a frame: unchanged and centred
// when shrinkOnly is set and it is smaller than the frame both ways, otherwise
// scaled to the frame keeping its ratio and centred the other way. Halves round
// to the even neighbour. The picture size is replaced by the size shown.
QRect FitRect(int frameWidth, int frameHeight, int &pictureWidth, int &pictureHeight, bool shrinkOnly);
