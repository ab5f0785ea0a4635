// SPDX-License-Identifier: GPL-3.0-or-later
#include "readme.h"

#include "languagetext.h"
#include "support/programpaths.h"

#include <QFileInfo>

#include <array>

using namespace Qt::StringLiterals;

namespace {

// Languages known by their file's name: their readme and, for language files
// made before they named their locale, the locale.
constexpr std::array<KnownLanguage, 8> KnownLanguages = {{
    {"russian"_L1, "Readme_ru.txt"_L1, "ru"_L1},
    {"deutsch"_L1, "Readme.txt"_L1, "de"_L1},
    {"polski"_L1, "Readme_pl.txt"_L1, "pl"_L1},
    {"belarussian"_L1, "Readme_by.txt"_L1, "be"_L1},
    {"ukrainian"_L1, "Readme_uk.txt"_L1, "uk"_L1},
    {"spanish"_L1, "Readme_sp.txt"_L1, "es"_L1},
    {"swedish"_L1, "Readme_sv.txt"_L1, "sv"_L1},
    {"english"_L1, "Readme_en.txt"_L1, "en"_L1},
}};

} // namespace

QString LanguageName(const QString &languagePath)
{
    // The name after the last separator of either kind, without its extension.
    QString name = languagePath.mid(std::max(languagePath.lastIndexOf(u'\\'), languagePath.lastIndexOf(u'/')) + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot >= 0)
        name.truncate(dot);
    return name.toLower();
}

const KnownLanguage *FindKnownLanguage(const QString &languagePath)
{
    const QString name = LanguageName(languagePath);
    for (const KnownLanguage &known : KnownLanguages) {
        if (known.Name == name)
            return &known;
    }
    return nullptr;
}

QString ReadmeFileName(const QString &languagePath)
{
    const KnownLanguage *known = FindKnownLanguage(languagePath);
    return known ? QString(known->Readme) : u"Readme_en.txt"_s;
}

QString ReadmePath()
{
    return FindProgramFile(ReadmeFileName(Language()));
}
