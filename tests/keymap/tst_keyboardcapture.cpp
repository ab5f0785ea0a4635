// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keyactiontext.h"
#include "keymap/keyboardcapture.h"
#include "keymap/keymap.h"

#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(KeyAction)

class tst_KeyboardCapture : public QObject
{
    Q_OBJECT

private slots:
    void capture_data()
    {
        QTest::addColumn<QList<int>>("held");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("keyCode");
        QTest::addColumn<bool>("found");
        using namespace ModifierKeys;
        QTest::newRow("right Ctrl, left Shift and A") << QList<int>{RightCtrl, LeftShift, 65} << 18 << 65 << true;
        QTest::newRow("only modifiers keep the key") << QList<int>{LeftAlt, RightWin} << (4 | 128) << 13 << false;
        QTest::newRow("nothing held") << QList<int>{} << 0 << 13 << false;
        QTest::newRow("unsupported key ignored") << QList<int>{173} << 0 << 13 << false;
        QTest::newRow("lowest supported key wins") << QList<int>{66, 65} << 0 << 65 << true;
        QTest::newRow("generic Shift is not looked at") << QList<int>{16, 17, 18, 90} << 0 << 90 << true;
        QTest::newRow("all eight sides") << QList<int>{LeftShift, RightShift, LeftCtrl, RightCtrl, LeftAlt,
                                                       RightAlt, LeftWin, RightWin}
                                         << 255 << 13 << false;
        QTest::newRow("mouse buttons are skipped") << QList<int>{1, 2, 8} << 0 << 8 << true;
        QTest::newRow("F12 with AltGr") << QList<int>{RightAlt, 123} << 64 << 123 << true;
    }
    void capture()
    {
        QFETCH(QList<int>, held);
        QFETCH(int, modifiers);
        QFETCH(int, keyCode);
        QFETCH(bool, found);
        KeyboardState state{};
        for (const int code : held)
            state[static_cast<std::size_t>(code)] = KeyDown;
        KeyAction action{true, 5, 99, 13, u"kept"_s};
        QCOMPARE(CaptureKeyboard(action, state), found);
        QCOMPARE(int(action.Modifiers), modifiers);
        QCOMPARE(int(action.KeyCode), keyCode);
        QVERIFY(action.IsMouse);
        QCOMPARE(action.MouseAction, 5);
        QCOMPARE(action.Comment, u"kept"_s);
    }

    void toggledOnlyIsNotHeld()
    {
        KeyboardState state{};
        state[20] = 1; // CapsLock toggled, not held
        state[65] = 1;
        KeyAction action;
        QVERIFY(!CaptureKeyboard(action, state));
        QCOMPARE(int(action.KeyCode), 0);
    }

    void toolTip_data()
    {
        QTest::addColumn<KeyAction>("action");
        QTest::addColumn<QString>("tip");
        QTest::newRow("chord in fixed order") << KeyAction{false, 0, 18, 65, {}} << u" CTRL + SHIFT + A "_s;
        QTest::newRow("all modifiers and a special key")
            << KeyAction{false, 0, 255, 32, {}} << u" CTRL + SHIFT + ALT + WIN + Spacebar "_s;
        QTest::newRow("modifier alone") << KeyAction{false, 0, 64, 0, {}} << u" ALT "_s;
        QTest::newRow("no action") << KeyAction{} << u" Not in use "_s;
        QTest::newRow("mouse without language file") << KeyAction{true, 7, 0, 0, {}} << u" - "_s;
        QTest::newRow("key only") << KeyAction{false, 0, 0, 105, {}} << u" Num 9 "_s;
    }
    void toolTip()
    {
        QFETCH(KeyAction, action);
        QFETCH(QString, tip);
        QCOMPARE(KeyActionToolTip(action, KeyActionTexts::Load()), tip);
    }

    void namesAndCodes()
    {
        QCOMPARE(KeyCodeOfName(u"A"_s), 65);
        QCOMPARE(KeyCodeOfName(u"spacebar"_s), 32);
        QCOMPARE(KeyCodeOfName(u"."_s), 190);
        QCOMPARE(KeyCodeOfName(u"F10"_s), 121);
        QCOMPARE(KeyCodeOfName(u"Ctrl"_s), 0);
        QCOMPARE(KeyCodeOfName(QString()), 0);
        QCOMPARE(KeyDisplayName(0), QString());
        QCOMPARE(KeyDisplayName(96), u"Num 0"_s);
    }
};

QTEST_APPLESS_MAIN(tst_KeyboardCapture)
#include "tst_keyboardcapture.moc"
