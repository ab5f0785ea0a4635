// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/nativefile.h"

#include <QString>

// A message about a file that could not be read or written: the message text
// itself and, when the cause is known, a second line with the path and the
// cause in the active language ("/home/a/x.hid: the disk is full").
QString FileFailureMessage(const QString &message, const FileError &error);
