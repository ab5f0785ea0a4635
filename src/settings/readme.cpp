// SPDX-License-Identifier: GPL-3.0-or-later
#include "readme.h"

#include "languagetext.h"
#include "support/programpaths.h"

#include <QFileInfo>

#include <array>

using namespace Qt::StringLiterals;

namespace {

struct LanguageReadme
{
    QLatin1StringView Language;
    QLatin1StringView File;
};
constexpr std::array<LanguageReadme, 7> Readmes = {{
    {"russian"_L1, "Readme_ru.txt"_L1},
    {"deutsch"_L1, "Readme.txt"_L1},
    {"polski"_L1, "Readme_pl.txt"_L1},
    {"belarussian"_L1, "Readme_by.txt"_L1},
    {"ukrainian"_L1, "Readme_uk.txt"_L1},
    {"spanish"_L1, "Readme_sp.txt"_L1},
    {"swedish"_L1, "Readme_sv.txt"_L1},
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

QString ReadmeFileName(const QString &languagePath)
{
    const QString name = LanguageName(languagePath);
    for (const LanguageReadme &readme : Readmes) {
        if (readme.Language == name)
            return readme.File;
    }
    return u"Readme_en.txt"_s;
}

QString ReadmePath()
{
    return FindProgramFile(ReadmeFileName(Language()));
}
