// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap.h"
#include "settings/languagetext.h"

// The texts of the key actions and of reading a keymap, in enum order. The
// phone keys' names are in PhoneKeyNames, the special keys' in the key table.
enum class KeymapText {
    KeyFrame,
    NotUsed,
    LabelCtrl,
    LabelShift,
    LabelAlt,
    LabelWin,
    KeysReadWrongly,
    InternalError,
    ReadErrorTitle,
    ReportNotWritten,
    ReportWrittenTo,
    FileNotFound, // descriptions of the internal error numbers
    FileAccessError,
    OutOfMemory,
    LineEndsNotCrLf,
    Count
};

inline constexpr auto KeymapTexts = UiTextTable<KeymapText>({
    {KeymapText::KeyFrame, u"MainWindow", u"Frame", u"Function of Button:"},
    {KeymapText::NotUsed, u"MainWindow", u"ToolTip_NotUsed", u"Not in use"},
    {KeymapText::LabelCtrl, u"MainWindow", u"Label_Ctrl", u"Ctrl"},
    {KeymapText::LabelShift, u"MainWindow", u"Label_Shift", u"Shift"},
    {KeymapText::LabelAlt, u"MainWindow", u"Label_Alt", u"Alt"},
    {KeymapText::LabelWin, u"MainWindow", u"Label_Win", u"Win"},
    {KeymapText::KeysReadWrongly, u"Errors", u"12", u"By reading of the following keys raised an error:"},
    {KeymapText::InternalError, u"Errors", u"13", u"Programinternal Error:"},
    {KeymapText::ReadErrorTitle, u"Errors", u"ReadError", u"Errors reading Keymap"},
    {KeymapText::ReportNotWritten, u"Errors", u"ReportNotWritten",
     u"The error report LastReadingError.txt could not be written."},
    {KeymapText::ReportWrittenTo, u"Errors", u"ReportWrittenTo", u"The error report was written to %f"},
    {KeymapText::FileNotFound, u"Errors", u"Runtime53", u"File not found"},
    {KeymapText::FileAccessError, u"Errors", u"Runtime75", u"Path/File access error"},
    {KeymapText::OutOfMemory, u"Errors", u"Runtime7", u"Out of memory"},
    {KeymapText::LineEndsNotCrLf, u"Errors", u"LineEnds",
     u"The lines of this keymap do not end with CR LF, so its keys were not read. Save it with Windows line ends "
     u"and open it again."},
});

inline QString LanguageText(KeymapText text)
{
    return LanguageText(KeymapTexts[static_cast<std::size_t>(text)]);
}

// The tool tip of each mouse action, in MouseActions order. The built-in "-"
// only holds the place: the words come from the language file.
inline constexpr std::array<UiText, MouseActions::Count> MouseToolTipTexts = {{
    {u"MainWindow", u"ToolTip_Mouse0", u"-"},
    {u"MainWindow", u"ToolTip_Mouse1", u"-"},
    {u"MainWindow", u"ToolTip_Mouse2", u"-"},
    {u"MainWindow", u"ToolTip_Mouse3", u"-"},
    {u"MainWindow", u"ToolTip_Mouse4", u"-"},
    {u"MainWindow", u"ToolTip_Mouse5", u"-"},
    {u"MainWindow", u"ToolTip_Mouse6", u"-"},
    {u"MainWindow", u"ToolTip_Mouse7", u"-"},
    {u"MainWindow", u"ToolTip_Mouse8", u"-"},
    {u"MainWindow", u"ToolTip_Mouse9", u"-"},
}};
