// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Each returns the exit status.

// Lists an archive, one line per entry: number, tab, size, tab, name.
int RunList(const QString &archivePath);
// Writes entry number `entry` of an archive to a file.
int RunExtract(const QString &archivePath, const QString &entry, const QString &destination);
// Writes a profile of a picture and a keymap file as the editor saves it.
int RunPack(const QString &picturePath, const QString &keymapPath, const QString &outPath);
