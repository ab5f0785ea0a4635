// SPDX-License-Identifier: GPL-3.0-or-later
#include "keytable.h"

#include "keymap.h"

#include <QMutex>
#include <QMutexLocker>

#include <array>

using namespace Qt::StringLiterals;

namespace {

struct KeyEntry
{
    int KeyCode;
    int Usage;
    QStringView Name;
};

// Single keys with a fixed name. The period shares usage 54 with the comma and
// "<" carries 64: that is how the phone firmware's tables have them.
constexpr std::array<KeyEntry, 23> FixedKeys = {{
    {48, 39, u"0"},        {89, 29, u"Y"},       {90, 28, u"Z"},       {96, 98, u"Num 0"},   {12, 93, u"?"},
    {106, 85, u"Num *"},   {109, 86, u"Num -"},  {107, 87, u"Num +"},  {110, 99, u"Num ,"},  {111, 84, u"Num /"},
    {144, 83, u"NumLock"}, {186, 47, u"\u00DC"}, {187, 48, u"+"},      {188, 54, u","},      {189, 56, u"-"},
    {190, 54, u"."},       {191, 50, u"#"},      {192, 51, u"\u00D6"}, {219, 45, u"\u00DF"}, {220, 53, u"^"},
    {221, 46, u"\u00B4"},  {222, 52, u"\u00C4"}, {226, 64, u"<"},
}};

constexpr std::array<SpecialKey, SpecialKeyCount> SpecialKeys = {{
    {8, {u"MainWindow", u"Key_BackSpace", u"BackSpace"}},
    {33, {u"MainWindow", u"Key_PageUp", u"Page up"}},
    {34, {u"MainWindow", u"Key_PageDown", u"Page down"}},
    {20, {u"MainWindow", u"Key_CapsLock", u"CapsLock"}},
    {44, {u"MainWindow", u"Key_PrintScreen", u"Print Screen"}},
    {45, {u"MainWindow", u"Key_Insert", u"Insert"}},
    {35, {u"MainWindow", u"Key_End", u"End"}},
    {13, {u"MainWindow", u"Key_Enter", u"Enter"}},
    {46, {u"MainWindow", u"Key_Delete", u"Delete"}},
    {27, {u"MainWindow", u"Key_Escape", u"Escape"}},
    {32, {u"MainWindow", u"Key_SpaceBar", u"Spacebar"}},
    {36, {u"MainWindow", u"Key_Home", u"Home"}},
    {145, {u"MainWindow", u"Key_ScrollLock", u"ScrollLock"}},
    {9, {u"MainWindow", u"Key_Tab", u"Tab"}},
    {37, {u"MainWindow", u"Key_ArrowLeft", u"Arrow left"}},
    {39, {u"MainWindow", u"Key_ArrowRight", u"Arrow right"}},
    {40, {u"MainWindow", u"Key_ArrowDown", u"Arrow down"}},
    {38, {u"MainWindow", u"Key_ArrowUp", u"Arrow up"}},
}};

constexpr std::array<int, SpecialKeyCount> SpecialKeyUsages = {
    42, 75, 78, 57, 70, 73, 77, 40, 76, 41, 44, 74, 71, 43, 80, 79, 81, 82,
};

struct SpecialKeyNameTable
{
    QMutex mutex;
    QStringList names;
    SpecialKeyNameTable()
    {
        for (const SpecialKey &key : SpecialKeys)
            names << key.Name.English.toString();
    }
};

SpecialKeyNameTable &NameTable()
{
    static SpecialKeyNameTable table;
    return table;
}

constexpr int NoUsage = 0;
constexpr int LowestSearchedCode = 2;
constexpr int HighestKeyCode = 255;

// The usage of a code, 0 when the table has none; sets *name for a known key.
int Lookup(int code, QString *name)
{
    const auto setName = [name](const QString &text) {
        if (name)
            *name = text;
    };
    if (code >= 49 && code <= 57) { // digits 1..9
        setName(QString(QChar(code)));
        return code - 19;
    }
    if (code >= 65 && code <= 88) { // letters A..X
        setName(QString(QChar(code)));
        return code - 61;
    }
    if (code >= 97 && code <= 105) { // number pad 1..9
        setName("Num "_L1 + QChar(u'0' + (code - 96)));
        return code - 8;
    }
    if (code >= 112 && code <= 123) { // F1..F12
        setName(u'F' + QString::number(code - 111));
        return code - 54;
    }
    for (const KeyEntry &entry : FixedKeys) {
        if (entry.KeyCode == code) {
            setName(entry.Name.toString());
            return entry.Usage;
        }
    }
    for (int i = 0; i < SpecialKeyCount; ++i) {
        if (SpecialKeys[static_cast<std::size_t>(i)].KeyCode == code) {
            if (name) {
                SpecialKeyNameTable &table = NameTable();
                const QMutexLocker lock(&table.mutex);
                *name = table.names.at(i);
            }
            return SpecialKeyUsages[static_cast<std::size_t>(i)];
        }
    }
    return NoUsage;
}

// The code each usage text comes back as: the lowest code 2..255 of that usage
// ("00" thus gives 2, the first code the table does not hold).
const std::array<int, 256> &CodesByUsage()
{
    static const std::array<int, 256> codes = [] {
        std::array<int, 256> table{};
        for (int code = HighestKeyCode; code >= LowestSearchedCode; --code) {
            const int usage = Lookup(code, nullptr);
            table[static_cast<std::size_t>(usage)] = code;
        }
        return table;
    }();
    return codes;
}

} // namespace

QString KeyToUsage(int keyCode, QString *displayName)
{
    return HexByte(Lookup(keyCode, displayName));
}

int UsageToKeyCode(QStringView usage)
{
    // Usage texts are exactly two hexadecimal digits, as HexByte writes them.
    if (usage.size() != 2)
        return 0;
    bool ok = false;
    const int value = usage.toString().toUpper().toInt(&ok, 16);
    const QString canonical = HexByte(value);
    if (!ok || canonical.compare(usage, Qt::CaseInsensitive) != 0)
        return 0;
    return CodesByUsage()[static_cast<std::size_t>(value)];
}

const SpecialKey &SpecialKeyAt(int index)
{
    return SpecialKeys.at(static_cast<std::size_t>(index));
}

QStringList SpecialKeyNames()
{
    SpecialKeyNameTable &table = NameTable();
    const QMutexLocker lock(&table.mutex);
    return table.names;
}

void ApplyKeyNameLanguage()
{
    QStringList names;
    for (const SpecialKey &key : SpecialKeys)
        names << LanguageText(key.Name);
    SpecialKeyNameTable &table = NameTable();
    const QMutexLocker lock(&table.mutex);
    table.names = names;
}
