// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/languagetext.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_LanguageText : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString WriteLanguage(const QString &name, const QByteArray &text)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return {};
        file.write(text);
        return path;
    }

private slots:
    void cleanup() { SetLanguage(QString()); }

    void lookup_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("defaultText");
        QTest::addColumn<QString>("expected");

        const QByteArray german = "[MainWindow]\r\nMenu_File=&Datei\r\nEmpty=\r\nTwoLines=eins%nzwei\r\n"
                                  "Long=" + QByteArray(250, 'y') + "\r\n";
        QTest::newRow("found") << german << u"MainWindow"_s << u"Menu_File"_s << u"&File"_s << u"&Datei"_s;
        QTest::newRow("any case") << german << u"MAINWINDOW"_s << u"menu_file"_s << u"&File"_s << u"&Datei"_s;
        QTest::newRow("missing key gives default")
            << german << u"MainWindow"_s << u"Menu_Help"_s << u"&Help"_s << u"&Help"_s;
        QTest::newRow("empty value gives default")
            << german << u"MainWindow"_s << u"Empty"_s << u"Fallback"_s << u"Fallback"_s;
        QTest::newRow("percent-n in value") << german << u"MainWindow"_s << u"TwoLines"_s << QString()
                                            << u"eins\r\nzwei"_s;
        QTest::newRow("percent-n in default") << german << u"Errors"_s << u"1"_s << u"a%nb%n"_s
                                              << u"a\r\nb\r\n"_s;
        QTest::newRow("250 characters give 199")
            << german << u"MainWindow"_s << u"Long"_s << QString() << QString(199, u'y');
    }
    void lookup()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, defaultText);
        QFETCH(QString, expected);
        SetLanguage(WriteLanguage(u"lookup.lng"_s, file));
        QCOMPARE(LanguageText(section, key, defaultText), expected);
    }

    void noLanguageGivesDefaults()
    {
        SetLanguage(QString());
        QCOMPARE(LanguageText(u"MainWindow"_s, u"ToolTip_Mouse0"_s, u"-"_s), u"-"_s);
        SetLanguage(m_dir.filePath(u"gone.lng"_s));
        QCOMPARE(LanguageText(u"Errors"_s, u"Caption"_s, u"Error"_s), u"Error"_s);
    }

    void editedFileIsReadAgain()
    {
        const QString path = WriteLanguage(u"edited.lng"_s, "[Errors]\nCaption=Fehler\n");
        SetLanguage(path);
        QCOMPARE(LanguageText(u"Errors"_s, u"Caption"_s, u"Error"_s), u"Fehler"_s);
        WriteLanguage(u"edited.lng"_s, "[Errors]\nCaption=Fehlermeldung\n");
        QCOMPARE(LanguageText(u"Errors"_s, u"Caption"_s, u"Error"_s), u"Fehlermeldung"_s);
    }

    void switchingLanguageTakesEffect()
    {
        SetLanguage(WriteLanguage(u"a.lng"_s, "[S]\nk=A\n"));
        QCOMPARE(LanguageText(u"S"_s, u"k"_s, u"-"_s), u"A"_s);
        SetLanguage(WriteLanguage(u"b.lng"_s, "[S]\nk=B\n"));
        QCOMPARE(LanguageText(u"S"_s, u"k"_s, u"-"_s), u"B"_s);
        QCOMPARE(Language(), m_dir.filePath(u"b.lng"_s));
    }
};

QTEST_APPLESS_MAIN(tst_LanguageText)
#include "tst_languagetext.moc"
