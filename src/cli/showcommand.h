// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Reads a keymap file and writes it to stdout as exporting it would write it.
// The error summary goes to stderr; returns the exit status.
int RunShow(const QString &path);
