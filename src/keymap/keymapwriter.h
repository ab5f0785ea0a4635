// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/nativefile.h"

#include <QString>

class Keymap;
struct KeyAction;

// The keymap as .kcf text: lines ended by CR LF, except the last (the closing
// tag), which has no line end. Keys without action, and the first seven keys
// holding the phone's own default without comment, are left out.
QString WriteKeymapText(const Keymap &keymap);

// Writes that text and one CR LF to a file (Windows-1252), replacing it as a
// whole. False when the file could not be written (*error says why); the old
// file then stays.
[[nodiscard]] bool WriteKeymapText(const Keymap &keymap, const QString &path, FileError *error = nullptr);

// The text of one action line (with its leading blanks and any comment).
QString KeymapActionLine(const KeyAction &action);
