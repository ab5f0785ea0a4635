// SPDX-License-Identifier: GPL-3.0-or-later
#include "qtlanguage.h"

#include "commontexts.h"
#include "readme.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPointer>
#include <QTranslator>

#include <array>

using namespace Qt::StringLiterals;

namespace {

struct KnownLanguage
{
    QLatin1StringView Name;
    QLatin1StringView Locale;
};
// Language files made before they named their locale.
constexpr std::array<KnownLanguage, 8> KnownLanguages = {{
    {"deutsch"_L1, "de"_L1},
    {"russian"_L1, "ru"_L1},
    {"polski"_L1, "pl"_L1},
    {"belarussian"_L1, "be"_L1},
    {"ukrainian"_L1, "uk"_L1},
    {"spanish"_L1, "es"_L1},
    {"swedish"_L1, "sv"_L1},
    {"english"_L1, "en"_L1},
}};

} // namespace

QString LanguageLocaleName()
{
    const QString own = LanguageText(CommonText::Locale).trimmed();
    if (!own.isEmpty())
        return own;
    const QString name = LanguageName(Language());
    for (const KnownLanguage &known : KnownLanguages) {
        if (known.Name == name)
            return known.Locale;
    }
    return u"en"_s;
}

void ApplyQtLanguage()
{
    static QPointer<QTranslator> installed;
    delete installed; // leaves Qt's texts in English
    const QLocale locale(LanguageLocaleName());
    if (locale.language() == QLocale::English || locale.language() == QLocale::C)
        return;
    auto *translator = new QTranslator(QCoreApplication::instance());
    // Where Qt keeps them, or, in a program folder made for Windows, beside
    // the program.
    const QString folders[] = {QLibraryInfo::path(QLibraryInfo::TranslationsPath),
                               QCoreApplication::applicationDirPath() + "/translations"_L1};
    for (const QString &folder : folders) {
        if (translator->load(locale, u"qtbase"_s, u"_"_s, folder)) {
            QCoreApplication::installTranslator(translator);
            installed = translator;
            return;
        }
    }
    delete translator;
}
