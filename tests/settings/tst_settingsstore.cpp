// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/settingsstore.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_SettingsStore : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    int m_files = 0;

    // A new file each time: QSettings caches files by name and modification time.
    QString WriteIni(const QByteArray &text)
    {
        const QString path = m_dir.filePath(u"settings-%1.ini"_s.arg(++m_files));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return {};
        file.write(text);
        return path;
    }

private slots:
    void emptyStoreGivesDefaults()
    {
        const Settings settings = SettingsStore(m_dir.filePath(u"none.ini"_s)).Read();
        QCOMPARE(settings.Speed, 115200);
        QCOMPARE(settings.Left, 0);
        QCOMPARE(settings.Top, 0);
        QVERIFY(!settings.HasPort());
        QVERIFY(settings.Language.isEmpty());
    }

    void speedRange_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<int>("speed");
        QTest::newRow("highest kept") << QByteArray("921600") << 921600;
        QTest::newRow("one above") << QByteArray("921601") << 115200;
        QTest::newRow("zero") << QByteArray("0") << 115200;
        QTest::newRow("one") << QByteArray("1") << 1;
        QTest::newRow("negative") << QByteArray("-9600") << 115200;
        QTest::newRow("not a number") << QByteArray("fast") << 115200;
        QTest::newRow("beyond 32 bits") << QByteArray("99999999999") << 115200;
    }
    void speedRange()
    {
        QFETCH(QByteArray, stored);
        QFETCH(int, speed);
        QCOMPARE(SettingsStore(WriteIni("[General]\nSpeed=" + stored + "\n")).Read().Speed, speed);
    }

    // The port number is Windows' value; here it is written back as it was
    // read, in 16 bits, beside the device path.
    void portIsKeptIn16Bits()
    {
        const QString path = WriteIni("[General]\nCOMPort=65539\n");
        SettingsStore store(path);
        QVERIFY(!store.Read().HasPort());
        store.WritePort(*SerialPort::Parse(u"/dev/rfcomm0"_s), 57600);
        QVERIFY(store.Sync());
        QCOMPARE(QSettings(path, QSettings::IniFormat).value(u"COMPort"_s).toInt(), 3);
        QVERIFY(SettingsStore(path).Read().HasPort());
    }

    void exitWritesOnlyWhatIsSet()
    {
        const QString path = WriteIni("[General]\nHidPath=/old/profiles\nKcfPath=/old/keymaps\n");
        {
            SettingsStore store(path);
            Settings settings = store.Read();
            settings.HidPath = u"/new/profiles"_s;
            settings.KcfPath.clear();
            settings.Left = -32000; // a minimised window
            settings.Top = 40;
            store.WriteOnExit(settings);
            QVERIFY(store.Sync());
        }
        const Settings back = SettingsStore(path).Read();
        QCOMPARE(back.HidPath, u"/new/profiles"_s);
        QCOMPARE(back.KcfPath, u"/old/keymaps"_s);
        QCOMPARE(back.Left, -32000);
        QCOMPARE(back.Top, 40);
    }

    void portAndLanguageSurviveARestart()
    {
        const QString path = m_dir.filePath(u"restart.ini"_s);
        {
            SettingsStore store(path);
            store.WritePort(*SerialPort::Parse(u"/dev/ttyACM0"_s), 57600);
            store.WriteLanguage(u"/usr/share/padmapper/Deutsch.lng"_s);
            store.SetString(u"LasthidClass"_s, u"tarfile"_s);
            QVERIFY(store.Sync());
        }
        SettingsStore again(path);
        const Settings settings = again.Read();
        QCOMPARE(settings.Port.Name(), u"/dev/ttyACM0"_s);
        QCOMPARE(settings.Speed, 57600);
        QCOMPARE(settings.Language, u"/usr/share/padmapper/Deutsch.lng"_s);
        QCOMPARE(again.String(u"LasthidClass"_s), u"tarfile"_s);
    }
};

QTEST_APPLESS_MAIN(tst_SettingsStore)
#include "tst_settingsstore.moc"
