// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// Temporary files of the running program: pictures of open profiles and the
// profiles written for an upload. Every file handed out is on one list and is
// deleted by DeleteTempFiles(), which the programs call when they end.

// Creates a new empty file in the system's temporary folder, named from the
// prefix, a unique part and ".tmp" (readable by the user only), and puts it on
// the list. Returns its full path, or "" when no file could be made.
QString NewTempFile(const QString &prefix);

// The files handed out so far, in order.
QStringList TempFiles();

// Deletes every file on the list, ignoring errors, and empties the list.
void DeleteTempFiles();

// Installs handlers so that SIGINT, SIGTERM and SIGHUP delete the temporary
// files before the program ends as it would have without the handler.
void DeleteTempFilesOnTermination();

// Deletes the files on the list using only async-signal-safe calls: for a
// program's own signal handler. Does not empty the list.
void DeleteTempFilesFromSignalHandler();
