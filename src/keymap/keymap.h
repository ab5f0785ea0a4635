// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <array>
#include <cstdint>

// Index of one of the phone's 22 keys, in the order the keymap file uses.
using PhoneKey = int;

namespace PhoneKeys {
inline constexpr PhoneKey Lsk = 0;
inline constexpr PhoneKey Rsk = 1;
inline constexpr PhoneKey Joy = 2;
inline constexpr PhoneKey Left = 3;
inline constexpr PhoneKey Up = 4;
inline constexpr PhoneKey Right = 5;
inline constexpr PhoneKey Down = 6;
inline constexpr PhoneKey VolUp = 7;
inline constexpr PhoneKey VolDown = 8;
inline constexpr PhoneKey Cam = 9;
inline constexpr PhoneKey Digit1 = 10; // KEY_1 .. KEY_9 are 10 .. 18
inline constexpr PhoneKey Star = 19;
inline constexpr PhoneKey Digit0 = 20;
inline constexpr PhoneKey Hash = 21;
inline constexpr int Count = 22;
// The key of a digit 0..9.
constexpr PhoneKey Digit(int digit)
{
    return digit == 0 ? Digit0 : Digit1 + digit - 1;
}
// The keys the phone gives a mouse action of its own when the file is silent.
inline constexpr int WithPhoneDefault = 7;
} // namespace PhoneKeys

// Mouse actions: two buttons, then eight movements clockwise from left.
namespace MouseActions {
inline constexpr int ButtonLeft = 0;
inline constexpr int ButtonRight = 1;
inline constexpr int MoveLeft = 2;
inline constexpr int MoveUpLeft = 3;
inline constexpr int MoveUp = 4;
inline constexpr int MoveUpRight = 5;
inline constexpr int MoveRight = 6;
inline constexpr int MoveDownRight = 7;
inline constexpr int MoveDown = 8;
inline constexpr int MoveDownLeft = 9;
inline constexpr int Count = 10;
} // namespace MouseActions

// What one phone key sends. A keyboard action with Modifiers 0 and KeyCode 0 is
// "no action".
struct KeyAction
{
    bool IsMouse = false;
    std::int32_t MouseAction = 0; // 0..9, see MouseActions; only when IsMouse
    std::int16_t Modifiers = 0;   // HID modifier byte 0..255; only when !IsMouse
    std::int16_t KeyCode = 0;     // Windows virtual-key code of the main key, 0 = none
    QString Comment;

    bool IsNoAction() const { return !IsMouse && Modifiers == 0 && KeyCode == 0; }
    bool operator==(const KeyAction &) const = default;
};

// The actions of all 22 keys. Starts with no action for every key.
class Keymap
{
public:
    KeyAction &operator[](PhoneKey key) { return m_actions.at(static_cast<std::size_t>(key)); }
    const KeyAction &operator[](PhoneKey key) const
    {
        return m_actions.at(static_cast<std::size_t>(key));
    }

    // Every key without action, the first seven included.
    void Clear();
    // Every key without action, then the phone's own defaults on the first seven.
    void ResetToPhoneDefaults();

    bool operator==(const Keymap &) const = default;

private:
    std::array<KeyAction, PhoneKeys::Count> m_actions{};
};

// The mouse action the phone applies to one of its first seven keys when the
// file says nothing about it; -1 for the other keys.
int PhoneDefaultMouseAction(PhoneKey key);

// The element name of a key in the file ("KEY_LSK"), "" outside 0..21.
QString KeyFileName(int key);
// The key whose element name equals the upper-cased name, or -1.
PhoneKey KeyIndex(QStringView name);

// The eight modifier keys one by one, as the editor's boxes and the capture use them.
struct ModifierFlags
{
    std::int16_t LeftCtrl = 0;
    std::int16_t LeftShift = 0;
    std::int16_t LeftAlt = 0;
    std::int16_t LeftWin = 0;
    std::int16_t RightCtrl = 0;
    std::int16_t RightShift = 0;
    std::int16_t RightAlt = 0;
    std::int16_t RightWin = 0;

    bool operator==(const ModifierFlags &) const = default;
};

// The value as eight "0"/"1" characters, most significant bit first; only the
// low eight bits survive (256 gives "00000000").
QString ModifierToBits(int value);
// The inverse: the rightmost eight characters (padded with "0" on the left) read
// as bits; a group of four that is not made of "0" and "1" reads as 0.
int BitsToModifier(QStringView bits);
// The flags of a modifier value. A value outside 0..256 is set to 0 in the
// caller's variable first.
ModifierFlags ModifierToFlags(int &value);
int FlagsToModifier(const ModifierFlags &flags);

// The text without leading and trailing spaces (only spaces: tabs stay), as the
// keymap format trims lines and comments.
QStringView TrimSpaces(QStringView text);

// Upper-case hexadecimal with at least two digits: 4 -> "04", 42 -> "2A".
QString HexByte(int value);
