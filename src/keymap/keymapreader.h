// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap.h"
#include "support/nativefile.h"

#include <QDateTime>
#include <QString>

#include <optional>

// What a read of keymap text found wrong.
struct KeymapReadErrors
{
    // One line per problem: key name, tab(s), message, value, ")" and CR LF.
    QString List;
    // A fault outside the keys (the file could not be read): a number and its
    // description ("53 File not found"), the numbering users know from the
    // error report, 0 when none.
    int InternalErrorNumber = 0;
    QString InternalErrorDescription;
    // Why the file could not be read, when the number alone does not say.
    FileError File;
    // Lines end in LF or CR alone, so the whole text was one line: no error
    // (such a keymap reads as empty), but worth a note to the user.
    bool LineEndsNotCrLf = false;

    bool Any() const { return !List.isEmpty() || InternalErrorNumber != 0; }
};

// Keymaps are a few kilobytes; a file or archive entry beyond this size is
// surely no keymap, and holding it would only exhaust memory.
inline constexpr qint64 LargestKeymapSize = 256 * 1024 * 1024;

// Refills the keymap from .kcf text: when isText is true, source is the text
// itself, otherwise the path of a Windows-1252 file to read whole. The keymap is
// first reset to the phone's defaults; reading never stops at a bad line. Returns
// true when anything was wrong; the details go to *errors when given. With text,
// an internal error that *errors already holds (met while fetching the text) is
// kept and reported with the rest.
bool ReadKeymapText(Keymap &keymap, const QString &source, bool isText, KeymapReadErrors *errors = nullptr);

// The whole text of a keymap file, or nothing with the internal error set in
// errors: a missing file, one that cannot be read, or one beyond
// LargestKeymapSize.
std::optional<QString> ReadKeymapFile(const QString &path, KeymapReadErrors &errors);
// The internal error of keymap text that is too large to be read; path names
// the file that holds it.
KeymapReadErrors KeymapTooLarge(const QString &path);

// The text of the message box that reports a read with errors (localised).
QString KeymapReadSummary(const KeymapReadErrors &errors);
// The note for a read that found no error yet did not go as the user would
// expect (localised), "" when there is none.
QString KeymapReadNote(const KeymapReadErrors &errors);
// Its title (localised).
QString KeymapReadErrorTitle();

// The text of the report file for a summary, dated now.
QByteArray KeymapErrorReportText(const QString &summary, const QDateTime &now);
// The report file's name, and writing it to the program's folder (else the
// user's data folder). Returns the path written, "" when no place took it.
inline constexpr auto KeymapErrorReportName = "LastReadingError.txt";
QString WriteKeymapErrorReport(const QString &summary);
// Writes the report of a read with errors and returns the message for the
// user: the summary, and a line that says where the report went when that is
// not the program's folder (or that it could not be written).
QString ReportKeymapErrors(const KeymapReadErrors &errors);
