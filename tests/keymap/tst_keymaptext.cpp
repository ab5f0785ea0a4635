// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "keymap/keymapwriter.h"

#include "../testfiles.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The text of a keymap whose only written key has the action line given.
QString Written(const QString &name, const QString &actionLine)
{
    const QString key = u"    <%1>\r\n      <ACTION>\r\n        %2\r\n      </ACTION>\r\n    </%1>\r\n"_s;
    return u"<SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION VERSION=\"1.0\">\r\n  <KEYMAP>\r\n"_s
           + (name.isEmpty() ? QString() : key.arg(name, actionLine))
           + u"  </KEYMAP>\r\n</SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION>"_s;
}

// Keymap text of a key tag and an action line.
QString At(const QString &key, const QString &line)
{
    return u"<%1>\r\n%2"_s.arg(key, line);
}

QString KeyboardLine(const QString &modifiers, const QString &usage)
{
    return u"<KEYBOARD MODIFIERS = \"%1\" USAGEID = \"%2\" />"_s.arg(modifiers, usage);
}

} // namespace

Q_DECLARE_METATYPE(KeyAction)

class tst_KeymapText : public QObject
{
    Q_OBJECT

private slots:
    void write_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<KeyAction>("action");
        QTest::addColumn<QString>("written");
        using namespace PhoneKeys;
        const auto mouse = [](int action, const QString &comment = {}) {
            return KeyAction{true, action, 0, 0, comment};
        };
        QTest::newRow("no action with comment") << Cam << KeyAction{false, 0, 0, 0, u"x"_s} << Written({}, {});
        QTest::newRow("phone default with blank comment") << Lsk << mouse(0, u"   "_s) << Written({}, {});
        QTest::newRow("comment stored untrimmed")
            << Cam << mouse(1, u" a b "_s)
            << Written(u"KEY_CAM"_s, u"<MOUSE BUTTONS = \"Right\" />  <!--  a b   -->"_s);
        QTest::newRow("blank comment left out")
            << Cam << mouse(1, u"  "_s) << Written(u"KEY_CAM"_s, u"<MOUSE BUTTONS = \"Right\" />"_s);
        QTest::newRow("tab is not blank")
            << Cam << mouse(1, u"\t"_s) << Written(u"KEY_CAM"_s, u"<MOUSE BUTTONS = \"Right\" />  <!-- \t  -->"_s);
        QTest::newRow("camera has no default")
            << Cam << mouse(0) << Written(u"KEY_CAM"_s, u"<MOUSE BUTTONS = \"Left\" />"_s);
        QTest::newRow("joystick left moved right")
            << Left << mouse(MouseActions::MoveRight) << Written(u"KEY_LEFT"_s, u"<MOUSE MOVEMENT = \"Right\" />"_s);
        // A mouse value above 9 writes no element, only the comment, and no indentation.
        QTest::newRow("mouse value above 9")
            << Hash << mouse(10, u"c"_s) << Written(u"KEY_HASH"_s, u"  <!-- c  -->"_s).remove(u"        "_s);
    }
    void write()
    {
        QFETCH(int, key);
        QFETCH(KeyAction, action);
        QFETCH(QString, written);
        Keymap keymap;
        keymap[key] = action;
        QCOMPARE(WriteKeymapText(keymap), written);
    }

    void goldenExampleFile()
    {
        Keymap keymap;
        keymap.ResetToPhoneDefaults();
        keymap[PhoneKeys::Joy] = KeyAction{false, 0, 0, 13, u"OK"_s};
        keymap[PhoneKeys::Digit1] = KeyAction{false, 0, 1, 67, QString()};
        keymap[PhoneKeys::VolUp] = KeyAction{true, MouseActions::MoveUp, 0, 0, QString()};
        QTemporaryDir dir;
        QVERIFY(WriteKeymapText(keymap, dir.filePath(u"example.kcf"_s)));
        QCOMPARE(ReadAll(dir.filePath(u"example.kcf"_s)),
                 ReadAll(QFINDTESTDATA("../fixtures/keymap-writer-example.kcf")));
        // Windows-1252; what it cannot hold becomes "?".
        keymap[PhoneKeys::Cam] = KeyAction{true, 0, 0, 0, u"Gr\u00FC\u00DFe \u20AC \u4E2D"_s};
        QVERIFY(WriteKeymapText(keymap, dir.filePath(u"c.kcf"_s)));
        QVERIFY(ReadAll(dir.filePath(u"c.kcf"_s))
                    .contains("<!-- Gr\xFC\xDF"
                              "e \x80 ?  -->"));
        QVERIFY(!WriteKeymapText(keymap, dir.filePath(u"missing-folder/x.kcf"_s)));
    }

    // The ready-made keymaps the program ships: each reads without error, says
    // on every key what it is for, and is exactly what the writer makes of it.
    void templates_data()
    {
        QTest::addColumn<QString>("path");
        const QDir folder(QFINDTESTDATA("../../templates"));
        const QStringList names = folder.entryList({u"*.kcf"_s}, QDir::Files);
        QCOMPARE_GE(names.size(), 6);
        for (const QString &name : names)
            QTest::newRow(qPrintable(name)) << folder.filePath(name);
    }
    void templates()
    {
        QFETCH(QString, path);
        Keymap keymap;
        KeymapReadErrors errors;
        QVERIFY2(!ReadKeymapText(keymap, path, false, &errors), qPrintable(errors.List));
        for (PhoneKey key = 0; key < PhoneKeys::Count; ++key)
            QVERIFY2(keymap[key].IsNoAction() || !keymap[key].Comment.trimmed().isEmpty(),
                     qPrintable(KeyFileName(key)));
        QTemporaryDir dir;
        QVERIFY(WriteKeymapText(keymap, dir.filePath(u"back.kcf"_s)));
        QCOMPARE(ReadAll(dir.filePath(u"back.kcf"_s)), ReadAll(path));
    }

    void read_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("key"); // the one key that differs from the phone defaults
        QTest::addColumn<KeyAction>("action");
        QTest::addColumn<QString>("errors");
        using namespace PhoneKeys;
        const KeyAction defaultLsk{true, 0, 0, 0, {}};
        QTest::newRow("action before any tag goes to the left soft key")
            << KeyboardLine(u"01"_s, u"06"_s) << Lsk << KeyAction{false, 0, 1, 67, {}} << QString();
        QTest::newRow("prefix, value and tag ignore case") << At(u"key_cam"_s, u"<mouse buttons = \"RIGHT\" />"_s)
                                                           << Cam << KeyAction{true, 1, 0, 0, {}} << QString();
        QTest::newRow("action after a closing tag is ignored")
            << At(u"KEY_1"_s, u"</KEY_1>\r\n<MOUSE BUTTONS = \"Left\" />"_s) << Lsk << defaultLsk << QString();
        QTest::newRow("long closing tag leaves the key open")
            << At(u"KEY_VOL_DOWN"_s, u"</KEY_VOL_DOWN>\r\n<MOUSE MOVEMENT = \"Down\" />"_s) << VolDown
            << KeyAction{true, MouseActions::MoveDown, 0, 0, {}} << QString();
        QTest::newRow("comment without its end is empty")
            << At(u"KEY_CAM"_s, u"<MOUSE MOVEMENT = \"upleft\" /> <!-- a b"_s) << Cam
            << KeyAction{true, MouseActions::MoveUpLeft, 0, 0, {}} << QString();
        // A keyboard line leaves the mouse action it does not use as it was.
        QTest::newRow("modifier 0 is not valid, eight-letter name takes one tab")
            << At(u"KEY_LEFT"_s, KeyboardLine(u"0"_s, u"04"_s)) << Left
            << KeyAction{false, MouseActions::MoveLeft, 0, 65, {}}
            << u"KEY_LEFT\t-> Kein g\u00FCltiger Keyboard Modifier (0)\r\n"_s;
        for (const QString &modifier : {u"256"_s, u"99999999999999999999"_s}) {
            QTest::addRow("modifier %s is too large", qPrintable(modifier))
                << At(u"KEY_1"_s, KeyboardLine(modifier, u"04"_s)) << Digit1 << KeyAction{false, 0, 0, 65, {}}
                << u"KEY_1\t\t-> Kein g\u00FCltiger Keyboard Modifier (%1)\r\n"_s.arg(modifier);
        }
        // Numbers in every notation a file may use, rounded half to even.
        for (const auto &[modifier, value] : {std::pair{u"5"_s, 5},
                                              {u" &h12"_s, 18},
                                              {u"&O22"_s, 18},
                                              {u"2.5"_s, 2},
                                              {u"3.5"_s, 4},
                                              {u"1.8d1"_s, 18}}) {
            QTest::addRow("modifier %s", qPrintable(modifier))
                << At(u"KEY_1"_s, KeyboardLine(modifier, u"2a"_s)) << Digit1
                << KeyAction{false, 0, std::int16_t(value), 8, {}} << QString();
        }
        QTest::newRow("usage 00 is no key")
            << At(u"KEY_1"_s, KeyboardLine(u"02"_s, u"00"_s)) << Digit1 << KeyAction{false, 0, 2, 0, {}} << QString();
        QTest::newRow("missing usage quotes")
            << At(u"KEY_1"_s, u"<KEYBOARD MODIFIERS = \"01\" USAGEID = 04 />"_s) << Digit1
            << KeyAction{false, 0, 1, 0, {}} << u"KEY_1\t\t-> Unbekannte UsageID ()\r\n"_s;
        QTest::newRow("several errors on one key")
            << At(u"KEY_1"_s, KeyboardLine(u"y"_s, u"zz"_s)) << Digit1 << KeyAction{false, 0, 0, 0, {}}
            << u"KEY_1\t\t-> Keyboard Modifier ist keine Zahl (y)\r\nKEY_1\t\t-> Unbekannte UsageID (zz)\r\n"_s;
        QTest::newRow("unknown button keeps the action, two leading blanks")
            << At(u"KEY_RSK"_s, u"<MOUSE BUTTONS = \"Middle\" />  <!-- c -->"_s) << Rsk
            << KeyAction{true, 1, 0, 0, u"c"_s}
            << u"KEY_RSK\t\t  -> Unbekannte Konstante f\u00FCr Mouse Buttons (Middle)\r\n"_s;
        QTest::newRow("unknown movement on a key without action")
            << At(u"KEY_9"_s, u"<MOUSE MOVEMENT = \"\" />"_s) << Digit(9) << KeyAction{true, 0, 0, 0, {}}
            << u"KEY_9\t\t-> Unbekannte Konstante f\u00FCr Mouse Movement ()\r\n"_s;
        QTest::newRow("lf-only text is one line")
            << u"<KEY_1>\n<MOUSE BUTTONS = \"Right\" />\n"_s << Lsk << defaultLsk << QString();
        QTest::newRow("tabs are not trimmed")
            << u"\t<KEY_1>\r\n<MOUSE BUTTONS = \"Right\" />"_s << Lsk << defaultLsk << QString();
    }
    void read()
    {
        QFETCH(QString, text);
        QFETCH(int, key);
        QFETCH(KeyAction, action);
        QFETCH(QString, errors);
        Keymap keymap;
        keymap[PhoneKeys::Hash] = KeyAction{true, 5, 0, 0, u"stale"_s};
        KeymapReadErrors found;
        QCOMPARE(ReadKeymapText(keymap, text, true, &found), !errors.isEmpty());
        QCOMPARE(found.List, errors);
        Keymap expected;
        expected.ResetToPhoneDefaults();
        expected[key] = action;
        for (PhoneKey k = 0; k < PhoneKeys::Count; ++k)
            QVERIFY2(keymap[k] == expected[k], qPrintable(KeyFileName(k)));
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

    void reportFileText()
    {
        const QByteArray report = KeymapErrorReportText(u"Sum\u00FC\r\n   KEY_1\t\tx"_s,
                                                        QDateTime(QDate(2026, 11, 21), QTime(16, 5, 9)));
        const QList<QByteArray> lines = report.split('\n');
        QCOMPARE(lines.mid(0, 3), (QList<QByteArray>{"LastReadError.txt von Padmapper\r", "\r",
                                                     "Programmversion:   " PADMAPPER_VERSION "\r"}));
        QVERIFY(lines.at(3).startsWith("Zeitpunkt:         ") && lines.at(3).contains("05")
                && lines.at(3).contains("26"));
        QVERIFY(report.endsWith("\r\n\r\nSum\xFC\r\n   KEY_1\t\tx\r\n"));
    }
};

QTEST_APPLESS_MAIN(tst_KeymapText)
#include "tst_keymaptext.moc"
