// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keymap.h"
#include "keymap/keymapwriter.h"

#include "../testfiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

Keymap ExampleKeymap()
{
    Keymap keymap;
    keymap.ResetToPhoneDefaults();
    keymap[PhoneKeys::Joy] = KeyAction{false, 0, 0, 13, u"OK"_s};
    keymap[PhoneKeys::Digit1] = KeyAction{false, 0, 1, 67, QString()};
    keymap[PhoneKeys::VolUp] = KeyAction{true, MouseActions::MoveUp, 0, 0, QString()};
    return keymap;
}

const QString Header = u"<SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION VERSION=\"1.0\">\r\n  <KEYMAP>\r\n"_s;
const QString Footer = u"  </KEYMAP>\r\n</SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION>"_s;

QString Block(const QString &name, const QString &actionLine)
{
    return "    <"_L1 + name + ">\r\n      <ACTION>\r\n"_L1 + actionLine + "\r\n      </ACTION>\r\n    </"_L1 + name
           + ">\r\n"_L1;
}

} // namespace

Q_DECLARE_METATYPE(KeyAction)

class tst_KeymapWriter : public QObject
{
    Q_OBJECT

private slots:
    void theDocumentedExampleByteForByte()
    {
        const QString path = QFINDTESTDATA("../fixtures/keymap-writer-example.kcf");
        QVERIFY(!path.isEmpty());
        const QByteArray golden = ReadAll(path);
        QCOMPARE(WriteKeymapText(ExampleKeymap()).toLatin1() + "\r\n", golden);

        QTemporaryDir dir;
        const QString out = dir.filePath(u"example.kcf"_s);
        QVERIFY(WriteKeymapText(ExampleKeymap(), out));
        QCOMPARE(ReadAll(out), golden);
    }

    void singleKey_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<KeyAction>("action");
        QTest::addColumn<QString>("written"); // the key's block, "" when left out

        QTest::newRow("no action") << PhoneKeys::Digit(5) << KeyAction{} << QString();
        QTest::newRow("no action with comment") << PhoneKeys::Digit(5) << KeyAction{false, 0, 0, 0, u"x"_s}
                                                << QString();
        QTest::newRow("phone default left out") << int(PhoneKeys::Lsk) << KeyAction{true, 0, 0, 0, QString()}
                                                << QString();
        QTest::newRow("phone default with blank comment")
            << int(PhoneKeys::Lsk) << KeyAction{true, 0, 0, 0, u"   "_s} << QString();
        QTest::newRow("phone default with comment")
            << int(PhoneKeys::Lsk) << KeyAction{true, 0, 0, 0, u"x"_s}
            << Block(u"KEY_LSK"_s, u"        <MOUSE BUTTONS = \"Left\" />  <!-- x  -->"_s);
        QTest::newRow("comment stored untrimmed")
            << int(PhoneKeys::Cam) << KeyAction{true, 1, 0, 0, u" a b "_s}
            << Block(u"KEY_CAM"_s, u"        <MOUSE BUTTONS = \"Right\" />  <!--  a b   -->"_s);
        QTest::newRow("tab is not blank")
            << int(PhoneKeys::Cam) << KeyAction{true, 1, 0, 0, u"\t"_s}
            << Block(u"KEY_CAM"_s, u"        <MOUSE BUTTONS = \"Right\" />  <!-- \t  -->"_s);
        QTest::newRow("camera default rule does not apply")
            << int(PhoneKeys::Cam) << KeyAction{true, 0, 0, 0, QString()}
            << Block(u"KEY_CAM"_s, u"        <MOUSE BUTTONS = \"Left\" />"_s);
        QTest::newRow("joystick left moved right")
            << int(PhoneKeys::Left) << KeyAction{true, MouseActions::MoveRight, 0, 0, QString()}
            << Block(u"KEY_LEFT"_s, u"        <MOUSE MOVEMENT = \"Right\" />"_s);
        QTest::newRow("diagonal") << int(PhoneKeys::Star) << KeyAction{true, MouseActions::MoveDownLeft, 0, 0, {}}
                                  << Block(u"KEY_STAR"_s, u"        <MOUSE MOVEMENT = \"DownLeft\" />"_s);
        QTest::newRow("mouse value above 9")
            << int(PhoneKeys::Hash) << KeyAction{true, 10, 0, 0, u"c"_s} << Block(u"KEY_HASH"_s, u"  <!-- c  -->"_s);
        QTest::newRow("modifier without key")
            << int(PhoneKeys::Digit0) << KeyAction{false, 0, 2, 0, QString()}
            << Block(u"KEY_0"_s, u"        <KEYBOARD MODIFIERS = \"02\" USAGEID = \"00\" />"_s);
        QTest::newRow("modifier is decimal")
            << int(PhoneKeys::Digit0) << KeyAction{false, 0, 12, 65, QString()}
            << Block(u"KEY_0"_s, u"        <KEYBOARD MODIFIERS = \"12\" USAGEID = \"04\" />"_s);
        QTest::newRow("three-digit modifier")
            << int(PhoneKeys::Digit0) << KeyAction{false, 0, 255, 8, QString()}
            << Block(u"KEY_0"_s, u"        <KEYBOARD MODIFIERS = \"255\" USAGEID = \"2A\" />"_s);
        QTest::newRow("key without usage")
            << int(PhoneKeys::Digit0) << KeyAction{false, 0, 0, 173, QString()}
            << Block(u"KEY_0"_s, u"        <KEYBOARD MODIFIERS = \"00\" USAGEID = \"00\" />"_s);
    }
    void singleKey()
    {
        QFETCH(int, key);
        QFETCH(KeyAction, action);
        QFETCH(QString, written);
        Keymap keymap;
        keymap[key] = action;
        QCOMPARE(WriteKeymapText(keymap), Header + written + Footer);
    }

    void emptyKeymapIsFourLines()
    {
        QCOMPARE(WriteKeymapText(Keymap()), Header + Footer);
        Keymap defaults;
        defaults.ResetToPhoneDefaults();
        QCOMPARE(WriteKeymapText(defaults), Header + Footer);
    }

    void commentsAreWrittenInWindows1252()
    {
        Keymap keymap;
        keymap[PhoneKeys::Cam] = KeyAction{true, 0, 0, 0, u"Gr\u00FC\u00DFe \u20AC \u4E2D"_s};
        QTemporaryDir dir;
        const QString out = dir.filePath(u"c.kcf"_s);
        QVERIFY(WriteKeymapText(keymap, out));
        QVERIFY(ReadAll(out).contains("<!-- Gr\xFC\xDF" "e \x80 ?  -->"));
    }

    void unwritableFileKeepsTheOldOne()
    {
        QTemporaryDir dir;
        QVERIFY(!WriteKeymapText(ExampleKeymap(), dir.filePath(u"missing-folder/x.kcf"_s)));
        QVERIFY(!WriteKeymapText(ExampleKeymap(), dir.path()));
        QVERIFY(QFileInfo(dir.path()).isDir());
    }
};

QTEST_APPLESS_MAIN(tst_KeymapWriter)
#include "tst_keymapwriter.moc"
