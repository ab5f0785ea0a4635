// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QWidget;

// Shows the readme at path with the desktop's viewer for text files, or, where
// the desktop has none, in a read-only window of the program's own. Nothing
// happens for an empty path (no readme for the language).
void ShowReadme(const QString &path, QWidget *parent);
