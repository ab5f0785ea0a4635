// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "keymap/keymapwriter.h"
#include "settings/languagetext.h"

#include "../testfiles.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

Keymap PhoneDefaults()
{
    Keymap keymap;
    keymap.ResetToPhoneDefaults();
    return keymap;
}

// The phone defaults with one key changed.
Keymap With(PhoneKey key, const KeyAction &action)
{
    Keymap keymap = PhoneDefaults();
    keymap[key] = action;
    return keymap;
}

QString Lines(const QStringList &lines)
{
    return lines.join("\r\n"_L1);
}

} // namespace

Q_DECLARE_METATYPE(Keymap)

class tst_KeymapReader : public QObject
{
    Q_OBJECT

private slots:
    void read_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Keymap>("expected");
        QTest::addColumn<QString>("errors");
        using namespace PhoneKeys;
        const QString keyboard01 = u"<KEYBOARD MODIFIERS = \"01\" USAGEID = \"06\" />"_s;

        QTest::newRow("empty text leaves the phone defaults") << QString() << PhoneDefaults() << QString();
        QTest::newRow("action before any tag goes to the left soft key")
            << keyboard01 << With(Lsk, {false, 0, 1, 67, {}}) << QString();
        QTest::newRow("prefix and value ignore case")
            << Lines({u"<KEY_LSK>"_s, u"<mouse buttons = \"RIGHT\" />"_s}) << With(Lsk, {true, 1, 0, 0, {}})
            << QString();
        QTest::newRow("action after a closing tag is ignored")
            << Lines({u"<KEY_1>"_s, u"</KEY_1>"_s, keyboard01}) << PhoneDefaults() << QString();
        QTest::newRow("long closing tag leaves the key open")
            << Lines({u"<KEY_VOL_DOWN>"_s, u"</KEY_VOL_DOWN>"_s, u"<MOUSE MOVEMENT = \"Down\" />"_s})
            << With(VolDown, {true, MouseActions::MoveDown, 0, 0, {}}) << QString();
        QTest::newRow("comment trimmed")
            << Lines({u"   <KEY_CAM>   "_s, u"<MOUSE MOVEMENT = \"upleft\" />  <!--   a b  -->"_s})
            << With(Cam, {true, MouseActions::MoveUpLeft, 0, 0, u"a b"_s}) << QString();
        QTest::newRow("comment without its end is empty")
            << Lines({u"<KEY_CAM>"_s, u"<MOUSE MOVEMENT = \"UpLeft\" /> <!-- a b"_s})
            << With(Cam, {true, MouseActions::MoveUpLeft, 0, 0, {}}) << QString();
        QTest::newRow("modifier not a number still reads the usage")
            << Lines({u"<KEY_CAM>"_s, u"<KEYBOARD MODIFIERS = \"xx\" USAGEID = \"04\" />"_s})
            << With(Cam, {false, 0, 0, 65, {}}) << u"KEY_CAM\t\t-> Keyboard Modifier ist keine Zahl (xx)\r\n"_s;
        // A keyboard line leaves the mouse action it does not use as it was.
        QTest::newRow("modifier 0 is not valid, eight-letter name takes one tab")
            << Lines({u"<KEY_LEFT>"_s, u"<KEYBOARD MODIFIERS = \"0\" USAGEID = \"04\" />"_s})
            << With(Left, {false, MouseActions::MoveLeft, 0, 65, {}})
            << u"KEY_LEFT\t-> Kein g\u00FCltiger Keyboard Modifier (0)\r\n"_s;
        for (const QString &modifier : {u"300"_s, u"256"_s, u"99999999999999999999"_s}) {
            QTest::addRow("modifier %s is too large", qPrintable(modifier))
                << Lines({u"<KEY_1>"_s, u"<KEYBOARD MODIFIERS = \"%1\" USAGEID = \"04\" />"_s.arg(modifier)})
                << With(Digit1, {false, 0, 0, 65, {}})
                << u"KEY_1\t\t-> Kein g\u00FCltiger Keyboard Modifier (%1)\r\n"_s.arg(modifier);
        }
        QTest::newRow("modifier without leading zero, usage lower case")
            << Lines({u"<KEY_1>"_s, u"<KEYBOARD MODIFIERS = \"5\" USAGEID = \"2a\" />"_s})
            << With(Digit1, {false, 0, 5, 8, {}}) << QString();
        QTest::newRow("one-digit usage is unknown")
            << Lines({u"<KEY_1>"_s, u"<KEYBOARD MODIFIERS = \"01\" USAGEID = \"4\" />"_s})
            << With(Digit1, {false, 0, 1, 0, {}}) << u"KEY_1\t\t-> Unbekannte UsageID (4)\r\n"_s;
        QTest::newRow("missing usage quotes")
            << Lines({u"<KEY_1>"_s, u"<KEYBOARD MODIFIERS = \"01\" USAGEID = 04 />"_s})
            << With(Digit1, {false, 0, 1, 0, {}}) << u"KEY_1\t\t-> Unbekannte UsageID ()\r\n"_s;
        QTest::newRow("shared usage reads as the comma")
            << Lines({u"<KEY_1>"_s, u"<KEYBOARD MODIFIERS = \"00\" USAGEID = \"36\" />"_s})
            << With(Digit1, {false, 0, 0, 188, {}}) << QString();
        Keymap badButton = PhoneDefaults();
        badButton[Rsk].Comment = u"c"_s;
        QTest::newRow("unknown button keeps the action, two leading blanks")
            << Lines({u"<KEY_RSK>"_s, u"<MOUSE BUTTONS = \"Middle\" />  <!-- c -->"_s}) << badButton
            << u"KEY_RSK\t\t  -> Unbekannte Konstante f\u00FCr Mouse Buttons (Middle)\r\n"_s;
        QTest::newRow("unknown movement on a key without action")
            << Lines({u"<KEY_9>"_s, u"<MOUSE MOVEMENT = \"\" />"_s}) << With(Digit(9), {true, 0, 0, 0, {}})
            << u"KEY_9\t\t-> Unbekannte Konstante f\u00FCr Mouse Movement ()\r\n"_s;
        QTest::newRow("lf-only text is one line")
            << u"<KEY_1>\n<MOUSE BUTTONS = \"Left\" />\n"_s << PhoneDefaults() << QString();
        QTest::newRow("tabs are not trimmed") << Lines({u"\t<KEY_1>"_s, u"<MOUSE BUTTONS = \"Left\" />"_s})
                                              << With(Lsk, {true, 0, 0, 0, {}}) << QString();
        QTest::newRow("several errors on one key")
            << Lines({u"<KEY_2>"_s, u"<KEYBOARD MODIFIERS = \"y\" USAGEID = \"zz\" />"_s})
            << With(Digit(2), {false, 0, 0, 0, {}})
            << u"KEY_2\t\t-> Keyboard Modifier ist keine Zahl (y)\r\nKEY_2\t\t-> Unbekannte UsageID (zz)\r\n"_s;
    }
    void read()
    {
        QFETCH(QString, text);
        QFETCH(Keymap, expected);
        QFETCH(QString, errors);
        Keymap keymap;
        keymap[PhoneKeys::Hash] = KeyAction{true, 5, 0, 0, u"stale"_s};
        KeymapReadErrors found;
        QCOMPARE(ReadKeymapText(keymap, text, true, &found), !errors.isEmpty());
        QCOMPARE(found.List, errors);
        for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
            const KeyAction &got = keymap[key];
            const KeyAction &want = expected[key];
            QVERIFY2(got == want, qPrintable(KeyFileName(key)));
        }
    }

    void writtenTextReadsBackUnchanged()
    {
        // Random keymaps of every action kind on every key: write, read, write.
        QRandomGenerator random(20261121);
        const int codes[] = {0, 8, 13, 32, 48, 49, 65, 89, 90, 96, 105, 112, 123, 144, 186, 188, 190, 222, 226};
        for (int round = 0; round < 300; ++round) {
            Keymap keymap;
            for (PhoneKey key = 0; key < PhoneKeys::Count; ++key) {
                KeyAction &action = keymap[key];
                action.IsMouse = random.bounded(2) == 1;
                action.MouseAction = random.bounded(MouseActions::Count);
                action.Modifiers = static_cast<std::int16_t>(random.bounded(256));
                action.KeyCode = static_cast<std::int16_t>(codes[random.bounded(int(std::size(codes)))]);
                if (random.bounded(3) == 0)
                    action.Comment = u"Taste \u00C4 %1"_s.arg(key);
            }
            const QString text = WriteKeymapText(keymap);
            Keymap back;
            KeymapReadErrors errors;
            QVERIFY2(!ReadKeymapText(back, text, true, &errors), qPrintable(errors.List));
            QCOMPARE(WriteKeymapText(back), text);
        }
    }

    void readsFilesAsWindows1252()
    {
        const QString path = QFINDTESTDATA("../fixtures/keymap-with-errors.kcf");
        QVERIFY(!path.isEmpty());
        Keymap keymap;
        KeymapReadErrors errors;
        QVERIFY(ReadKeymapText(keymap, path, false, &errors));
        QCOMPARE(keymap[PhoneKeys::Cam].Comment, u"Kamera f\u00FCr Fotos"_s);
        QCOMPARE(errors.List,
                 u"KEY_LSK\t\t  -> Unbekannte Konstante f\u00FCr Mouse Buttons (Middle)\r\n"
                 "KEY_LEFT\t-> Unbekannte Konstante f\u00FCr Mouse Movement (Sideways)\r\n"
                 "KEY_CAM\t\t-> Keyboard Modifier ist keine Zahl (xx)\r\n"
                 "KEY_5\t\t-> Kein g\u00FCltiger Keyboard Modifier (0)\r\n"
                 "KEY_5\t\t-> Unbekannte UsageID (4)\r\n"_s);
    }

    void unreadableFileIsAnInternalError_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("summary"); // %1: the path
        QTest::newRow("missing") << u"missing.kcf"_s << u"Programinternal Error:\r\n53 File not found"_s;
        QTest::newRow("folder") << u"folder.kcf"_s
                                << u"Programinternal Error:\r\n75 Path/File access error\r\n%1: not a regular file"_s;
        QTest::newRow("pipe") << u"pipe.kcf"_s
                              << u"Programinternal Error:\r\n75 Path/File access error\r\n%1: not a regular file"_s;
    }
    void unreadableFileIsAnInternalError()
    {
        QFETCH(QString, name);
        QFETCH(QString, summary);
        QTemporaryDir dir;
        QVERIFY(QDir().mkpath(dir.filePath(u"folder.kcf"_s)));
        QCOMPARE(::mkfifo(QFile::encodeName(dir.filePath(u"pipe.kcf"_s)).constData(), 0600), 0);
        Keymap keymap;
        keymap[PhoneKeys::Hash] = KeyAction{true, 5, 0, 0, {}};
        KeymapReadErrors errors;
        QVERIFY(ReadKeymapText(keymap, dir.filePath(name), false, &errors));
        QCOMPARE(keymap, PhoneDefaults());
        QCOMPARE(KeymapReadSummary(errors), summary.arg(dir.filePath(name)));
    }

    void summaryIndentsEveryLine()
    {
        KeymapReadErrors errors;
        errors.List = u"KEY_1\t\t-> a (x)\r\nKEY_LEFT\t-> b (y)\r\n"_s;
        QCOMPARE(KeymapReadSummary(errors),
                 u"By reading of the following keys raised an error:\r\n   KEY_1\t\t-> a (x)\r\n   KEY_LEFT\t-> b (y)\r\n   "_s);
        QCOMPARE(KeymapReadErrorTitle(), u"Errors reading Keymap"_s);
    }

    void summaryIsLocalised()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"deutsch.lng"_s);
        QVERIFY(WriteFile(path, "[Errors]\r\n12=Beim Lesen folgender Tasten trat ein Fehler auf:\r\n"
                                "ReadError=Lesefehler\r\n"));
        SetLanguage(path);
        KeymapReadErrors errors;
        errors.List = u"KEY_1\t\t-> a (x)\r\n"_s;
        QCOMPARE(KeymapReadSummary(errors),
                 u"Beim Lesen folgender Tasten trat ein Fehler auf:\r\n   KEY_1\t\t-> a (x)\r\n   "_s);
        QCOMPARE(KeymapReadErrorTitle(), u"Lesefehler"_s);
        SetLanguage(QString());
    }

    void reportFileText()
    {
        const QDateTime when(QDate(2026, 11, 21), QTime(16, 5, 9));
        const QByteArray report = KeymapErrorReportText(u"Sum\u00FC\r\n   KEY_1\t\tx"_s, when);
        const QList<QByteArray> lines = report.split('\n');
        QCOMPARE(lines.at(0), QByteArray("LastReadError.txt von Padmapper\r"));
        QCOMPARE(lines.at(1), QByteArray("\r"));
        QCOMPARE(lines.at(2), "Programmversion:   " + QByteArray(PADMAPPER_VERSION) + "\r");
        QVERIFY(lines.at(3).startsWith("Zeitpunkt:         "));
        QVERIFY(lines.at(3).contains("05"));
        QVERIFY(lines.at(3).contains("2026") || lines.at(3).contains("26"));
        QCOMPARE(lines.at(4), QByteArray("\r"));
        QVERIFY(report.endsWith("\r\n\r\nSum\xFC\r\n   KEY_1\t\tx\r\n"));
    }

    void veryLongAndBinaryInputEnds()
    {
        QByteArray junk(1 << 20, '\0');
        QRandomGenerator random(7);
        for (char &c : junk)
            c = static_cast<char>(random.bounded(256));
        Keymap keymap;
        ReadKeymapText(keymap, QString::fromLatin1(junk), true);
        const QString manyLines = QString(u"<KEY_1>\r\n<KEYBOARD MODIFIERS = \"q\" USAGEID = \"ZZ\" />\r\n"_s).repeated(20000);
        KeymapReadErrors errors;
        QVERIFY(ReadKeymapText(keymap, manyLines, true, &errors));
        QCOMPARE(errors.List.count(u'\n'), 40000);
    }
};

QTEST_APPLESS_MAIN(tst_KeymapReader)
#include "tst_keymapreader.moc"
