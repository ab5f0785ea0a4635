// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ansitext.h"
#include "support/dialogfilter.h"

#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_Support : public QObject
{
    Q_OBJECT

private slots:
    void ansiText()
    {
        QByteArray all;
        for (int b = 0; b < 256; ++b)
            all.append(static_cast<char>(b));
        QCOMPARE(FromAnsi(all).size(), 256);
        QCOMPARE(ToAnsi(FromAnsi(all)), all);
        const std::pair<QByteArray, QString> both[] = {{"\xFC", u"\u00FC"_s},
                                                       {"\x80", u"\u20AC"_s},
                                                       {"\x93x\x94", u"\u201Cx\u201D"_s},
                                                       {QByteArray("a\0b", 3), QString(QChar(u'a')) + QChar() + u'b'}};
        for (const auto &[bytes, text] : both) {
            QCOMPARE(FromAnsi(bytes), text);
            QCOMPARE(ToAnsi(text), bytes);
        }
        // What the code page cannot hold becomes "?", except a file name's own bytes.
        QCOMPARE(ToAnsi(u"\u4E2D-\u0100-\xDC7F-\xDCFF"_s), QByteArray("?-?-?-\xFF"));
    }

    void completeSaveName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("result");
        QTest::newRow("upper-case name kept") << u"/p/test.KCF"_s << u"*.kcf"_s << u"/p/test.KCF"_s;
        QTest::newRow("other extension appended") << u"/p/test.txt"_s << u"*.kcf"_s << u"/p/test.txt.kcf"_s;
        QTest::newRow("any file never appends") << u"/p/test"_s << u"*.*"_s << u"/p/test"_s;
        QTest::newRow("upper-case pattern always appends") << u"/p/a.hid"_s << u"*.HID"_s << u"/p/a.hid.HID"_s;
        QTest::newRow("second pattern matches") << u"/p/x.jpeg"_s << u"*.bmp;*.jpeg"_s << u"/p/x.jpeg"_s;
        QTest::newRow("first pattern appended") << u"/p/x"_s << u"*.bmp;*.jpeg"_s << u"/p/x.bmp"_s;
        QTest::newRow("dot in a folder does not count") << u"/p.kcf/x"_s << u"*.kcf"_s << u"/p.kcf/x.kcf"_s;
        QTest::newRow("short pattern") << u"/p/x"_s << u"*"_s << u"/p/x"_s;
        QTest::newRow("cancelled") << QString() << u"*.kcf"_s << QString();
    }
    void completeSaveName()
    {
        QFETCH(QString, name);
        QFETCH(QString, pattern);
        QFETCH(QString, result);
        QCOMPARE(CompleteSaveName(name, pattern), result);
    }

    void dialogFilters()
    {
        const std::pair<QString, QString> filters[] = {
            {u"Keymap Configuration Files (*.kcf)|*.kcf"_s, u"Keymap Configuration Files (*.kcf) (*.kcf)"_s},
            {u"Remote Profile, Keymap (*.hid,*.kcf)|*.hid;*.kcf|Tar Archive (*.tar)|*.tar|"_s,
             u"Remote Profile, Keymap (*.hid,*.kcf) (*.hid *.kcf);;Tar Archive (*.tar) (*.tar)"_s},
            {QString(), u"Alle Dateien (*.*)"_s},
        };
        for (const auto &[filter, qt] : filters)
            QCOMPARE(ToQtFilter(filter), qt);
        const QString twoPairs = u"A|*.a|B|*.b;*.c"_s;
        QCOMPARE(QtFilterIndex(twoPairs, u"B (*.b *.c)"_s), 1);
        QCOMPARE(QtFilterIndex(twoPairs, u"B"_s), 1); // as shown with the details hidden
        QCOMPARE(QtFilterIndex(twoPairs, u"C (*.c)"_s), -1);
        const QString sep = QDir::separator();
        QCOMPARE(JoinChosenFiles(u"/f"_s, {u"a.kcf"_s, u"b.kcf"_s}),
                 u"/f"_s + sep + u"a.kcf\r\n/f"_s + sep + u"b.kcf"_s);
        QCOMPARE(JoinChosenFiles(u"/f"_s + sep, {u"a"_s}), u"/f"_s + sep + u"a"_s);
    }
};

QTEST_APPLESS_MAIN(tst_Support)
#include "tst_support.moc"
