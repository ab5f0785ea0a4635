// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The language's name: the language file's name without folder and extension,
// in lower case ("C:\\Program\\Deutsch.lng" gives "deutsch").
QString LanguageName(const QString &languagePath);

struct KnownLanguage
{
    QLatin1StringView Name;
    QLatin1StringView Readme;
    QLatin1StringView Locale;
};
// The language known by the name of the file at languagePath, or null.
const KnownLanguage *FindKnownLanguage(const QString &languagePath);
// The readme file of a language: the language's name is the language file's
// name without folder and extension, in lower case ("deutsch" gives
// "Readme.txt"; every unknown name, "" included, "Readme_en.txt").
QString ReadmeFileName(const QString &languagePath);

// The readme of the active language among the program's files, "" when it
// is not there.
QString ReadmePath();
