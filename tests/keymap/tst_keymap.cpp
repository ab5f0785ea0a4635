// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keyactiontext.h"
#include "keymap/keyboardcapture.h"
#include "keymap/keymap.h"
#include "keymap/keytable.h"
#include "settings/languagetext.h"

#include "../testfiles.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(KeyAction)

class tst_Keymap : public QObject
{
    Q_OBJECT

private slots:
    void keyTable_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("usage");
        QTest::addColumn<QString>("name"); // "kept": the key has no name, the caller's text stays
        QTest::newRow("A") << 65 << u"04"_s << u"A"_s;
        QTest::newRow("Y is swapped") << 89 << u"1D"_s << u"Y"_s;
        QTest::newRow("Z is swapped") << 90 << u"1C"_s << u"Z"_s;
        QTest::newRow("digit 1") << 49 << u"1E"_s << u"1"_s;
        QTest::newRow("digit 0") << 48 << u"27"_s << u"0"_s;
        QTest::newRow("num 9") << 105 << u"61"_s << u"Num 9"_s;
        QTest::newRow("num 0") << 96 << u"62"_s << u"Num 0"_s;
        QTest::newRow("F12") << 123 << u"45"_s << u"F12"_s;
        QTest::newRow("comma") << 188 << u"36"_s << u","_s;
        QTest::newRow("period shares the comma's usage") << 190 << u"36"_s << u"."_s;
        QTest::newRow("less-than") << 226 << u"40"_s << u"<"_s;
        QTest::newRow("umlaut") << 222 << u"34"_s << u"\u00C4"_s;
        QTest::newRow("space") << 32 << u"2C"_s << u"Spacebar"_s;
        QTest::newRow("arrow up") << 38 << u"52"_s << u"Arrow up"_s;
        // Mouse buttons, the unsided and sided modifiers, Windows keys and others.
        for (const int code : {0, 1, 16, 17, 18, 91, 160, 161, 162, 163, 164, 165, 173, 255})
            QTest::addRow("%d has no usage", code) << code << u"00"_s << u"kept"_s;
    }
    void keyTable()
    {
        QFETCH(int, code);
        QFETCH(QString, usage);
        QFETCH(QString, name);
        QString shown = u"kept"_s;
        QCOMPARE(KeyToUsage(code, &shown), usage);
        QCOMPARE(shown, name);
        QCOMPARE(KeyCodeOfName(name.toLower()), usage == "00"_L1 ? 0 : code);
    }

    void usagesComeBackAsTheLowestCode()
    {
        int supported = 0;
        for (int code = 2; code <= 255; ++code) {
            const QString usage = KeyToUsage(code);
            if (usage == "00"_L1)
                continue;
            ++supported;
            // The period shares the comma's usage, number pad 5 the one of key
            // 12 and "<" the one of F7.
            const int lowest = code == 190 ? 188 : code == 101 ? 12 : code == 226 ? 118 : code;
            QCOMPARE(UsageToKeyCode(usage.toLower()), lowest);
        }
        // 9 digits, 24 letters, 9 pad digits, 12 F keys, 23 single keys, 18 special keys
        QCOMPARE(supported, 95);
        // Exactly two hexadecimal digits; "00" is the first code without usage.
        for (const auto &[usage, code] :
             {std::pair{u"00"_s, 2}, {u"4"_s, 0}, {u" 4"_s, 0}, {u"FF"_s, 0}, {QString(), 0}})
            QCOMPARE(UsageToKeyCode(usage), code);
    }

    void modifierFlags()
    {
        for (int value = 0; value <= 255; ++value) {
            int in = value;
            QCOMPARE(FlagsToModifier(ModifierToFlags(in)), value);
            QCOMPARE(in, value);
        }
        // The HID modifier byte, from bit 0.
        constexpr std::int16_t ModifierFlags::*bits[] = {
            &ModifierFlags::LeftCtrl,  &ModifierFlags::LeftShift,  &ModifierFlags::LeftAlt,  &ModifierFlags::LeftWin,
            &ModifierFlags::RightCtrl, &ModifierFlags::RightShift, &ModifierFlags::RightAlt, &ModifierFlags::RightWin};
        for (int bit = 0; bit < 8; ++bit) {
            int value = 1 << bit;
            ModifierFlags expected;
            expected.*bits[bit] = 1;
            QCOMPARE(ModifierToFlags(value), expected);
        }
        // 256 passes the range test and keeps its low eight bits; the rest outside 0..256 is set to 0.
        for (const auto &[value, after] : {std::pair{256, 256}, {257, 0}, {-1, 0}}) {
            int in = value;
            QCOMPARE(ModifierToFlags(in), ModifierFlags{});
            QCOMPARE(in, after);
        }
        QCOMPARE(ModifierToBits(257), u"00000001"_s);
        QCOMPARE(BitsToModifier(u"1100000101"_s), 5);
    }

    void keysAndPhoneDefaults()
    {
        Keymap keymap;
        QCOMPARE(keymap[PhoneKeys::Lsk], KeyAction{});
        keymap.ResetToPhoneDefaults();
        // The soft keys and the joystick press click, the joystick moves.
        const int defaults[PhoneKeys::WithPhoneDefault] = {0, 1, 0, 2, 4, 6, 8};
        for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
            QCOMPARE(keymap[key],
                     (key < PhoneKeys::WithPhoneDefault ? KeyAction{true, defaults[key], 0, 0, {}} : KeyAction{}));
            QCOMPARE(KeyIndex(KeyFileName(key).toLower()), key);
        }
        QCOMPARE(KeyFileName(PhoneKeys::Count), QString());
        QCOMPARE(KeyFileName(-1), QString());
        QCOMPARE(KeyIndex(u"KEY_10"_s), -1);
    }

    void capture_data()
    {
        QTest::addColumn<QList<int>>("held"); // a negative code is only toggled (CapsLock on)
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("keyCode");
        using namespace ModifierKeys;
        QTest::newRow("right Ctrl, left Shift and A") << QList<int>{RightCtrl, LeftShift, 65} << 18 << 65;
        QTest::newRow("only modifiers keep the key") << QList<int>{LeftAlt, RightWin} << (4 | 128) << 13;
        QTest::newRow("unsupported and toggled keys") << QList<int>{173, -20, -65} << 0 << 13;
        QTest::newRow("lowest supported key wins") << QList<int>{66, 65} << 0 << 65;
        QTest::newRow("unsided modifiers are not looked at") << QList<int>{16, 17, 18, 90} << 0 << 90;
        QTest::newRow("all eight sides")
            << QList<int>{LeftShift, RightShift, LeftCtrl, RightCtrl, LeftAlt, RightAlt, LeftWin, RightWin} << 255
            << 13;
        QTest::newRow("F12 with AltGr") << QList<int>{RightAlt, 123} << 64 << 123;
    }
    void capture()
    {
        QFETCH(QList<int>, held);
        QFETCH(int, modifiers);
        QFETCH(int, keyCode);
        KeyboardState state{};
        for (const int code : held)
            state[static_cast<std::size_t>(std::abs(code))] = code < 0 ? 1 : KeyDown;
        KeyAction action{true, 5, 99, 13, u"kept"_s};
        QCOMPARE(CaptureKeyboard(action, state), keyCode != 13);
        QCOMPARE(action, (KeyAction{true, 5, std::int16_t(modifiers), std::int16_t(keyCode), u"kept"_s}));
    }

    void toolTipsAndNames()
    {
        const std::pair<KeyAction, QString> tips[] = {
            {{false, 0, 18, 65, {}}, u" CTRL + SHIFT + A "_s},
            {{false, 0, 255, 32, {}}, u" CTRL + SHIFT + ALT + WIN + Spacebar "_s},
            {{false, 0, 64, 0, {}}, u" ALT "_s},
            {{}, u" Not in use "_s},
            {{true, 7, 0, 0, {}}, u" - "_s},
        };
        for (const auto &[action, tip] : tips)
            QCOMPARE(KeyActionToolTip(action, KeyActionTexts::Load()), tip);

        QTemporaryDir dir;
        const QString path = dir.filePath(u"deutsch.lng"_s);
        QVERIFY(WriteFile(path, "[MainWindow]\r\nKey_SpaceBar=Leertaste\r\nToolTip_Mouse7=Nach rechts unten\r\n"));
        SetLanguage(path);
        ApplyKeyNameLanguage();
        QCOMPARE(KeyDisplayName(32), u"Leertaste"_s);
        QCOMPARE(KeyDisplayName(9), u"Tab"_s);
        QCOMPARE(SpecialKeyNames().at(10), u"Leertaste"_s);
        QCOMPARE(KeyActionToolTip(KeyAction{true, 7, 0, 0, {}}, KeyActionTexts::Load()), u" Nach rechts unten "_s);
        SetLanguage(QString());
        ApplyKeyNameLanguage();
        QCOMPARE(KeyDisplayName(32), u"Spacebar"_s);
    }
};

QTEST_APPLESS_MAIN(tst_Keymap)
#include "tst_keymap.moc"
