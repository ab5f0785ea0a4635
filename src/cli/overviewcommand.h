// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Draws the overview of a profile or a keymap into a PDF or PNG file, by the
// extension of out. Needs a QGuiApplication, for the fonts. Returns the exit
// status.
int RunOverview(const QString &path, const QString &outPath);
