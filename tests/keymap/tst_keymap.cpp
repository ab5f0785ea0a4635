// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keymap.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_Keymap : public QObject
{
    Q_OBJECT

private slots:
    void modifierToBits_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("bits");
        QTest::newRow("0") << 0 << u"00000000"_s;
        QTest::newRow("1") << 1 << u"00000001"_s;
        QTest::newRow("5") << 5 << u"00000101"_s;
        QTest::newRow("128") << 128 << u"10000000"_s;
        QTest::newRow("255") << 255 << u"11111111"_s;
        QTest::newRow("256 keeps low eight digits") << 256 << u"00000000"_s;
        QTest::newRow("257") << 257 << u"00000001"_s;
    }
    void modifierToBits()
    {
        QFETCH(int, value);
        QFETCH(QString, bits);
        QCOMPARE(ModifierToBits(value), bits);
    }

    void bitsToModifier_data()
    {
        QTest::addColumn<QString>("bits");
        QTest::addColumn<int>("value");
        QTest::newRow("short text padded") << u"101"_s << 5;
        QTest::newRow("all set") << u"11111111"_s << 255;
        QTest::newRow("empty") << QString() << 0;
        QTest::newRow("longer text keeps rightmost eight") << u"1100000001"_s << 1;
        QTest::newRow("high nibble only") << u"00010000"_s << 16;
    }
    void bitsToModifier()
    {
        QFETCH(QString, bits);
        QFETCH(int, value);
        QCOMPARE(BitsToModifier(bits), value);
    }

    void flagsRoundTripEveryByte()
    {
        for (int value = 0; value <= 255; ++value) {
            int in = value;
            QCOMPARE(FlagsToModifier(ModifierToFlags(in)), value);
            QCOMPARE(in, value);
        }
    }

    void flagsFollowTheBitLayout()
    {
        int value = 18; // bit 1 left Shift, bit 4 right Ctrl
        ModifierFlags expected;
        expected.LeftShift = 1;
        expected.RightCtrl = 1;
        QCOMPARE(ModifierToFlags(value), expected);
        int all = 255;
        const ModifierFlags flags = ModifierToFlags(all);
        QVERIFY(flags.LeftCtrl && flags.LeftShift && flags.LeftAlt && flags.LeftWin && flags.RightCtrl
                && flags.RightShift && flags.RightAlt && flags.RightWin);
    }

    void modifierToFlagsOutOfRange_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("valueAfter");
        QTest::newRow("256 passes the range test") << 256 << 256;
        QTest::newRow("257 is replaced") << 257 << 0;
        QTest::newRow("negative is replaced") << -1 << 0;
    }
    void modifierToFlagsOutOfRange()
    {
        QFETCH(int, value);
        QFETCH(int, valueAfter);
        QCOMPARE(ModifierToFlags(value), ModifierFlags{});
        QCOMPARE(value, valueAfter);
    }

    void hexByte_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("0") << 0 << u"00"_s;
        QTest::newRow("4") << 4 << u"04"_s;
        QTest::newRow("42") << 42 << u"2A"_s;
        QTest::newRow("255") << 255 << u"FF"_s;
        QTest::newRow("above a byte") << 256 << u"100"_s;
    }
    void hexByte()
    {
        QFETCH(int, value);
        QFETCH(QString, text);
        QCOMPARE(HexByte(value), text);
    }

    void keyNames()
    {
        QCOMPARE(KeyFileName(0), u"KEY_LSK"_s);
        QCOMPARE(KeyFileName(9), u"KEY_CAM"_s);
        QCOMPARE(KeyFileName(19), u"KEY_STAR"_s);
        QCOMPARE(KeyFileName(20), u"KEY_0"_s);
        QCOMPARE(KeyFileName(22), QString());
        QCOMPARE(KeyFileName(-1), QString());
        for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
            QCOMPARE(KeyIndex(KeyFileName(key)), key);
            QCOMPARE(KeyIndex(KeyFileName(key).toLower()), key);
        }
        QCOMPARE(KeyIndex(u"KEY_10"_s), -1);
        QCOMPARE(KeyIndex(u"ACTION"_s), -1);
    }

    void phoneDefaults()
    {
        Keymap keymap;
        QVERIFY(keymap[PhoneKeys::Lsk].IsNoAction());
        keymap.ResetToPhoneDefaults();
        const int expected[] = {0, 1, 0, 2, 4, 6, 8};
        for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
            if (key < PhoneKeys::WithPhoneDefault) {
                QVERIFY(keymap[key].IsMouse);
                QCOMPARE(keymap[key].MouseAction, expected[key]);
            } else {
                QVERIFY(keymap[key].IsNoAction());
            }
        }
    }
};

QTEST_APPLESS_MAIN(tst_Keymap)
#include "tst_keymap.moc"
