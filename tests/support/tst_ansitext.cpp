// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ansitext.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_AnsiText : public QObject
{
    Q_OBJECT

private slots:
    void everyByteSurvivesTheRoundTrip()
    {
        QByteArray all;
        for (int b = 0; b < 256; ++b)
            all.append(static_cast<char>(b));
        const QString text = FromAnsi(all);
        QCOMPARE(text.size(), 256);
        QCOMPARE(ToAnsi(text), all);
    }

    void characters_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("ascii") << QByteArray("KEY_1") << u"KEY_1"_s;
        QTest::newRow("umlaut is latin-1") << QByteArray("\xFC") << u"\u00FC"_s;
        QTest::newRow("euro sign") << QByteArray("\x80") << u"\u20AC"_s;
        QTest::newRow("curly quotes") << QByteArray("\x93x\x94") << u"\u201Cx\u201D"_s;
        QTest::newRow("nul kept") << QByteArray("a\0b", 3) << QString(reinterpret_cast<const QChar *>(u"a\0b"), 3);
    }
    void characters()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(FromAnsi(bytes), text);
        QCOMPARE(ToAnsi(text), bytes);
    }

    void unmappableCharactersBecomeQuestionMarks()
    {
        QCOMPARE(ToAnsi(u"\u4E2D-\u0100-\xDC7F"_s), QByteArray("?-?-?"));
        QCOMPARE(ToAnsi(u"\xDCFF\xDCFE.png"_s), QByteArray("\xFF\xFE.png")); // a file name's own bytes
    }
};

QTEST_APPLESS_MAIN(tst_AnsiText)
#include "tst_ansitext.moc"
