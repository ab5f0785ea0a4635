// SPDX-License-Identifier: GPL-3.0-or-later
#include "keyactiontext.h"

#include "keymap.h"
#include "keytable.h"
#include "settings/languagetext.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

constexpr int HighestKeyCode = 255;

QString MainWindowText(const QString &key, const QString &english)
{
    return LanguageText(u"MainWindow"_s, key, english);
}

} // namespace

KeyActionTexts KeyActionTexts::Load()
{
    KeyActionTexts texts;
    texts.FrameText = MainWindowText(u"Frame"_s, u"Function of Button:"_s);
    for (std::size_t i = 0; i < texts.MouseToolTips.size(); ++i)
        texts.MouseToolTips[i] = MainWindowText(u"ToolTip_Mouse"_s + QString::number(i), u"-"_s);
    texts.NotUsedText = MainWindowText(u"ToolTip_NotUsed"_s, u"Not in use"_s);
    texts.LabelCtrl = MainWindowText(u"Label_Ctrl"_s, u"Ctrl"_s);
    texts.LabelShift = MainWindowText(u"Label_Shift"_s, u"Shift"_s);
    texts.LabelAlt = MainWindowText(u"Label_Alt"_s, u"Alt"_s);
    texts.LabelWin = MainWindowText(u"Label_Win"_s, u"Win"_s);
    return texts;
}

QString PhoneKeyDisplayName(int key)
{
    if (key < 0 || key >= PhoneKeys::Count)
        return {};
    const PhoneKeyName &name = PhoneKeyNames[static_cast<std::size_t>(key)];
    QString text = name.English.toString();
    if (!name.LanguageKey.isEmpty())
        text = MainWindowText(name.LanguageKey.toString(), text);
    // In a caption "&" marks the access key; a symbol's name has none and is
    // shown as the language file writes it.
    if (!name.ShowsSymbol)
        text.remove(u'&');
    return text;
}

QString KeyDisplayName(int keyCode)
{
    QString name;
    KeyToUsage(keyCode, &name);
    return name;
}

int KeyCodeOfName(const QString &name)
{
    if (name.isEmpty())
        return 0;
    for (int code = 1; code <= HighestKeyCode; ++code) {
        QString candidate;
        KeyToUsage(code, &candidate);
        if (!candidate.isEmpty() && candidate.compare(name, Qt::CaseInsensitive) == 0)
            return code;
    }
    return 0;
}

QString KeyActionToolTip(const KeyAction &action, const KeyActionTexts &texts)
{
    QString text;
    if (action.IsMouse) {
        if (action.MouseAction >= 0 && action.MouseAction < int(texts.MouseToolTips.size()))
            text = texts.MouseToolTips[static_cast<std::size_t>(action.MouseAction)];
    } else {
        int modifiers = action.Modifiers;
        const ModifierFlags flags = ModifierToFlags(modifiers);
        QStringList parts;
        if (flags.LeftCtrl || flags.RightCtrl)
            parts << texts.LabelCtrl.toUpper();
        if (flags.LeftShift || flags.RightShift)
            parts << texts.LabelShift.toUpper();
        if (flags.LeftAlt || flags.RightAlt)
            parts << texts.LabelAlt.toUpper();
        if (flags.LeftWin || flags.RightWin)
            parts << texts.LabelWin.toUpper();
        const QString key = KeyDisplayName(action.KeyCode);
        if (!key.isEmpty())
            parts << key;
        text = parts.join(" + "_L1);
    }
    if (text.isEmpty())
        text = texts.NotUsedText;
    return u' ' + text + u' ';
}
