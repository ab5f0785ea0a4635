// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessibility.h"
#include "editor/settingswindow.h"
#include "settings/filetypes.h"
#include "settings/settingsstore.h"

#include "../testfiles.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QListWidget>
#include <QRadioButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_SettingsWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SettingsStore> m_store;
    std::unique_ptr<FileTypes> m_types;

    QString Path(const QString &name) const { return m_dir->filePath(name); }

    std::unique_ptr<SettingsWindow> Open() { return std::make_unique<SettingsWindow>(*m_store, *m_types); }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_store = std::make_unique<SettingsStore>(Path(u"settings.ini"_s));
        m_store->WritePort(*SerialPort::Parse(u"/dev/rfcomm0"_s), 57600);
        (void)m_store->Sync();
        m_types = std::make_unique<FileTypes>(u"/opt/padmapper/bin/padmapper"_s, Path(u"data"_s), Path(u"config"_s));
    }

    // OK stores what was typed; a blank or a text that is no number keeps
    // what was stored, a speed out of range becomes 115200. Cancel stores
    // nothing and binds no type, but opening registers the program's classes.
    void connectionOnOk_data()
    {
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("port");
        QTest::addColumn<QString>("speed");
        QTest::addColumn<QString>("storedPort");
        QTest::addColumn<int>("storedSpeed");
        QTest::newRow("another port, typed with blanks")
            << true << u" /dev/ttyUSB1 "_s << u"921600"_s << u"/dev/ttyUSB1"_s << 921600;
        QTest::newRow("one million") << true << u"/dev/rfcomm0"_s << u"1000000"_s << u"/dev/rfcomm0"_s << 115200;
        QTest::newRow("zero") << true << u"/dev/rfcomm0"_s << u"0"_s << u"/dev/rfcomm0"_s << 115200;
        QTest::newRow("not a number") << true << u"/dev/rfcomm0"_s << u"abc"_s << u"/dev/rfcomm0"_s << 57600;
        QTest::newRow("blanks keep both") << true << u"  "_s << QString() << u"/dev/rfcomm0"_s << 57600;
        QTest::newRow("cancel") << false << u"/dev/ttyACM3"_s << u"9600"_s << u"/dev/rfcomm0"_s << 57600;
    }
    void connectionOnOk()
    {
        QFETCH(bool, ok);
        QFETCH(QString, port);
        QFETCH(QString, speed);
        auto window = Open();
        QCOMPARE(UnnamedFocusable(window.get()).join(u","_s), QString());
        QCOMPARE(window->PortBox()->currentText(), u"/dev/rfcomm0"_s);
        QCOMPARE(window->SpeedBox()->currentText(), u"57600"_s);
        QStringList speeds;
        for (int i = 0; i < window->SpeedBox()->count(); ++i)
            speeds << window->SpeedBox()->itemText(i);
        QCOMPARE(speeds.join(u' '), u"921600 460800 256000 230400 115200 57600 19200 9600 2400"_s);
        window->PortBox()->setCurrentText(port);
        window->SpeedBox()->setCurrentText(speed);
        window->ProfileTypeBox()->setChecked(!ok);
        ok ? window->accept() : window->reject();
        const Settings settings = SettingsStore(Path(u"settings.ini"_s)).Read();
        QTEST(settings.Port.Name(), "storedPort");
        QTEST(settings.Speed, "storedSpeed");
        QVERIFY(QFile::exists(m_types->DesktopEntryPath()) && QFile::exists(m_types->MimePackagePath()));
        QCOMPARE(m_types->BoundClass(FileType::Profile), QString());
    }

    void bluetoothPhoneOnOk_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("name");
        QTest::newRow("address") << u"00-1a-2b-3c-4d-5e"_s << u"00:1A:2B:3C:4D:5E"_s << QString();
        QTest::newRow("as listed") << u"Pocket (00:1A:2B:3C:4D:5E)"_s << u"00:1A:2B:3C:4D:5E"_s << u"Pocket"_s;
        QTest::newRow("no address keeps none") << u"my phone"_s << QString() << QString();
    }
    void bluetoothPhoneOnOk()
    {
        QFETCH(QString, typed);
        QFETCH(QString, address);
        {
            auto window = Open();
            QVERIFY(!window->BluetoothChoice()->isChecked());
            window->BluetoothChoice()->setChecked(true);
            QVERIFY(!window->PortBox()->isEnabled());
            window->PhoneBox()->setCurrentText(typed);
            window->MethodBox()->setCurrentIndex(1);
            window->accept();
        }
        const Settings settings = SettingsStore(Path(u"settings.ini"_s)).Read();
        QCOMPARE(settings.Connection, PhoneConnection::Bluetooth);
        QCOMPARE(settings.Phone.Address, address);
        QTEST(settings.Phone.Name, "name");
        QCOMPARE(settings.Phone.Method, ObexMethod::FileTransfer);
        QCOMPARE(settings.Port.Name(), u"/dev/rfcomm0"_s);
        auto again = Open();
        QVERIFY(again->BluetoothChoice()->isChecked());
        QVERIFY(again->PhoneBox()->currentText().contains(address));
        QCOMPARE(again->MethodBox()->currentIndex(), 1);
    }

    void typeIsHandedBackToItsPreviousOwner()
    {
        // Accepts the window with the two boxes set; what they showed before.
        const auto choose = [this](bool profile, bool keymap) {
            auto window = Open();
            const auto shown = std::pair(window->ProfileTypeBox()->isChecked(), window->KeymapTypeBox()->isChecked());
            window->ProfileTypeBox()->setChecked(profile);
            window->KeymapTypeBox()->setChecked(keymap);
            window->accept();
            return shown;
        };
        // Another program owns .hid; .kcf is unowned. Left unchecked, the
        // other program keeps it, and it is remembered. The list's other
        // entries stay.
        QDir().mkpath(Path(u"config"_s));
        QVERIFY(WriteFile(m_types->MimeAppsListPath(),
                          "[Added Associations]\ntext/plain=gedit.desktop;\n\n[Default Applications]\n"
                          "image/png=eog.desktop;\napplication/x-padmapper-profile=ark.desktop;kate.desktop;\n"));
        QCOMPARE(choose(false, false), std::pair(false, false));
        QCOMPARE(m_types->BoundClass(FileType::Profile), u"ark.desktop"_s);
        QCOMPARE(m_store->String(u"LasthidClass"_s), u"ark.desktop"_s);
        QCOMPARE(choose(true, true), std::pair(false, false));
        QCOMPARE(m_types->BoundClass(FileType::Profile), u"io.github.padmapper.Padmapper.desktop"_s);
        QVERIFY(ReadAll(m_types->MimeAppsListPath())
                    .contains("application/x-padmapper-keymap=io.github.padmapper.Padmapper.desktop;"));
        QCOMPARE(choose(false, false), std::pair(true, true));
        QCOMPARE(m_types->BoundClass(FileType::Profile), u"ark.desktop"_s);
        QCOMPARE(m_types->BoundClass(FileType::Keymap), QString());
        const QByteArray text = ReadAll(m_types->MimeAppsListPath());
        for (const char *entry :
             {"text/plain=gedit.desktop;", "image/png=eog.desktop;", "application/x-padmapper-profile=ark.desktop;"})
            QVERIFY2(text.contains(entry), entry);
    }

    void desktopEntryStartsTheProgram()
    {
        m_types->RegisterFileTypes();
        const QByteArray text = ReadAll(m_types->DesktopEntryPath());
        QVERIFY(text.contains("Exec=\"/opt/padmapper/bin/padmapper\" %f\n"));
        QVERIFY(text.contains("MimeType=application/x-padmapper-profile;application/x-padmapper-keymap;\n"));

        const QString validate = QStandardPaths::findExecutable(u"desktop-file-validate"_s);
        QVERIFY2(!validate.isEmpty(), "desktop-file-validate is needed (package desktop-file-utils)");
        const ProgramRun run = RunProgram(validate, {m_types->DesktopEntryPath()});
        QVERIFY2(run.Status == 0, run.Out.constData());
    }

    // The languages found with the program, sorted by name; OK stores the
    // chosen one, and without a choice the stored one stays.
    void languageOnOk()
    {
        const auto languages = SettingsWindow::LanguageFiles();
        QStringList names;
        for (const auto &[name, path] : languages) {
            names << name;
            QVERIFY(path.endsWith(name + u".lng"_s));
        }
        QVERIFY(std::is_sorted(names.begin(), names.end(), [](const QString &a, const QString &b) {
            return a.compare(b, Qt::CaseInsensitive) < 0;
        }));
        for (const QString &file : QDir(QCoreApplication::applicationDirPath()).entryList({u"*.lng"_s}, QDir::Files))
            QVERIFY(names.contains(file.chopped(4)));

        m_store->WriteLanguage(u"/somewhere/Klingon.lng"_s);
        (void)m_store->Sync();
        auto window = Open();
        QCOMPARE(window->LanguageList()->count(), int(languages.size()));
        QVERIFY(window->LanguageList()->selectedItems().isEmpty());
        window->accept();
        QCOMPARE(SettingsStore(Path(u"settings.ini"_s)).Read().Language, u"/somewhere/Klingon.lng"_s);
        window = Open();
        window->LanguageList()->item(0)->setSelected(true);
        window->accept();
        QCOMPARE(SettingsStore(Path(u"settings.ini"_s)).Read().Language, languages.first().second);
    }
};

QTEST_MAIN(tst_SettingsWindow)
#include "tst_settingswindow.moc"
