// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymapwriter.h"

#include "keymap.h"
#include "keytable.h"
#include "support/ansitext.h"

using namespace Qt::StringLiterals;

namespace {

constexpr auto LineEnd = "\r\n"_L1;
constexpr auto RootOpen = "<SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION VERSION=\"1.0\">"_L1;
constexpr auto RootClose = "</SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION>"_L1;

constexpr std::array<QLatin1StringView, MouseActions::Count> MouseWords = {
    "Left"_L1,    "Right"_L1, "Left"_L1,      "UpLeft"_L1, "Up"_L1,
    "UpRight"_L1, "Right"_L1, "DownRight"_L1, "Down"_L1,   "DownLeft"_L1,
};

bool IsWritten(PhoneKey key, const KeyAction &action)
{
    if (action.IsNoAction())
        return false;
    const bool isPhoneDefault = action.IsMouse && action.MouseAction == PhoneDefaultMouseAction(key);
    return !(isPhoneDefault && TrimSpaces(action.Comment).isEmpty());
}

} // namespace

QString KeymapActionLine(const KeyAction &action)
{
    QString line;
    if (!action.IsMouse) {
        line = "        <KEYBOARD MODIFIERS = \""_L1 + u"%1"_s.arg(int(action.Modifiers), 2, 10, QChar(u'0'))
               + "\" USAGEID = \""_L1 + KeyToUsage(action.KeyCode) + "\" />"_L1;
    } else if (action.MouseAction >= 0 && action.MouseAction < MouseActions::Count) {
        const bool isButton = action.MouseAction <= MouseActions::ButtonRight;
        line = (isButton ? "        <MOUSE BUTTONS = \""_L1 : "        <MOUSE MOVEMENT = \""_L1)
               + MouseWords[static_cast<std::size_t>(action.MouseAction)] + "\" />"_L1;
    }
    if (!TrimSpaces(action.Comment).isEmpty())
        line += "  <!-- "_L1 + action.Comment + "  -->"_L1;
    return line;
}

QString WriteKeymapText(const Keymap &keymap)
{
    QString text = RootOpen + LineEnd + "  <KEYMAP>"_L1 + LineEnd;
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
        const KeyAction &action = keymap[key];
        if (!IsWritten(key, action))
            continue;
        const QString name = KeyFileName(key);
        text += "    <"_L1 + name + u'>' + LineEnd;
        text += "      <ACTION>"_L1 + LineEnd;
        text += KeymapActionLine(action) + LineEnd;
        text += "      </ACTION>"_L1 + LineEnd;
        text += "    </"_L1 + name + u'>' + LineEnd;
    }
    text += "  </KEYMAP>"_L1 + LineEnd + RootClose;
    return text;
}

bool WriteKeymapText(const Keymap &keymap, const QString &path, FileError *error)
{
    return WriteWholeFile(path, ToAnsi(WriteKeymapText(keymap) + LineEnd), error);
}
