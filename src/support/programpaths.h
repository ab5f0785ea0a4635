// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// Where the program's own files are: first the executable's folder (a build tree
// keeps its data there), then the installed data folder.
QStringList ProgramDataFolders();

// The full path of a file shipped with the program, or "" when none of the
// program's data folders holds it.
QString FindProgramFile(const QString &name);

// The folder where files the program writes for the user live when the
// executable's folder is not writable; created on demand, "" when that fails.
QString WritableDataFolder();

// Writes bytes to the named file in the executable's folder when that is
// writable, else in WritableDataFolder(). Returns the path written, or "" when
// neither place could take the file. The file is replaced as a whole.
QString WriteProgramFile(const QString &name, const QByteArray &bytes);
