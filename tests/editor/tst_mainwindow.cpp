// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessibility.h"
#include "editor/actioneditor.h"
#include "editor/editmenu.h"
#include "editor/heldkeys.h"
#include "editor/shortcutsinhibitor.h"
#include "keymap/keyboardcapture.h"
#include "mainwindowharness.h"
#include "profile/document.h"
#include "settings/languagetext.h"

#include "../testfiles.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>

using namespace Qt::StringLiterals;

class tst_MainWindow : public QObject, MainWindowHarness
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        Close();
        SetLanguage(QString());
    }

    // The file named on the command line, else the default profile as an
    // unnamed template (which files are taken is the document's test). A first
    // run asks for the port before anything is loaded.
    void startUp_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("port");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("keys"); // the comment of key "3"
        QTest::addColumn<QString>("message"); // %1: the path
        const QString unnamed = u"Unnamed - Padmapper"_s, template_ = u"Switch window"_s;
        QTest::newRow("default profile") << QString() << true << unnamed << template_ << QString();
        QTest::newRow("first run") << QString() << false << unnamed << template_ << QString();
        QTest::newRow("keymap a.b.kcf") << u"a.b.kcf"_s << true << u"a.b - Padmapper"_s << u"Alt+Tab"_s << QString();
        QTest::newRow("pipe named .hid") << u"pipe.hid"_s << true << unnamed << template_
                                         << u"Extracting Archive failed !\r\n%1: not a regular file"_s;
    }
    void startUp()
    {
        QFETCH(QString, file);
        QFETCH(bool, port);
        QFETCH(QString, message);
        QVERIFY(!MakeKeymap(Path(u"a.b.kcf"_s)).isEmpty());
        QVERIFY(QFileInfo::exists(Path(u"pipe.hid"_s)) || MakePipe(Path(u"pipe.hid"_s)));
        bool loadedFirst = false;
        m_dialogs->OnConfigurePort = [&] { loadedFirst = !m_window->Doc().Picture().Image.isNull(); };
        MainWindow &window = Start(file.isEmpty() ? QStringList() : QStringList{u'"' + Path(file) + u'"'},
                                   port ? u"/dev/rfcomm0"_s : QString());
        QCOMPARE(m_dialogs->PortDialogs, port ? 0 : 1);
        QVERIFY(!loadedFirst);
        QTEST(window.windowTitle(), "caption");
        QTEST(window.Doc().Action(PhoneKeys::Digit(3)).Comment, "keys");
        QCOMPARE(m_dialogs->Shown, message.isEmpty() ? QStringList() : QStringList{message.arg(Path(file))});
        QCOMPARE(window.ActiveButton(), int(PhoneKeys::Digit1));
        QCOMPARE(QApplication::focusWidget(), window.Keypad()->CMD(PhoneKeys::Digit1));
    }

    // Clicking through the keys selects each and names it in the frame; the
    // soft keys answer their access keys too. None of it is an edit.
    void selectingKeysChangesNothing()
    {
        MainWindow &window = Start();
        for (int key = 0; key < PhoneKeys::Count; ++key) {
            QTest::mouseClick(window.Keypad()->CMD(key), Qt::LeftButton);
            QCOMPARE(window.Keypad()->ActiveButton(), key);
            const QString name = PhoneKeyNames.at(std::size_t(key)).Name.English.toString().remove(u'&');
            QCOMPARE(window.Editor()->title(), u"Function of Button: \"%1\""_s.arg(name));
        }
        for (const auto &[access, key] :
             {std::pair(Qt::Key_L, PhoneKeys::Lsk), std::pair(Qt::Key_R, PhoneKeys::Rsk)}) {
            QTest::keyClick(window.Editor()->CommentBox(), access, Qt::AltModifier);
            QCOMPARE(window.ActiveButton(), key);
        }
        QVERIFY(window.Doc().IsSaved());
        QVERIFY(window.close());
        QCOMPARE(m_dialogs->Questions, 0);
    }

    void everyEditMarksTheDocumentChanged_data()
    {
        QTest::addColumn<int>("edit");
        for (int edit = 0;
             const char *name : {"modifier box", "device list", "special key", "mouse option", "comment"})
            QTest::newRow(name) << edit++;
    }
    void everyEditMarksTheDocumentChanged()
    {
        QFETCH(int, edit);
        MainWindow &window = Start();
        window.RefreshKeyDisplay(PhoneKeys::Digit(2));
        ActionEditor *editor = window.Editor();
        const KeyAction &action = window.Doc().Action(PhoneKeys::Digit(2));
        switch (edit) {
        case 0:
            QTest::mouseClick(editor->ModifierBox(1), Qt::LeftButton); // left Ctrl
            QTest::mouseClick(editor->ModifierBox(5), Qt::LeftButton); // right Ctrl
            QCOMPARE(action.Modifiers, std::int16_t(17));
            QCOMPARE(ToolTip(PhoneKeys::Digit(2)), u" CTRL + Arrow up "_s);
            break;
        case 1:
            editor->DeviceList()->activated(1);
            QVERIFY(action.IsMouse && editor->IsMousePanelShown());
            // The tip is built before the device is stored: it tells the previous one.
            QCOMPARE(ToolTip(PhoneKeys::Digit(2)), u" Arrow up "_s);
            editor->DeviceList()->activated(0);
            QCOMPARE(ToolTip(PhoneKeys::Digit(2)), u" - "_s);
            break;
        case 2:
            editor->SpecialKeyList()->setCurrentText(u"Tab"_s);
            QCOMPARE(action.KeyCode, std::int16_t(9));
            editor->SpecialKeyList()->setCurrentText(u"Ctrl"_s);
            QCOMPARE(editor->MessageLabel()->text(), u"This key is not supported !"_s);
            break;
        case 3:
            editor->MouseOption(MouseActions::MoveDownRight)->click();
            QCOMPARE(action.MouseAction, int(MouseActions::MoveDownRight));
            QCOMPARE(editor->ShownMovementPicture(), int(MouseActions::MoveDownRight));
            editor->MouseOption(MouseActions::ButtonRight)->click();
            QCOMPARE(editor->ShownMovementPicture(), -1);
            break;
        case 4:
            editor->CommentBox()->setFocus();
            QTest::keyClicks(editor->CommentBox(), u"Hoch"_s);
            QCOMPARE(action.Comment, u"UpHoch"_s);
            QTest::keyClick(editor->CommentBox(), Qt::Key_Z, Qt::ControlModifier); // the whole word, one step
            QCOMPARE(std::pair(action.Comment, editor->CommentBox()->text()), std::pair(u"Up"_s, u"Up"_s));
            QVERIFY(window.Edit()->RedoAction()->isEnabled());
            QTest::keyClicks(editor->CommentBox(), u"!"_s);
            break;
        }
        QVERIFY(!window.Doc().IsSaved());
        // Selecting another key clears the message but does not make it saved.
        window.RefreshKeyDisplay(PhoneKeys::Digit(3));
        QVERIFY(!window.Doc().IsSaved());
        QCOMPARE(editor->MessageLabel()->text(), QString());
    }

    // Cancel keeps the window; Yes saves, an unnamed document through Save As.
    // The folder (moved by Open even for a profile that is not there) and the
    // window's position are kept for the next start.
    void closingWithChangesAsks()
    {
        MainWindow &window = Start();
        window.move(123, 77);
        m_dialogs->NextOpen = Folder(u"gone"_s) + u"/none.hid"_s;
        window.Open();
        EditComment(PhoneKeys::Digit(1), u"changed"_s);
        m_dialogs->NextAnswer = EditorDialogs::Answer::Cancel;
        QVERIFY(!window.close());
        QCOMPARE(m_dialogs->Questions, 1);
        QCOMPARE(m_dialogs->Shown.last(), u"Save changes to Unnamed ?"_s);
        QVERIFY(window.isVisible());

        m_dialogs->NextAnswer = EditorDialogs::Answer::Yes;
        m_dialogs->NextSave = Folder(u"saved"_s) + u"/Saved"_s;
        QVERIFY(window.close());
        QCOMPARE(m_dialogs->LastSaveProposal, Path(u"gone/Unnamed"_s));
        QVERIFY(QFile::exists(Path(u"saved/Saved.hid"_s)));
        const Settings settings = SettingsStore(Path(u"settings.ini"_s)).Read();
        QCOMPARE(settings.HidPath, Path(u"saved"_s));
        QCOMPARE(QPoint(settings.Left, settings.Top), window.pos());
        QVERIFY(settings.Left > 0);
    }

    // Undo or Redo during the countdown takes the capture back: the chord is
    // never Ctrl+Z and no step is undone under the capture. Right after, Ctrl+Z
    // undoes the capture.
    void snapshotCapturesTheHeldChord_data()
    {
        QTest::addColumn<int>("undo");
        QTest::newRow("chord held, then undone") << 0;
        QTest::newRow("Ctrl+Z held: not captured") << 1;
        QTest::newRow("Ctrl+Z pressed: taken back") << 2;
    }
    void snapshotCapturesTheHeldChord()
    {
        QFETCH(int, undo);
        MainWindow &window = Start();
        // Choose the key as a user does, so no late focus event chooses another.
        QTest::mouseClick(window.Keypad()->CMD(PhoneKeys::Cam), Qt::LeftButton);
        EditComment(PhoneKeys::Cam, u"before"_s);
        const KeyAction before = window.Doc().Action(PhoneKeys::Cam);
        QPushButton *snapshot = window.Editor()->SnapshotButton();
        snapshot->click();
        QCOMPARE(snapshot->text(), u"3..."_s);
        QVERIFY(!window.Keypad()->CMD(PhoneKeys::Digit1)->isEnabled());
        QCOMPARE(window.Editor()->MessageLabel()->text(), u"Please press the keys on the keyboard..."_s);
        QVERIFY(!window.close()); // not while counting
        if (undo == 2)
            QTest::keyClick(snapshot, Qt::Key_Z, Qt::ControlModifier); // at once, no waiting below
        QTRY_COMPARE_WITH_TIMEOUT(snapshot->text(), undo == 2 ? u"Snapshot"_s : u"2..."_s, 2000);
        QTRY_COMPARE_WITH_TIMEOUT(snapshot->text(), undo == 2 ? u"Snapshot"_s : u"1..."_s, 2000);
        // Held from here to the snapshot, after any activation changes of the
        // test's windows (which rightly forget held keys) have passed.
        for (const int key : {int(ModifierKeys::RightCtrl), undo ? 90 : int(ModifierKeys::LeftShift), undo ? 90 : 65})
            window.Keys().Press(key);
        QTRY_COMPARE_WITH_TIMEOUT(snapshot->text(), u"Snapshot"_s, 2000);
        window.Keys().Clear();
        const KeyAction &action = window.Doc().Action(PhoneKeys::Cam);
        QVERIFY(window.Keypad()->CMD(PhoneKeys::Digit1)->isEnabled());
        QCOMPARE(window.Editor()->MessageLabel()->text(), QString());
        if (undo) {
            QCOMPARE(action, before);
            return;
        }
        QCOMPARE(std::tuple(action.IsMouse, action.Modifiers, action.KeyCode),
                 std::tuple(false, std::int16_t(18), std::int16_t(65)));
        QVERIFY(window.Editor()->ModifierBox(0)->isChecked() && window.Editor()->ModifierBox(5)->isChecked());
        QCOMPARE(ToolTip(PhoneKeys::Cam), u" CTRL + SHIFT + A "_s);
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(action, before);
        QVERIFY(!window.Editor()->ModifierBox(0)->isChecked());
    }

    // Modifiers a held key's press carried, with no key event of their own
    // (pressed before the window had the keyboard, or by a virtual keyboard),
    // count as the left key unless a key of theirs is held; where the platform
    // says which keys are down, it alone decides.
    void modifiersCarriedByKeyEvents_data()
    {
        QTest::addColumn<int>("otherKey"); // held before X, without modifiers
        QTest::addColumn<int>("carried"); // by X's press
        QTest::addColumn<bool>("platformAsked");
        QTest::addColumn<int>("modifiers");
        QTest::newRow("Super") << 0 << int(Qt::MetaModifier) << false << 8;
        QTest::newRow("Super, right Windows key seen") << 92 << int(Qt::MetaModifier) << false << 128;
        QTest::newRow("Shift and Ctrl") << 0 << int(Qt::ShiftModifier | Qt::ControlModifier) << false << 3;
        QTest::newRow("AltGr is no Alt") << int(ModifierKeys::RightAlt) << 0 << false << 64;
        QTest::newRow("platform asked") << 0 << int(Qt::MetaModifier) << true << 0;
    }
    void modifiersCarriedByKeyEvents()
    {
        QFETCH(int, otherKey);
        QFETCH(int, carried);
        HeldKeys keys;
        QFETCH(bool, platformAsked);
        if (platformAsked)
            keys.SetPlatformQuery([] { return QSet<quint32>{}; });
        if (otherKey)
            keys.Press(otherKey);
        keys.Press(88, Qt::KeyboardModifiers(carried));
        KeyAction captured;
        QVERIFY(CaptureKeyboard(captured, keys.Snapshot()));
        QTEST(int(captured.Modifiers), "modifiers");
    }

    // What takes the keyboard while Ctrl is held; its release never arrives,
    // so the held keys are forgotten. Only the program's own windows hand the
    // focus back to key "1"; a message box belongs to a command and leaves it.
    void keyboardTakenInBetween_data()
    {
        QTest::addColumn<int>("between");
        QTest::addColumn<int>("focusedAfter");
        QTest::newRow("modal message box") << 0 << int(PhoneKeys::Digit(5));
        QTest::newRow("about box") << 1 << int(PhoneKeys::Digit1);
        QTest::newRow("menu") << 2 << int(PhoneKeys::Digit(5));
        QTest::newRow("another window") << 3 << int(PhoneKeys::Digit(5));
        QTest::newRow("C went down while a dialog had the keyboard") << 4 << int(PhoneKeys::Digit(5));
    }
    void keyboardTakenInBetween()
    {
        QFETCH(int, between);
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
        case 4: // the platform names a key code learnt from an earlier press, and not Ctrl's
            send(QEvent::KeyPress, Qt::Key_C, 54, 0x63);
            send(QEvent::KeyRelease, Qt::Key_C, 54, 0x63);
            window.Keys().SetPlatformQuery([] { return QSet<quint32>{54}; });
            break;
        }
        window.activateWindow(); // as the window manager does when the other one goes
        QTRY_VERIFY(window.isActiveWindow());
        QTEST(window.ActiveButton(), "focusedAfter");
        if (between != 4)
            send(QEvent::KeyPress, Qt::Key_C, 54, 0x63);
        KeyAction captured;
        QVERIFY(CaptureKeyboard(captured, window.Keys().Snapshot()));
        QCOMPARE(std::pair(int(captured.Modifiers), int(captured.KeyCode)), std::pair(0, 67)); // C alone
    }

    // Every focusable control has a name for screen readers, on both panels;
    // their Press selects a key, whose description follows its edits. Tab takes
    // the keypad as one stop, then the editor in the order it is seen.
    void keyboardAndScreenReaderUse()
    {
        MainWindow &window = Start();
        ActionEditor *editor = window.Editor();
        for (const int key : {PhoneKeys::Lsk, PhoneKeys::Digit(1)}) {
            QAccessibleInterface *button = QAccessible::queryAccessibleInterface(window.Keypad()->CMD(key));
            button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
            QTRY_COMPARE(window.ActiveButton(), key);
            QCOMPARE(editor->IsMousePanelShown(), key == PhoneKeys::Lsk);
            const QStringList unnamed = UnnamedFocusable(&window);
            QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(u", "_s)));
        }
        QCOMPARE(QAccessible::queryAccessibleInterface(editor->ModifierBox(5))->text(QAccessible::Name),
                 u"Ctrl (right)"_s);
        editor->ModifierBox(1)->click();
        QCOMPARE(QAccessible::queryAccessibleInterface(window.Keypad()->CMD(PhoneKeys::Digit(1)))
                     ->text(QAccessible::Description),
                 u"CTRL + Escape"_s); // the default profile has Escape on it

        QList<QWidget *> chain{window.Keypad()->CMD(PhoneKeys::Digit(1)), editor->DeviceList()};
        for (int i = 0; i < ActionEditor::ModifierBoxCount; ++i)
            chain << editor->ModifierBox(i % 2 * 4 + i / 2); // row by row
        chain << editor->SpecialKeyList() << editor->SnapshotButton() << editor->CommentBox()
              << window.LoadPictureButton() << window.SendButton() << window.SaveButton() << chain.first();
        QList<QWidget *> visited{QApplication::focusWidget()};
        while (visited.size() < chain.size()) {
            QTest::keyClick(visited.last(), Qt::Key_Tab);
            visited << QApplication::focusWidget();
        }
        QCOMPARE(visited, chain);
    }

    // The language file at start, and the one chosen in the settings later,
    // apply to the whole window at once, Qt's own texts included (the file
    // names no locale: its name says German).
    void languageFileAppliesToTheWindow()
    {
        const auto qtTexts = [] {
            return std::pair(QDialogButtonBox(QDialogButtonBox::Cancel).button(QDialogButtonBox::Cancel)->text(),
                             QKeySequence(QKeySequence::Open).toString(QKeySequence::NativeText));
        };
        QVERIFY(WriteFile(Path(u"Deutsch.lng"_s),
                          "[MainWindow]\r\nFrame=Funktion der Taste:\r\nButton_SaveProfile=Profil speichern\r\n"
                          "Button_Left=&Links\r\nButton_LoadPicture=Ein Bild von der Festplatte "
                          "laden\r\nToolTip_Mouse4=Maus hoch\r\n[CommonDialog]\r\nFile_Unnamed=Unbenannt\r\n"));
        SettingsStore(Path(u"settings.ini"_s)).WriteLanguage(Path(u"Deutsch.lng"_s));
        MainWindow &window = Start();
        QCOMPARE(window.windowTitle(), u"Unbenannt - Padmapper"_s);
        QCOMPARE(window.SaveButton()->text(), u"Profil speichern"_s);
        window.RefreshKeyDisplay(PhoneKeys::Lsk);
        QCOMPARE(window.Editor()->title(), u"Funktion der Taste: \"Links\""_s);
        QCOMPARE(ToolTip(PhoneKeys::Up), u" Maus hoch "_s);
        QCOMPARE(qtTexts(), std::pair(u"Abbrechen"_s, u"Strg+O"_s));
        m_dialogs->OnConfigurePort = [this] { m_store->WriteLanguage(QString()); };
        window.OpenSettings();
        QCOMPARE(std::pair(window.windowTitle(), ToolTip(PhoneKeys::Up)),
                 std::pair(u"Unnamed - Padmapper"_s, u" - "_s));
        QCOMPARE(qtTexts(), std::pair(u"Cancel"_s, u"Ctrl+O"_s));
        // Longer words widen the window; the phone keeps its size.
        window.resize(window.sizeHint().width(), window.height()); // as an English window opens
        QCoreApplication::processEvents();
        const QSize keySize = window.Keypad()->CMD(PhoneKeys::Digit1)->size();
        m_dialogs->OnConfigurePort = [this] { m_store->WriteLanguage(Path(u"Deutsch.lng"_s)); };
        window.OpenSettings();
        QCOMPARE(window.SaveButton()->text(), u"Profil speichern"_s);
        const QSize change = window.Keypad()->CMD(PhoneKeys::Digit1)->size() - keySize;
        QVERIFY2(qAbs(change.width()) <= 1 && qAbs(change.height()) <= 1, // rounding to pixels
                 qPrintable(u"%1x%2"_s.arg(change.width()).arg(change.height())));
    }
};

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
