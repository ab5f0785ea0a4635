// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/languagetext.h"
#include "settings/recentfiles.h"
#include "settings/settingsstore.h"
#include "support/inifile.h"

#include "../testfiles.h"

#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_Settings : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_files = 0;

    // A new file each time: language files and QSettings are cached by name,
    // size and modification time.
    QString NewFile(const QByteArray &text)
    {
        const QString path = m_dir.filePath(QString::number(++m_files));
        return WriteFile(path, text) ? path : QString();
    }

private slots:
    void cleanup() { SetLanguage(QString()); }

    // Language files are read with the rules of the Windows profile reader.
    void languageText_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("expected"); // the value of "k" in section "S"
        const QString missing = u"default\r\n"_s; // the default text given, "default%n"
        QTest::newRow("names ignore case") << QByteArray("[T]\r\nk=t\r\n[s]\r\nK=v\r\n") << u"v"_s;
        QTest::newRow("key in another section") << QByteArray("[T]\nk=v\n[S]\nj=v\n") << missing;
        QTest::newRow("blanks around") << QByteArray(" [ S ] \n  k  =  v w  \n") << u"v w"_s;
        QTest::newRow("quotes removed") << QByteArray("[S]\nk=\" v \"\n") << u" v "_s;
        QTest::newRow("single quotes removed") << QByteArray("[S]\nk='v'\n") << u"v"_s;
        QTest::newRow("unmatched quote kept") << QByteArray("[S]\nk=\"v\n") << u"\"v"_s;
        QTest::newRow("empty value") << QByteArray("[S]\nk=\n") << missing;
        QTest::newRow("first key wins") << QByteArray("[S]\nk=1\nk=2\n") << u"1"_s;
        QTest::newRow("only first section searched") << QByteArray("[S]\na=1\n[S]\nk=2\n") << missing;
        QTest::newRow("equals in value") << QByteArray("[S]\nk=a=b\n") << u"a=b"_s;
        QTest::newRow("cr only lines") << QByteArray("[S]\rk=v\r") << u"v"_s;
        QTest::newRow("no line end at all") << QByteArray("[S]\nk=v") << u"v"_s;
        QTest::newRow("key before any section") << QByteArray("k=v\n[S]\n") << missing;
        QTest::newRow("percent-n") << QByteArray("[S]\nk=eins%nzwei\n") << u"eins\r\nzwei"_s;
        QTest::newRow("windows-1252") << QByteArray("[S]\nk=Gr\xFC\xDF\x80\n") << u"Gr\u00FC\u00DF\u20AC"_s;
        QTest::newRow("utf-8 with bom") << QByteArray("\xEF\xBB\xBF[S]\nk=Gr\xC3\xBC\xC3\x9F\n")
                                        << u"Gr\u00FC\u00DF"_s;
        QStringEncoder utf16(QStringEncoder::Utf16LE);
        QTest::newRow("utf-16 with bom") << "\xFF\xFE" + QByteArray(utf16(u"[S]\r\nk=\u0100\r\n"_s)) << u"\u0100"_s;
        QTest::newRow("199 characters kept") << "[S]\nk=" + QByteArray(199, 'x') << QString(199, u'x');
        QTest::newRow("250 characters cut to 199") << "[S]\nk=" + QByteArray(250, 'x') << QString(199, u'x');
        QTest::newRow("binary junk") << QByteArray("\0\xFF[\0=\n=", 8) << missing;
    }
    void languageText()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, expected);
        SetLanguage(NewFile(file));
        QCOMPARE(LanguageText(u"S"_s, u"k"_s, u"default%n"_s), expected);
    }

    void languageFileChanges()
    {
        SetLanguage(NewFile("[S]\nk=A\n"));
        QCOMPARE(LanguageText(u"S"_s, u"k"_s, u"-"_s), u"A"_s);
        const QString other = NewFile("[S]\nk=B\n");
        SetLanguage(other);
        QCOMPARE(Language(), other);
        QCOMPARE(LanguageText(u"S"_s, u"k"_s, u"-"_s), u"B"_s);
        QVERIFY(WriteFile(other, "[S]\nk=Bee\n")); // an edited file is read again
        QCOMPARE(LanguageText(u"S"_s, u"k"_s, u"-"_s), u"Bee"_s);
        SetLanguage(m_dir.filePath(u"gone.lng"_s));
        QCOMPARE(LanguageText(u"S"_s, u"k"_s, u"-"_s), u"-"_s);
        QCOMPARE(INI_bearbeiten(u"s"_s, u"K"_s, other), u"Bee"_s);
        QCOMPARE(INI_bearbeiten(u"s"_s, u"K"_s, m_dir.filePath(u"gone.lng"_s)), QString());
    }

    void storedValues()
    {
        const struct
        {
            QByteArray stored;
            int speed;
            bool hasPort;
            bool hasConnection = hasPort; // the chosen one: the port unless Bluetooth
        } rows[] = {
            {"", 115200, false},
            {"Speed=921600", 921600, false}, // the highest speed
            {"Speed=921601", 115200, false},
            {"Speed=1", 1, false},
            {"Speed=fast", 115200, false}, // no number: 0, below the lowest
            {"COMPort=3", 115200, false}, // the Windows port number is not this system's port
            {"PortName=/dev/rfcomm0", 115200, true},
            {"Connection=Bluetooth\nBluetoothAddress=00:11:22:33:44:55", 115200, false, true},
            {"Connection=Bluetooth\nBluetoothAddress=phone\nPortName=/dev/rfcomm0", 115200, true, false},
            {"Connection=Serial\nBluetoothAddress=00:11:22:33:44:55", 115200, false, false},
        };
        for (const auto &row : rows) {
            const Settings settings = SettingsStore(NewFile("[General]\n" + row.stored + "\n")).Read();
            QCOMPARE(settings.Speed, row.speed);
            QCOMPARE(settings.HasPort(), row.hasPort);
            QCOMPARE(settings.HasConnection(), row.hasConnection);
        }
    }

    void writesSurviveARestart()
    {
        const QString path = NewFile("[General]\nHidPath=/old/profiles\nKcfPath=/old/keymaps\nCOMPort=65795\n");
        {
            SettingsStore store(path);
            Settings settings = store.Read();
            settings.HidPath = u"/new/profiles"_s;
            settings.KcfPath.clear(); // an empty folder is not written
            settings.Left = -32000; // a minimised window
            settings.Top = 40;
            store.WriteOnExit(settings);
            store.WritePort(*SerialPort::Parse(u"/dev/ttyACM0"_s), 57600);
            store.WriteLanguage(u"/usr/share/padmapper/Deutsch.lng"_s);
            store.SetString(u"LasthidClass"_s, u"tarfile"_s);
            store.WriteConnection(PhoneConnection::Bluetooth,
                                  {u"00:1A:2B:3C:4D:5E"_s, u"Pocket"_s, ObexMethod::FileTransfer});
            QVERIFY(store.Sync());
        }
        const SettingsStore again(path);
        const Settings back = again.Read();
        QCOMPARE(back.Connection, PhoneConnection::Bluetooth);
        QCOMPARE(back.Phone.Address, u"00:1A:2B:3C:4D:5E"_s);
        QCOMPARE(back.Phone.Name, u"Pocket"_s);
        QCOMPARE(back.Phone.Method, ObexMethod::FileTransfer);
        QCOMPARE(back.HidPath, u"/new/profiles"_s);
        QCOMPARE(back.KcfPath, u"/old/keymaps"_s);
        QCOMPARE(QPoint(back.Left, back.Top), QPoint(-32000, 40));
        QCOMPARE(back.Port.Name(), u"/dev/ttyACM0"_s);
        // The Windows port number is written back as it was read, in 16 bits.
        QCOMPARE(again.String(u"COMPort"_s), u"259"_s);
        QCOMPARE(back.Speed, 57600);
        QCOMPARE(back.Language, u"/usr/share/padmapper/Deutsch.lng"_s);
        QCOMPARE(again.String(u"LasthidClass"_s), u"tarfile"_s);
    }

    // Names added in turn, the list after, and the same list after a restart.
    void recentFiles_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QString>("added");
        QTest::addColumn<QString>("expected");
        QTest::newRow("most recent first") << QByteArray() << u"/a /b /c"_s << u"/c /b /a"_s;
        QTest::newRow("again: to the front") << QByteArray() << u"/a /b /a"_s << u"/a /b"_s;
        QTest::newRow("one file, two spellings") << QByteArray() << u"/d/a /d/x/../a"_s << u"/d/x/../a"_s;
        QTest::newRow("case counts here") << QByteArray() << u"/a /A"_s << u"/A /a"_s;
        QTest::newRow("eight at most") << QByteArray() << u"/1 /2 /3 /4 /5 /6 /7 /8 /9"_s
                                       << u"/9 /8 /7 /6 /5 /4 /3 /2"_s;
        QTest::newRow("stored with gaps and repeats")
            << QByteArray("RecentFile1=/a\nRecentFile3=/b\nRecentFile4=/a\nRecentFile9=/c") << QString() << u"/a /b"_s;
    }
    void recentFiles()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QString, added);
        const QString path = NewFile("[General]\n" + stored + "\n");
        {
            SettingsStore store(path);
            RecentFiles files = RecentFiles::Read(store);
            for (const QString &name : added.split(u' ', Qt::SkipEmptyParts))
                files.Add(name);
            QTEST(files.Paths().join(u' '), "expected");
            files.Write(store);
            QVERIFY(store.Sync());
        }
        QTEST(RecentFiles::Read(SettingsStore(path)).Paths().join(u' '), "expected");
    }
};

QTEST_APPLESS_MAIN(tst_Settings)
#include "tst_settings.moc"
