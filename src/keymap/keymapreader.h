// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap.h"

#include <QDateTime>
#include <QString>

// What a read of keymap text found wrong.
struct KeymapReadErrors
{
    // One line per problem: key name, tab(s), message, value, ")" and CR LF.
    QString List;
    // A fault outside the keys (the file could not be read): a number and its
    // description in the manner of the old run-time errors, 0 when none.
    int InternalErrorNumber = 0;
    QString InternalErrorDescription;

    bool Any() const { return !List.isEmpty() || InternalErrorNumber != 0; }
};

// Refills the keymap from .kcf text: when isText is true, source is the text
// itself, otherwise the path of a Windows-1252 file to read whole. The keymap is
// first reset to the phone's defaults; reading never stops at a bad line. Returns
// true when anything was wrong; the details go to *errors when given.
bool ReadKeymapText(Keymap &keymap, const QString &source, bool isText,
                    KeymapReadErrors *errors = nullptr);

// The text of the message box that reports a read with errors (localised).
QString KeymapReadSummary(const KeymapReadErrors &errors);
// Its title (localised).
QString KeymapReadErrorTitle();

// The text of the report file for a summary, dated now.
QByteArray KeymapErrorReportText(const QString &summary, const QDateTime &now);
// The report file's name, and writing it to the program's folder (else the
// user's data folder). Returns the path written, "" when no place took it.
inline constexpr auto KeymapErrorReportName = "LastReadingError.txt";
QString WriteKeymapErrorReport(const QString &summary);
