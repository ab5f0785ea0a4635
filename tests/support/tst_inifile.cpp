// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/inifile.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_IniFile : public QObject
{
    Q_OBJECT

private slots:
    void value_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");

        const QByteArray basic = "[MainWindow]\r\nMenu_File=&Datei\r\n[Errors]\r\n16=Speichern?\r\n";
        QTest::newRow("plain") << basic << u"MainWindow"_s << u"Menu_File"_s << u"&Datei"_s;
        QTest::newRow("section ignores case") << basic << u"mainwindow"_s << u"Menu_File"_s << u"&Datei"_s;
        QTest::newRow("key ignores case") << basic << u"MainWindow"_s << u"MENU_FILE"_s << u"&Datei"_s;
        QTest::newRow("other section") << basic << u"Errors"_s << u"16"_s << u"Speichern?"_s;
        QTest::newRow("key in wrong section") << basic << u"Errors"_s << u"Menu_File"_s << QString();
        QTest::newRow("missing section") << basic << u"Nope"_s << u"16"_s << QString();
        QTest::newRow("blanks around") << QByteArray(" [ S ] \n  k  =  v w  \n") << u"S"_s << u"k"_s << u"v w"_s;
        QTest::newRow("quotes removed") << QByteArray("[S]\nk=\" v \"\n") << u"S"_s << u"k"_s << u" v "_s;
        QTest::newRow("single quotes removed") << QByteArray("[S]\nk='v'\n") << u"S"_s << u"k"_s << u"v"_s;
        QTest::newRow("unmatched quote kept") << QByteArray("[S]\nk=\"v\n") << u"S"_s << u"k"_s << u"\"v"_s;
        QTest::newRow("empty value") << QByteArray("[S]\nk=\n") << u"S"_s << u"k"_s << QString();
        QTest::newRow("first key wins") << QByteArray("[S]\nk=1\nk=2\n") << u"S"_s << u"k"_s << u"1"_s;
        QTest::newRow("only first section searched")
            << QByteArray("[S]\na=1\n[S]\nb=2\n") << u"S"_s << u"b"_s << QString();
        QTest::newRow("equals in value") << QByteArray("[S]\nk=a=b\n") << u"S"_s << u"k"_s << u"a=b"_s;
        QTest::newRow("cr only lines") << QByteArray("[S]\rk=v\r") << u"S"_s << u"k"_s << u"v"_s;
        QTest::newRow("no line end at all") << QByteArray("[S]\nk=v") << u"S"_s << u"k"_s << u"v"_s;
        QTest::newRow("key before any section") << QByteArray("k=v\n[S]\n") << u"S"_s << u"k"_s << QString();
        QTest::newRow("windows-1252") << QByteArray("[S]\nk=Gr\xFC\xDF\x80\n") << u"S"_s << u"k"_s
                                      << u"Gr\u00FC\u00DF\u20AC"_s;
        QTest::newRow("utf-8 with bom") << QByteArray("\xEF\xBB\xBF[S]\nk=Gr\xC3\xBC\xC3\x9F\n") << u"S"_s
                                        << u"k"_s << u"Gr\u00FC\u00DF"_s;
        QTest::newRow("percent-n kept as is") << QByteArray("[S]\nk=a%nb\n") << u"S"_s << u"k"_s << u"a%nb"_s;
        QTest::newRow("199 characters kept") << "[S]\nk=" + QByteArray(199, 'x') << u"S"_s << u"k"_s
                                             << QString(199, u'x');
        QTest::newRow("250 characters cut to 199") << "[S]\nk=" + QByteArray(250, 'x') << u"S"_s << u"k"_s
                                                   << QString(199, u'x');
        QTest::newRow("binary junk") << QByteArray("\0\xFF[\0=\n=", 8) << u"S"_s << u"k"_s << QString();
    }
    void value()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, expected);
        QCOMPARE(IniFile::FromBytes(text).Value(section, key), expected);
    }

    void readsFromFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"deutsch.lng"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Errors]\r\nCaption=Fehler\r\n");
        file.close();
        QCOMPARE(INI_bearbeiten(u"errors"_s, u"caption"_s, path), u"Fehler"_s);
        QCOMPARE(INI_bearbeiten(u"errors"_s, u"caption"_s, dir.filePath(u"missing.lng"_s)), QString());
        QVERIFY(!IniFile::Load(dir.filePath(u"missing.lng"_s)).has_value());
    }
};

QTEST_APPLESS_MAIN(tst_IniFile)
#include "tst_inifile.moc"
