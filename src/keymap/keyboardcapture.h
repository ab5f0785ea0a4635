// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <array>

struct KeyAction;

// The state of all 256 Windows virtual keys, as the keyboard snapshot reports
// it: a value above 1 means held down (1 alone only means toggled).
using KeyboardState = std::array<quint8, 256>;
inline constexpr quint8 KeyDown = 0x80;

// Virtual-key codes of the sided modifier keys.
namespace ModifierKeys {
inline constexpr int LeftShift = 160;
inline constexpr int RightShift = 161;
inline constexpr int LeftCtrl = 162;
inline constexpr int RightCtrl = 163;
inline constexpr int LeftAlt = 164;
inline constexpr int RightAlt = 165;
inline constexpr int LeftWin = 91;
inline constexpr int RightWin = 92;
} // namespace ModifierKeys

// Turns a keyboard snapshot into a keyboard chord: Modifiers from the eight
// sided modifier keys, KeyCode from the lowest held key (3..255) the key table
// supports. When no supported key is held KeyCode keeps its value; IsMouse and
// Comment stay as they are. Returns whether a main key was found.
bool CaptureKeyboard(KeyAction &action, const KeyboardState &state);
// Whether a held key (3..255) that is no modifier has no entry in the key
// table: the capture passes it over, and the user is to be told.
bool HoldsUnsupportedKey(const KeyboardState &state);
