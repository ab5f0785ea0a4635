// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// Temporary files of the running program: pictures of open profiles and the
// profiles written for an upload. Every file handed out is on one list and is
// deleted by DeleteTempFiles(), which the programs call when they end.
//
// The files lie in a private folder of the running program inside the
// system's temporary folder (made on first use, for the user alone), which
// also holds a lock file naming the program's process. A program that is
// killed leaves its folder behind; DeleteStaleTempFiles(), called at start,
// removes every such folder whose owner is gone.

// Creates a new empty file in the program's private folder, named from the
// prefix, a number of at most four upper-case hexadecimal digits and ".tmp"
// (as the system names temporary files), and puts it on the list. Returns its
// full path, or "" when no file could be made (no folder could be made in the
// system's temporary folder, or it is full).
QString NewTempFile(const QString &prefix);

// Creates a new empty file called name in a new folder of its own inside the
// program's private folder, for a receiver that takes the file's own name,
// and puts the file on the list. Deleting the file and then its folder is the
// caller's; DeleteTempFiles() removes whatever is left. Returns the file's
// full path, or "" when name is not a plain file name or nothing could be
// made.
QString NewTempFileNamed(const QString &name);

// Removes the private folders, with all in them, of this user's programs that
// are no longer running. Folders of running programs, of other users, and
// folders whose lock names no owner yet are left alone. Reads the system's
// temporary folder once and the lock file of each such folder in it; goes
// through the contents only of the folders it removes.
void DeleteStaleTempFiles();

// The files handed out so far, in order.
QStringList TempFiles();

// Deletes every file on the list and the private folder, ignoring errors, and
// empties the list. A later NewTempFile() makes a new folder.
void DeleteTempFiles();

// Installs handlers so that SIGINT, SIGTERM and SIGHUP delete the temporary
// files before the program ends as it would have without the handler.
void DeleteTempFilesOnTermination();

// Deletes the files on the list using only async-signal-safe calls: for a
// program's own signal handler. Does not empty the list. The private folder
// and its lock stay; the next start removes them.
void DeleteTempFilesFromSignalHandler();
