// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings/languagetext.h"

#include <QString>
#include <QStringList>

// The key table: Windows virtual-key code to HID keyboard usage and display name,
// laid out for a German keyboard (Y and Z swapped, German punctuation keys).

// The usage of a virtual-key code as two-digit hexadecimal text; "00" for a key
// the table does not hold. For a held key, *displayName receives its name; for a
// key not in the table it is left as it was.
QString KeyToUsage(int keyCode, QString *displayName = nullptr);

// The lowest virtual-key code 2..255 whose usage text equals the upper-cased
// usage, or 0.
int UsageToKeyCode(QStringView usage);

// The special keys in the order of the editor's list: code and name.
struct SpecialKey
{
    int KeyCode;
    UiText Name;
};
inline constexpr int SpecialKeyCount = 18;
const SpecialKey &SpecialKeyAt(int index);

// The current names of the special keys (localised), in SpecialKeyAt order.
QStringList SpecialKeyNames();

// Reloads the special-key names from the active language file (section
// "MainWindow"). The names start as the English ones.
void ApplyKeyNameLanguage();
