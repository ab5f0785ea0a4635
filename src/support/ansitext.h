// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

// Text in files (keymap text, tar member names, language files) is single-byte
// Windows-1252, whatever the machine's locale. These convert in both directions
// without depending on a codec plugin.

// Every byte becomes one character; the five bytes Windows-1252 leaves unassigned
// (0x81, 0x8D, 0x8F, 0x90, 0x9D) map to the C1 controls of the same value.
QString FromAnsi(QByteArrayView bytes);

// Every character becomes one byte; a character Windows-1252 cannot hold becomes '?',
// except a file-name byte kept as U+DC80..U+DCFF, which becomes that byte.
QByteArray ToAnsi(QStringView text);
