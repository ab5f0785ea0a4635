// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/actioneditor.h"
#include "editor/heldkeys.h"
#include "editor/phonekeypad.h"
#include "keymap/keyboardcapture.h"
#include "keymap/keymapwriter.h"
#include "mainwindowharness.h"
#include "profile/document.h"
#include "profile/tempfiles.h"
#include "settings/languagetext.h"

#include "../testfiles.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_MainWindow : public QObject, MainWindowHarness
{
    Q_OBJECT

private:
    QString ToolTip(int key) const { return m_window->Keypad()->CMD(key)->toolTip(); }

private slots:
    void cleanup()
    {
        Close();
        SetLanguage(QString());
    }

    void startsOnTheDefaultProfileAsTemplate()
    {
        MainWindow &window = Start();
        QCOMPARE(window.windowTitle(), u"Unnamed - Padmapper"_s);
        QVERIFY(window.Doc().IsSaved());
        QVERIFY(window.Doc().CurrentFile().isEmpty());
        QVERIFY(!window.Doc().Picture().Image.isNull());
        QCOMPARE(window.SaveButton()->text(), u"Save Profile"_s);
        QCOMPARE(window.Doc().Action(PhoneKeys::Digit(5)).KeyCode, std::int16_t(13));
        QCOMPARE(m_dialogs->PortDialogs, 0);
        QCOMPARE(window.ActiveButton(), int(PhoneKeys::Digit1));
    }

    void firstRunAsksForThePortBeforeLoading()
    {
        bool documentLoadedBefore = true;
        MainWindow &window = Create(QString());
        m_dialogs->OnConfigurePort = [&] { documentLoadedBefore = !window.Doc().Picture().Image.isNull(); };
        window.Startup({});
        QCOMPARE(m_dialogs->PortDialogs, 1);
        QVERIFY(!documentLoadedBefore);
        QCOMPARE(window.CurrentSettings().Speed, 115200);
    }

    void selectingEveryKeyLeavesTheDocumentSaved()
    {
        MainWindow &window = Start();
        for (int key = 0; key < PhoneKeys::Count; ++key) {
            QTest::mouseClick(window.Keypad()->CMD(key), Qt::LeftButton);
            QCOMPARE(window.ActiveButton(), key);
        }
        QVERIFY(window.Doc().IsSaved());
        QVERIFY(window.close());
        QCOMPARE(m_dialogs->Questions, 0);
    }

    void frameCaptionNamesTheKey_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("caption");
        QTest::newRow("joystick up") << int(PhoneKeys::Up) << u"Function of Button: \"Joystick up\""_s;
        QTest::newRow("camera") << int(PhoneKeys::Cam) << u"Function of Button: \"Camera\""_s;
        QTest::newRow("left soft key by Alt+L") << int(PhoneKeys::Lsk) << u"Function of Button: \"Left\""_s;
        QTest::newRow("right soft key by Alt+R") << int(PhoneKeys::Rsk) << u"Function of Button: \"Right\""_s;
        QTest::newRow("digit") << int(PhoneKeys::Digit(7)) << u"Function of Button: \"7\""_s;
    }
    void frameCaptionNamesTheKey()
    {
        QFETCH(int, key);
        QFETCH(QString, caption);
        MainWindow &window = Start();
        if (key == PhoneKeys::Lsk || key == PhoneKeys::Rsk) // by their access keys, from the editor
            QTest::keyClick(window.Editor()->CommentBox(), key == PhoneKeys::Lsk ? Qt::Key_L : Qt::Key_R, Qt::AltModifier);
        else
            window.RefreshKeyDisplay(key);
        QCOMPARE(window.ActiveButton(), key);
        QCOMPARE(window.Editor()->title(), caption);
    }

    void everyEditMarksTheDocumentChanged_data()
    {
        QTest::addColumn<int>("edit");
        QTest::newRow("modifier box") << 0;
        QTest::newRow("device list") << 1;
        QTest::newRow("special key") << 2;
        QTest::newRow("mouse option") << 3;
        QTest::newRow("comment") << 4;
    }
    void everyEditMarksTheDocumentChanged()
    {
        QFETCH(int, edit);
        MainWindow &window = Start();
        window.RefreshKeyDisplay(PhoneKeys::Digit(2));
        ActionEditor *editor = window.Editor();
        switch (edit) {
        case 0:
            QTest::mouseClick(editor->ModifierBox(1), Qt::LeftButton); // left Ctrl
            QTest::mouseClick(editor->ModifierBox(5), Qt::LeftButton); // right Ctrl
            QCOMPARE(window.Doc().Action(PhoneKeys::Digit(2)).Modifiers, std::int16_t(17));
            QCOMPARE(ToolTip(PhoneKeys::Digit(2)), u" CTRL + Arrow up "_s);
            break;
        case 1:
            editor->DeviceList()->activated(1);
            QVERIFY(window.Doc().Action(PhoneKeys::Digit(2)).IsMouse);
            QVERIFY(editor->IsMousePanelShown());
            // The tip is built before the device is stored: it tells the previous one.
            QCOMPARE(ToolTip(PhoneKeys::Digit(2)), u" Arrow up "_s);
            editor->DeviceList()->activated(0);
            QCOMPARE(ToolTip(PhoneKeys::Digit(2)), u" - "_s);
            break;
        case 2:
            editor->SpecialKeyList()->setCurrentText(u"Tab"_s);
            QCOMPARE(window.Doc().Action(PhoneKeys::Digit(2)).KeyCode, std::int16_t(9));
            break;
        case 3:
            editor->MouseOption(MouseActions::MoveDownRight)->click();
            QCOMPARE(window.Doc().Action(PhoneKeys::Digit(2)).MouseAction, int(MouseActions::MoveDownRight));
            QCOMPARE(editor->ShownMovementPicture(), int(MouseActions::MoveDownRight));
            break;
        case 4:
            editor->CommentBox()->setFocus();
            QTest::keyClicks(editor->CommentBox(), u"Hoch"_s);
            QCOMPARE(window.Doc().Action(PhoneKeys::Digit(2)).Comment, u"UpHoch"_s);
            break;
        }
        QVERIFY(!window.Doc().IsSaved());
        // Selecting keys afterwards does not make it saved again.
        window.RefreshKeyDisplay(PhoneKeys::Digit(3));
        QVERIFY(!window.Doc().IsSaved());
    }

    void unsupportedKeyIsNamed()
    {
        MainWindow &window = Start();
        window.RefreshKeyDisplay(PhoneKeys::Digit(4));
        window.Editor()->SpecialKeyList()->setCurrentText(u"Ctrl"_s);
        QCOMPARE(window.Editor()->MessageLabel()->text(), u"This key is not supported !"_s);
        window.RefreshKeyDisplay(PhoneKeys::Digit(4));
        QCOMPARE(window.Editor()->MessageLabel()->text(), QString());
    }

    void captionAndButtonsFollowTheDocumentKind()
    {
        Keymap keymap;
        keymap[PhoneKeys::Digit(9)] = KeyAction{false, 0, 0, 66, u"B"_s};
        QVERIFY(WriteKeymapText(keymap, Path(u"a.b.kcf"_s)));
        MainWindow &window = Start({u"\""_s + Path(u"a.b.kcf"_s) + u"\""_s});
        QCOMPARE(window.windowTitle(), u"a.b - Padmapper"_s);
        QCOMPARE(window.SaveButton()->text(), u"Save Keymap"_s);
        QVERIFY(!window.SendButton()->isEnabled());
        QVERIFY(window.Doc().IsSaved());
        QCOMPARE(window.Doc().Action(PhoneKeys::Digit(9)).Comment, u"B"_s);

        // A picture turns it into an unnamed profile.
        QImage picture(20, 20, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(picture.save(Path(u"red.png"_s)));
        m_dialogs->NextOpen = Path(u"red.png"_s);
        window.ImportPicture();
        QCOMPARE(window.windowTitle(), u"Unnamed - Padmapper"_s);
        QCOMPARE(window.SaveButton()->text(), u"Save Profile"_s);
        QVERIFY(!window.Doc().IsSaved());
    }

    // A command-line file that is there but cannot be read is named, then the
    // default profile comes; Open of it says the same and changes nothing.
    void commandLineFileThatCannotBeRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("message"); // %1: the path
        QTest::newRow("missing") << u"none.hid"_s << QString();
        QTest::newRow("pipe named .hid") << u"pipe.hid"_s << u"Extracting Archive failed !\r\n%1: not a regular file"_s;
        QTest::newRow("folder named .kcf")
            << u"folder.kcf"_s << u"Programinternal Error:\r\n75 Path/File access error\r\n%1: not a regular file"_s;
    }
    void commandLineFileThatCannotBeRead()
    {
        QFETCH(QString, name);
        QFETCH(QString, message);
        QVERIFY(QDir().mkpath(Path(u"folder.kcf"_s)));
        QVERIFY(QFileInfo::exists(Path(u"pipe.hid"_s))
                || ::mkfifo(QFile::encodeName(Path(u"pipe.hid"_s)).constData(), 0600) == 0);
        MainWindow &window = Start({u'"' + Path(name) + u'"'});
        QCOMPARE(m_dialogs->Shown, message.isEmpty() ? QStringList() : QStringList{message.arg(Path(name))});
        QCOMPARE(window.windowTitle(), u"Unnamed - Padmapper"_s);
        QVERIFY(!window.Doc().Picture().Image.isNull());
        if (message.isEmpty())
            return;
        EditComment(PhoneKeys::Digit(1), u"kept"_s);
        m_dialogs->NextOpen = Path(name);
        window.Open();
        QCOMPARE(m_dialogs->Shown.last(), message.arg(Path(name)));
        QCOMPARE(window.Doc().Action(PhoneKeys::Digit(1)).Comment, u"kept"_s);
        QVERIFY(window.Doc().CurrentFile().isEmpty());
    }

    void closingWithChangesAsks()
    {
        MainWindow &window = Start();
        EditComment(PhoneKeys::Digit(1), u"changed"_s);
        m_dialogs->NextAnswer = EditorDialogs::Answer::Cancel;
        QVERIFY(!window.close());
        QCOMPARE(m_dialogs->Questions, 1);
        QCOMPARE(m_dialogs->Shown.last(), u"Save changes to Unnamed ?"_s);
        QVERIFY(window.isVisible());

        m_dialogs->NextAnswer = EditorDialogs::Answer::Yes;
        m_dialogs->NextSave = Path(u"Saved"_s);
        QVERIFY(window.close());
        QVERIFY(QFile::exists(Path(u"Saved.hid"_s)));
        QCOMPARE(window.Doc().CurrentFile(), Path(u"Saved.hid"_s));
    }

    void settingsSurviveARestart()
    {
        MainWindow &window = Start();
        window.move(123, 77);
        m_dialogs->NextOpen = Path(u"none.hid"_s); // moves HidPath even when missing
        window.Open();
        QVERIFY(window.close());
        const Settings settings = SettingsStore(Path(u"settings.ini"_s)).Read();
        QCOMPARE(settings.HidPath, m_dir.path());
        QCOMPARE(settings.Left, window.x());
        QCOMPARE(settings.Top, window.y());
        QVERIFY(settings.Left > 0);
    }

    void snapshotCapturesTheHeldChord()
    {
        MainWindow &window = Start();
        // Choose the key as a user does, so no late focus event chooses another.
        QTest::mouseClick(window.Keypad()->CMD(PhoneKeys::Cam), Qt::LeftButton);
        QCOMPARE(window.ActiveButton(), int(PhoneKeys::Cam));
        QPushButton *snapshot = window.Editor()->SnapshotButton();
        snapshot->click();
        QCOMPARE(snapshot->text(), u"3..."_s);
        QVERIFY(!window.Keypad()->CMD(PhoneKeys::Digit(1))->isEnabled());
        QCOMPARE(window.Editor()->MessageLabel()->text(), u"Please press the keys on the keyboard..."_s);
        QTRY_COMPARE_WITH_TIMEOUT(snapshot->text(), u"2..."_s, 2000);
        QTRY_COMPARE_WITH_TIMEOUT(snapshot->text(), u"1..."_s, 2000);
        // Held from here to the snapshot, after any activation changes of the
        // test's windows (which rightly forget held keys) have passed.
        window.Keys().Press(ModifierKeys::RightCtrl);
        window.Keys().Press(ModifierKeys::LeftShift);
        window.Keys().Press(65);
        QTRY_COMPARE_WITH_TIMEOUT(snapshot->text(), u"Snapshot"_s, 2000);
        const KeyAction &action = window.Doc().Action(PhoneKeys::Cam);
        QVERIFY(!action.IsMouse);
        QCOMPARE(action.Modifiers, std::int16_t(18));
        QCOMPARE(action.KeyCode, std::int16_t(65));
        QVERIFY(window.Keypad()->CMD(PhoneKeys::Digit(1))->isEnabled());
        QCOMPARE(window.Editor()->MessageLabel()->text(), QString());
        QVERIFY(window.Editor()->ModifierBox(0)->isChecked());  // left Shift
        QVERIFY(window.Editor()->ModifierBox(5)->isChecked());  // right Ctrl
        QCOMPARE(ToolTip(PhoneKeys::Cam), u" CTRL + SHIFT + A "_s);
        QVERIFY(!window.Doc().IsSaved());
        window.Keys().Clear();
    }

    void keyboardTakenInBetween_data()
    {
        // What takes the keyboard while Ctrl is held; its release never arrives.
        QTest::addColumn<int>("between");
        QTest::addColumn<int>("focusedAfter");
        QTest::newRow("modal message box") << 0 << int(PhoneKeys::Digit(5));
        QTest::newRow("about box") << 1 << int(PhoneKeys::Digit1);
        QTest::newRow("menu") << 2 << int(PhoneKeys::Digit(5));
        QTest::newRow("another window") << 3 << int(PhoneKeys::Digit(5));
        QTest::newRow("the platform says it is up") << 4 << int(PhoneKeys::Digit(5));
        QTest::newRow("C went down while a dialog had the keyboard") << 5 << int(PhoneKeys::Digit(5));
    }
    void keyboardTakenInBetween()
    {
        QFETCH(int, between);
        QFETCH(int, focusedAfter);
        MainWindow &window = Start();
        QTest::mouseClick(window.Keypad()->CMD(PhoneKeys::Digit(5)), Qt::LeftButton);
        const auto send = [&window](QEvent::Type type, Qt::Key key, quint32 xKeyCode, quint32 keysym) {
            QKeyEvent event(type, key, Qt::NoModifier, xKeyCode, keysym, 0);
            QCoreApplication::sendEvent(&window, &event);
        };
        send(QEvent::KeyPress, Qt::Key_Control, 37, 0xffe3);
        QWidget other;
        QMenu *menu = window.menuBar()->actions().constLast()->menu();
        switch (between) {
        case 0:
        case 1:
            OnNextModal([](QWidget *modal) { modal->close(); });
            if (between == 1)
                window.About();
            else
                QMessageBox(QMessageBox::Warning, u"Note!"_s, u"Open"_s, QMessageBox::Ok, &window).exec();
            break;
        case 2:
            menu->popup(window.mapToGlobal(QPoint(20, 20)));
            QTRY_VERIFY(menu->isVisible());
            menu->close();
            break;
        case 3:
            other.show();
            other.activateWindow();
            QTRY_VERIFY(other.isActiveWindow());
            break;
        case 5: // the platform names a key code learnt from an earlier press
            send(QEvent::KeyPress, Qt::Key_C, 54, 0x63);
            send(QEvent::KeyRelease, Qt::Key_C, 54, 0x63);
            [[fallthrough]];
        case 4:
            window.Keys().SetPlatformQuery([] { return QSet<quint32>{54}; });
            break;
        }
        window.activateWindow(); // as the window manager does when the other one goes
        QTRY_VERIFY(window.isActiveWindow());
        // Only the program's own windows hand the focus back to key "1"; message
        // boxes belong to a command and leave it where it was.
        QCOMPARE(window.ActiveButton(), focusedAfter);
        if (between != 5)
            send(QEvent::KeyPress, Qt::Key_C, 54, 0x63);
        KeyAction captured;
        QVERIFY(CaptureKeyboard(captured, window.Keys().Snapshot()));
        QCOMPARE(std::pair(int(captured.Modifiers), int(captured.KeyCode)), std::pair(0, 67)); // C alone
    }

    void languageFileAppliesToTheWindow()
    {
        QFile lng(Path(u"Deutsch.lng"_s));
        QVERIFY(lng.open(QIODevice::WriteOnly));
        lng.write("[MainWindow]\r\nMenu_File=&Datei\r\nFrame=Funktion der Taste:\r\nButton_SaveProfile=Profil speichern\r\n"
                  "Button_Left=&Links\r\n"
                  "ToolTip_Mouse4=Maus hoch\r\n[CommonDialog]\r\nFile_Unnamed=Unbenannt\r\n");
        lng.close();
        SettingsStore(Path(u"settings.ini"_s)).WriteLanguage(Path(u"Deutsch.lng"_s));
        MainWindow &window = Start();
        QCOMPARE(window.windowTitle(), u"Unbenannt - Padmapper"_s);
        QCOMPARE(window.SaveButton()->text(), u"Profil speichern"_s);
        window.RefreshKeyDisplay(PhoneKeys::Lsk);
        QCOMPARE(window.Editor()->title(), u"Funktion der Taste: \"Links\""_s);
        QCOMPARE(ToolTip(PhoneKeys::Up), u" Maus hoch "_s);
    }

    void rendersAtOneAndTwoTimesInLightAndDark()
    {
        const QPalette light = QApplication::palette();
        // Colours derived from a dark window: light text on dark bases.
        const QPalette dark(QColor(52, 55, 60), QColor(40, 42, 46));

        const QString folder = qEnvironmentVariableIsSet("PADMAPPER_SCREENSHOTS")
                                   ? qEnvironmentVariable("PADMAPPER_SCREENSHOTS")
                                   : m_dir.path();
        QList<QImage> editorParts;
        for (const auto &[name, palette] : {std::pair{u"light"_s, light}, std::pair{u"dark"_s, dark}}) {
            QApplication::setPalette(palette);
            MainWindow &window = Start();
            window.resize(window.sizeHint().expandedTo(QSize(760, 560)));
            window.RefreshKeyDisplay(name == "light"_L1 ? PhoneKeys::Up : PhoneKeys::Digit(3));
            for (const int scale : {1, 2}) {
                QImage image(window.size() * scale, QImage::Format_ARGB32_Premultiplied);
                image.setDevicePixelRatio(scale);
                image.fill(Qt::transparent);
                window.render(&image);
                QVERIFY(image.save(folder + u"/mainwindow-%1-%2x.png"_s.arg(name).arg(scale)));
                QCOMPARE(image.size(), window.size() * scale);
                // Not a blank picture: the phone and the editor left their marks.
                QVERIFY(image.pixel(5, 5) != image.pixel(image.width() / 4, image.height() / 2));
                if (scale == 1)
                    editorParts << image.copy(window.Editor()->geometry());
            }
            Close();
        }
        QApplication::setPalette(light);
        // The editor follows the palette: its background differs between the two.
        QVERIFY(editorParts[0].pixel(2, editorParts[0].height() - 3)
                != editorParts[1].pixel(2, editorParts[1].height() - 3));
    }
};

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
