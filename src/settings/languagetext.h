// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The active language file: the full path kept in the Language setting, or ""
// for the built-in English texts. Process-wide, safe to use from any thread.
QString Language();
void SetLanguage(const QString &path);

// The localised text of a key in a section of the active language file, or
// defaultText when the file, the section or the key is missing or the value is
// empty. Values are cut to 199 characters; every "%n" becomes CR LF (also in
// the default). Never fails.
QString LanguageText(const QString &section, const QString &key, const QString &defaultText);
