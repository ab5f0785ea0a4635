// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/dialogfilter.h"

#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_DialogFilter : public QObject
{
    Q_OBJECT

private slots:
    void toQtFilter_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("qt");
        QTest::newRow("one pair") << u"Keymap Configuration Files (*.kcf)|*.kcf|"_s
                                  << u"Keymap Configuration Files (*.kcf) (*.kcf)"_s;
        QTest::newRow("missing final bar") << u"Keymap Configuration Files (*.kcf)|*.kcf"_s
                                           << u"Keymap Configuration Files (*.kcf) (*.kcf)"_s;
        QTest::newRow("several patterns, two pairs")
            << u"Remote Profile, Keymap (*.hid,*.kcf)|*.hid;*.kcf|Tar Archive (*.tar)|*.tar"_s
            << u"Remote Profile, Keymap (*.hid,*.kcf) (*.hid *.kcf);;Tar Archive (*.tar) (*.tar)"_s;
        QTest::newRow("empty filter") << QString() << u"Alle Dateien (*.*)"_s;
    }
    void toQtFilter()
    {
        QFETCH(QString, filter);
        QFETCH(QString, qt);
        QCOMPARE(ToQtFilter(filter), qt);
    }

    void filterIndex()
    {
        const QString filter = u"A|*.a|B|*.b;*.c"_s;
        QCOMPARE(QtFilterIndex(filter, u"B (*.b *.c)"_s), 1);
        QCOMPARE(QtFilterIndex(filter, u"B"_s), 1); // as shown with the details hidden
        QCOMPARE(QtFilterIndex(filter, u"C (*.c)"_s), -1);
        QCOMPARE(ParseDialogFilter(filter).at(1).Pattern, u"*.b;*.c"_s);
    }

    void completeSaveName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("result");
        QTest::newRow("extension added") << u"/p/Games"_s << u"*.kcf"_s << u"/p/Games.kcf"_s;
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

    void multiSelection()
    {
        const QString sep = QDir::separator();
        QCOMPARE(JoinChosenFiles(u"/f"_s, {u"a.kcf"_s, u"b.kcf"_s}),
                 u"/f"_s + sep + u"a.kcf\r\n/f"_s + sep + u"b.kcf"_s);
        QCOMPARE(JoinChosenFiles(u"/f"_s + sep, {u"a"_s}), u"/f"_s + sep + u"a"_s);
    }
};

QTEST_APPLESS_MAIN(tst_DialogFilter)
#include "tst_dialogfilter.moc"
