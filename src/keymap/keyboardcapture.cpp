// SPDX-License-Identifier: GPL-3.0-or-later
#include "keyboardcapture.h"

#include "keymap.h"
#include "keytable.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int FirstMainKey = 3; // 1 and 2 are the mouse buttons

bool IsHeld(const KeyboardState &state, int code)
{
    return state[static_cast<std::size_t>(code)] > 1;
}

bool IsModifierKey(int virtualKey)
{
    using namespace ModifierKeys;
    for (const int modifier : {LeftShift, RightShift, LeftCtrl, RightCtrl, LeftAlt, RightAlt, LeftWin, RightWin})
        if (virtualKey == modifier)
            return true;
    return virtualKey >= 16 && virtualKey <= 18; // the generic Shift, Ctrl and Alt
}

} // namespace

bool CaptureKeyboard(KeyAction &action, const KeyboardState &state)
{
    ModifierFlags flags;
    flags.LeftShift = IsHeld(state, ModifierKeys::LeftShift);
    flags.RightShift = IsHeld(state, ModifierKeys::RightShift);
    flags.LeftCtrl = IsHeld(state, ModifierKeys::LeftCtrl);
    flags.RightCtrl = IsHeld(state, ModifierKeys::RightCtrl);
    flags.LeftAlt = IsHeld(state, ModifierKeys::LeftAlt);
    flags.RightAlt = IsHeld(state, ModifierKeys::RightAlt);
    flags.LeftWin = IsHeld(state, ModifierKeys::LeftWin);
    flags.RightWin = IsHeld(state, ModifierKeys::RightWin);
    action.Modifiers = static_cast<std::int16_t>(FlagsToModifier(flags));

    for (int code = FirstMainKey; code < int(state.size()); ++code) {
        if (IsHeld(state, code) && KeyToUsage(code) != "00"_L1) {
            action.KeyCode = static_cast<std::int16_t>(code);
            return true;
        }
    }
    return false;
}

bool HoldsUnsupportedKey(const KeyboardState &state)
{
    for (int code = FirstMainKey; code < int(state.size()); ++code) {
        if (IsHeld(state, code) && !IsModifierKey(code) && KeyToUsage(code) == "00"_L1)
            return true;
    }
    return false;
}
