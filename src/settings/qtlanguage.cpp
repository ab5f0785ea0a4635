// SPDX-License-Identifier: GPL-3.0-or-later
#include "qtlanguage.h"

#include "commontexts.h"
#include "readme.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPointer>
#include <QTranslator>

using namespace Qt::StringLiterals;

QString LanguageLocaleName()
{
    const QString own = LanguageText(CommonText::Locale).trimmed();
    if (!own.isEmpty())
        return own;
    const KnownLanguage *known = FindKnownLanguage(Language());
    return known ? QString(known->Locale) : u"en"_s;
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
