// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings/languagetext.h"

#include <QString>
#include <QStringView>

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

// The names of one phone key. A key button that shows words carries the name as
// its caption, "&" marking its access key; one that shows a symbol uses the name
// where words are needed (the editor's frame, screen readers).
struct PhoneKeyName
{
    PhoneKey Key;
    QStringView FileName; // the element name in the keymap file
    UiText Name; // without a key where the name is fixed
    bool ShowsSymbol; // the button shows a symbol instead of the name
};

// Every phone key, in PhoneKey order.
inline constexpr std::array<PhoneKeyName, PhoneKeys::Count> PhoneKeyNames = {{
    {PhoneKeys::Lsk, u"KEY_LSK", {u"MainWindow", u"Button_Left", u"&Left"}, false},
    {PhoneKeys::Rsk, u"KEY_RSK", {u"MainWindow", u"Button_Right", u"&Right"}, false},
    {PhoneKeys::Joy, u"KEY_JOY", {u"MainWindow", u"Frame_JoystickPress", u"Joystick press"}, true},
    {PhoneKeys::Left, u"KEY_LEFT", {u"MainWindow", u"Frame_JoystickLeft", u"Joystick left"}, true},
    {PhoneKeys::Up, u"KEY_UP", {u"MainWindow", u"Frame_JoystickUp", u"Joystick up"}, true},
    {PhoneKeys::Right, u"KEY_RIGHT", {u"MainWindow", u"Frame_JoystickRight", u"Joystick right"}, true},
    {PhoneKeys::Down, u"KEY_DOWN", {u"MainWindow", u"Frame_JoystickDown", u"Joystick down"}, true},
    {PhoneKeys::VolUp, u"KEY_VOL_UP", {u"MainWindow", u"Frame_Plus", u"Plus"}, true},
    {PhoneKeys::VolDown, u"KEY_VOL_DOWN", {u"MainWindow", u"Frame_Minus", u"Minus"}, true},
    {PhoneKeys::Cam, u"KEY_CAM", {u"MainWindow", u"Frame_Camera", u"Camera"}, true},
    {PhoneKeys::Digit(1), u"KEY_1", {{}, {}, u"1"}, false},
    {PhoneKeys::Digit(2), u"KEY_2", {{}, {}, u"2"}, false},
    {PhoneKeys::Digit(3), u"KEY_3", {{}, {}, u"3"}, false},
    {PhoneKeys::Digit(4), u"KEY_4", {{}, {}, u"4"}, false},
    {PhoneKeys::Digit(5), u"KEY_5", {{}, {}, u"5"}, false},
    {PhoneKeys::Digit(6), u"KEY_6", {{}, {}, u"6"}, false},
    {PhoneKeys::Digit(7), u"KEY_7", {{}, {}, u"7"}, false},
    {PhoneKeys::Digit(8), u"KEY_8", {{}, {}, u"8"}, false},
    {PhoneKeys::Digit(9), u"KEY_9", {{}, {}, u"9"}, false},
    {PhoneKeys::Star, u"KEY_STAR", {{}, {}, u"*"}, false},
    {PhoneKeys::Digit(0), u"KEY_0", {{}, {}, u"0"}, false},
    {PhoneKeys::Hash, u"KEY_HASH", {{}, {}, u"#"}, false},
}};
static_assert(
    [] {
        for (std::size_t i = 0; i < PhoneKeyNames.size(); ++i) {
            if (PhoneKeyNames[i].Key != static_cast<PhoneKey>(i))
                return false;
        }
        return true;
    }(),
    "PhoneKeyNames must hold the keys in PhoneKey order");

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
    std::int16_t Modifiers = 0; // HID modifier byte 0..255; only when !IsMouse
    std::int16_t KeyCode = 0; // Windows virtual-key code of the main key, 0 = none
    QString Comment;

    bool IsNoAction() const { return !IsMouse && Modifiers == 0 && KeyCode == 0; }
    bool operator==(const KeyAction &) const = default;
};

// The actions of all 22 keys. Starts with no action for every key.
class Keymap
{
public:
    KeyAction &operator[](PhoneKey key) { return m_actions.at(static_cast<std::size_t>(key)); }
    const KeyAction &operator[](PhoneKey key) const { return m_actions.at(static_cast<std::size_t>(key)); }

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
