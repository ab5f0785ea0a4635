// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keytable.h"
#include "settings/languagetext.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_KeyTable : public QObject
{
    Q_OBJECT

private slots:
    void keyToUsage_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("usage");
        QTest::addColumn<QString>("name");
        QTest::newRow("A") << 65 << u"04"_s << u"A"_s;
        QTest::newRow("X") << 88 << u"1B"_s << u"X"_s;
        QTest::newRow("Y is swapped") << 89 << u"1D"_s << u"Y"_s;
        QTest::newRow("Z is swapped") << 90 << u"1C"_s << u"Z"_s;
        QTest::newRow("digit 1") << 49 << u"1E"_s << u"1"_s;
        QTest::newRow("digit 0") << 48 << u"27"_s << u"0"_s;
        QTest::newRow("num 9") << 105 << u"61"_s << u"Num 9"_s;
        QTest::newRow("num 0") << 96 << u"62"_s << u"Num 0"_s;
        QTest::newRow("F1") << 112 << u"3A"_s << u"F1"_s;
        QTest::newRow("F12") << 123 << u"45"_s << u"F12"_s;
        QTest::newRow("comma") << 188 << u"36"_s << u","_s;
        QTest::newRow("period shares the comma's usage") << 190 << u"36"_s << u"."_s;
        QTest::newRow("less-than") << 226 << u"40"_s << u"<"_s;
        QTest::newRow("umlaut") << 222 << u"34"_s << u"\u00C4"_s;
        QTest::newRow("backspace") << 8 << u"2A"_s << u"BackSpace"_s;
        QTest::newRow("space") << 32 << u"2C"_s << u"Spacebar"_s;
        QTest::newRow("arrow up") << 38 << u"52"_s << u"Arrow up"_s;
    }
    void keyToUsage()
    {
        QFETCH(int, code);
        QFETCH(QString, usage);
        QFETCH(QString, name);
        QString shown = u"before"_s;
        QCOMPARE(KeyToUsage(code, &shown), usage);
        QCOMPARE(shown, name);
    }

    void unsupportedKeys_data()
    {
        QTest::addColumn<int>("code");
        for (int code : {0, 1, 16, 17, 18, 91, 160, 161, 162, 163, 164, 165, 173, 255})
            QTest::newRow(qPrintable(QString::number(code))) << code;
    }
    void unsupportedKeys()
    {
        QFETCH(int, code);
        QString shown = u"kept"_s;
        QCOMPARE(KeyToUsage(code, &shown), u"00"_s);
        QCOMPARE(shown, u"kept"_s);
    }

    void usageToKeyCode_data()
    {
        QTest::addColumn<QString>("usage");
        QTest::addColumn<int>("code");
        QTest::newRow("A") << u"04"_s << 65;
        QTest::newRow("lower-case hex") << u"2a"_s << 8;
        QTest::newRow("shared usage gives the lower code") << u"36"_s << 188;
        QTest::newRow("one digit is unknown") << u"4"_s << 0;
        QTest::newRow("unused usage") << u"FF"_s << 0;
        QTest::newRow("blank inside") << u" 4"_s << 0;
        QTest::newRow("empty") << QString() << 0;
        QTest::newRow("00 matches the first key without usage") << u"00"_s << 2;
    }
    void usageToKeyCode()
    {
        QFETCH(QString, usage);
        QFETCH(int, code);
        QCOMPARE(UsageToKeyCode(usage), code);
    }

    void everySupportedKeyComesBack()
    {
        int supported = 0;
        for (int code = 2; code <= 255; ++code) {
            const QString usage = KeyToUsage(code);
            if (usage == "00"_L1)
                continue;
            ++supported;
            const int back = UsageToKeyCode(usage);
            QCOMPARE(KeyToUsage(back), usage);
            // The period shares the comma's usage, number pad 5 the one of key 12
            // and "<" the one of F7: these come back as the lower code.
            if (code != 190 && code != 101 && code != 226)
                QCOMPARE(back, code);
        }
        // 9 digits, 24 letters, 9 pad digits, 12 F keys, 23 single keys, 18 special keys
        QCOMPARE(supported, 95);
    }

    void specialKeyNamesFollowTheLanguage()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"deutsch.lng"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[MainWindow]\r\nKey_SpaceBar=Leertaste\r\nKey_ArrowUp=Pfeil hoch\r\n");
        file.close();

        SetLanguage(path);
        ApplyKeyNameLanguage();
        QString shown;
        KeyToUsage(32, &shown);
        QCOMPARE(shown, u"Leertaste"_s);
        KeyToUsage(38, &shown);
        QCOMPARE(shown, u"Pfeil hoch"_s);
        KeyToUsage(9, &shown);
        QCOMPARE(shown, u"Tab"_s);
        QCOMPARE(SpecialKeyNames().size(), SpecialKeyCount);
        QCOMPARE(SpecialKeyNames().at(10), u"Leertaste"_s);

        SetLanguage(QString());
        ApplyKeyNameLanguage();
        KeyToUsage(32, &shown);
        QCOMPARE(shown, u"Spacebar"_s);
    }
};

QTEST_APPLESS_MAIN(tst_KeyTable)
#include "tst_keytable.moc"
