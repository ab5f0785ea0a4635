// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1StringView>
#include <QString>
#include <QStringView>

#include <initializer_list>
#include <utility>

// The active language file: the full path kept in the Language setting, or ""
// for the built-in English texts. Process-wide, safe to use from any thread.
QString Language();
void SetLanguage(const QString &path);

// The localised text of a key in a section of the active language file, or
// defaultText when the file, the section or the key is missing or the value is
// empty. Values are cut to 199 characters; every "%n" becomes CR LF (also in
// the default). Never fails.
QString LanguageText(const QString &section, const QString &key, const QString &defaultText);

// The text with each placeholder (such as "%f") replaced by its value, in one
// pass from the left: a value put in is never searched again, so a name that
// holds "%b" stays as it is. Where one placeholder begins another ("COM%p" and
// "%p"), the one listed first wins.
QString FillPlaceholders(QStringView text,
                         std::initializer_list<std::pair<QLatin1StringView, QString>> values);
