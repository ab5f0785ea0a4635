// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<int, PhoneKeys::WithPhoneDefault> PhoneDefaults = {
    MouseActions::ButtonLeft, MouseActions::ButtonRight, MouseActions::ButtonLeft, MouseActions::MoveLeft,
    MouseActions::MoveUp,     MouseActions::MoveRight,   MouseActions::MoveDown,
};

constexpr int ModifierBitCount = 8;

} // namespace

void Keymap::Clear()
{
    m_actions.fill(KeyAction{});
}

void Keymap::ResetToPhoneDefaults()
{
    Clear();
    for (PhoneKey key = 0; key < PhoneKeys::WithPhoneDefault; ++key) {
        KeyAction &action = (*this)[key];
        action.IsMouse = true;
        action.MouseAction = PhoneDefaultMouseAction(key);
    }
}

int PhoneDefaultMouseAction(PhoneKey key)
{
    if (key < 0 || key >= PhoneKeys::WithPhoneDefault)
        return -1;
    return PhoneDefaults[static_cast<std::size_t>(key)];
}

QString KeyFileName(int key)
{
    if (key < 0 || key >= PhoneKeys::Count)
        return {};
    return PhoneKeyNames[static_cast<std::size_t>(key)].FileName.toString();
}

PhoneKey KeyIndex(QStringView name)
{
    for (const PhoneKeyName &key : PhoneKeyNames) {
        if (key.FileName.compare(name, Qt::CaseInsensitive) == 0)
            return key.Key;
    }
    return -1;
}

QString ModifierToBits(int value)
{
    QString bits;
    // One digit per bit, from bit 0, while the next power of two does not exceed
    // the value; then only the rightmost eight digits are kept.
    long long power = 1;
    do {
        bits.prepend((value & power) != 0 ? u'1' : u'0');
        power *= 2;
    } while (power <= value);
    return ("00000000"_L1 + bits).right(ModifierBitCount);
}

int BitsToModifier(QStringView bits)
{
    const QString padded = (u"00000000"_s + bits.toString()).right(ModifierBitCount);
    int value = 0;
    for (qsizetype group = 0; group < 2; ++group) {
        int digit = 0;
        for (qsizetype i = 0; i < 4; ++i) {
            const QChar c = padded[group * 4 + i];
            if (c != u'0' && c != u'1') {
                digit = 0;
                break;
            }
            digit = digit * 2 + (c == u'1' ? 1 : 0);
        }
        value = value * 16 + digit;
    }
    return value;
}

ModifierFlags ModifierToFlags(int &value)
{
    if (value < 0 || value > 256)
        value = 0;
    const QString bits = ModifierToBits(value);
    const auto flag = [&bits](int position) -> std::int16_t { return bits[position - 1] == u'1' ? 1 : 0; };
    ModifierFlags flags;
    flags.RightWin = flag(1);
    flags.RightAlt = flag(2);
    flags.RightShift = flag(3);
    flags.RightCtrl = flag(4);
    flags.LeftWin = flag(5);
    flags.LeftAlt = flag(6);
    flags.LeftShift = flag(7);
    flags.LeftCtrl = flag(8);
    return flags;
}

int FlagsToModifier(const ModifierFlags &flags)
{
    QString digits;
    for (const std::int16_t f : {flags.RightWin, flags.RightAlt, flags.RightShift, flags.RightCtrl, flags.LeftWin,
                                 flags.LeftAlt, flags.LeftShift, flags.LeftCtrl})
        digits += QString::number(f);
    return BitsToModifier(digits);
}

QString HexByte(int value)
{
    const QString hex = QString::number(static_cast<unsigned int>(value), 16).toUpper();
    return hex.size() == 1 ? u'0' + hex : hex;
}

QStringView TrimSpaces(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.sliced(begin, end - begin);
}
