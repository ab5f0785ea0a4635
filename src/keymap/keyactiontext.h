// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <array>

struct KeyAction;

// The localised texts the editor shows for key actions, loaded from the
// language file's "MainWindow" section.
struct KeyActionTexts
{
    QString FrameText; // caption of the key frame
    std::array<QString, 10> MouseToolTips; // per mouse action
    QString NotUsedText; // a key without action
    QString LabelCtrl, LabelShift, LabelAlt, LabelWin; // modifier row labels

    static KeyActionTexts Load();
};

// The display name of a virtual-key code ("A", "F5", "Spacebar"); "" when the
// key table does not hold it.
QString KeyDisplayName(int keyCode);
// The code whose display name is the text (any case), 0 when none.
int KeyCodeOfName(const QString &name);

// The name of a phone key in the active language, as the key frame shows it:
// the caption of a key that shows words, without its access-key mark ("Left",
// "7"), or the name of one that shows a symbol ("Joystick up"); "" outside 0..21.
QString PhoneKeyDisplayName(int key);

// The tool tip of a key button: one space, the action, one space. A keyboard
// action reads "CTRL + SHIFT + A" (modifiers in the order Ctrl, Shift, Alt,
// Windows, either side, then the key's name); a mouse action its mouse text;
// no action the "not in use" text.
QString KeyActionToolTip(const KeyAction &action, const KeyActionTexts &texts);
