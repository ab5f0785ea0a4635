// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1StringView>
#include <QString>
#include <QStringView>

#include <array>
#include <cstddef>
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

// One text the program shows: where a language file keeps it and the built-in
// English. A text without a key is fixed: no language file changes it.
struct UiText
{
    QStringView Section;
    QStringView Key;
    QStringView English;
};

// The text in the active language, as LanguageText(section, key, english).
QString LanguageText(const UiText &text);

// A module names its texts by an enum class whose last member is Count and
// keeps them in one table, built here from rows that repeat their member: a
// member without its row, or rows out of order, stop the build.
template<typename Id>
struct UiTextRow
{
    Id Which;
    QStringView Section;
    QStringView Key;
    QStringView English;
};

template<typename Id, std::size_t N>
consteval std::array<UiText, N> UiTextTable(const UiTextRow<Id> (&rows)[N])
{
    static_assert(N == static_cast<std::size_t>(Id::Count), "one row for every text");
    std::array<UiText, N> table{};
    for (std::size_t i = 0; i < N; ++i) {
        if (rows[i].Which != static_cast<Id>(i))
            throw "the rows must follow the order of the enum";
        table[i] = {rows[i].Section, rows[i].Key, rows[i].English};
    }
    return table;
}

// The text with each placeholder (such as "%f") replaced by its value, in one
// pass from the left: a value put in is never searched again, so a name that
// holds "%b" stays as it is. Where one placeholder begins another ("COM%p" and
// "%p"), the one listed first wins.
QString FillPlaceholders(QStringView text, std::initializer_list<std::pair<QLatin1StringView, QString>> values);

// A label's or menu entry's text as a name or a title: without the "&" that
// marks its access key ("&&" stands for one "&").
QString WithoutAccessKey(QString text);
