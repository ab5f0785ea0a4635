// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// True for the options of the upload command that take a value (--port,
// --speed, --name, --bluetooth, --method, also written --port=PORT).
bool IsUploadOption(const QString &argument);

// upload PROFILE --port PORT [--speed BPS] [--name NAME], or
// upload PROFILE --bluetooth ADDRESS [--method push|ftp] [--name NAME]: sends
// the profile file to the phone as it is, through the serial port or through
// BlueZ's OBEX service to a paired phone. A file that is not a profile is refused before
// the port is touched. Status lines go to stdout (with a progress bar on a
// terminal), the error message to stderr. Ctrl-C, SIGTERM and SIGHUP abort the
// upload, which closes the port (or the Bluetooth session), and then end the
// program as the signal does.
// Returns the exit status.
int RunUpload(const QStringList &arguments);
