// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The locale of the active language ("de", "pt_BR"): the value Locale in the
// language file's section Language; for a file without one, the locale of a
// language known by its name ("polski" gives "pl"); else "en".
QString LanguageLocaleName();

// Gives Qt's own texts (standard buttons, file dialogs, the names of shortcut
// keys) the active language, in place of those loaded before. English, and a
// language whose translations are not installed, keep Qt's built-in English.
// Needs the application object; every window gets a LanguageChange event when
// the translations change.
void ApplyQtLanguage();
