// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessibility.h"
#include "editor/keymapview.h"
#include "editor/templatechooser.h"
#include "keymap/keymapreader.h"
#include "mainwindowharness.h"
#include "profile/document.h"
#include "settings/readme.h"

#include "../testfiles.h"

#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QScopeGuard>
#include <QTreeWidget>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

enum StartDocument { Template, KeymapK, ProfileP };

// A menu entry by its path of English texts, "&File/&Import/&Picture"; null
// when there is none.
QAction *MenuAction(const QMenuBar &bar, const QString &path)
{
    QList<QAction *> actions = bar.actions();
    QAction *found = nullptr;
    for (const QString &text : path.split(u'/')) {
        const auto at = std::find_if(actions.cbegin(), actions.cend(), [&](QAction *a) { return a->text() == text; });
        if (at == actions.cend())
            return nullptr;
        found = *at;
        actions = found->menu() ? found->menu()->actions() : QList<QAction *>();
    }
    return found;
}

} // namespace

class tst_FileCommands : public QObject, MainWindowHarness
{
    Q_OBJECT

private slots:
    void cleanup() { Close(); }

    // Each dialog starts in its kind's folder (hid, kcf, pic) and moves it to
    // the file chosen ("" cancels: nothing changes); the caption and the
    // buttons follow the document's kind.
    void menuCommands_data()
    {
        QTest::addColumn<int>("start"); // the template, out/k.kcf, or out/p.hid with out/Photo.JPG
        QTest::addColumn<QString>("menu"); // under File, or a button
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("asked"); // the open dialog's folder or the name proposed; "" for none
        QTest::addColumn<QString>("folders"); // HidPath, KcfPath, PicPath after
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<bool>("keymap"); // a keymap document after
        const auto row = [](const char *name, StartDocument start, const char *menu, const char *answer,
                            const char *asked, const char *folders, const char *written, const char *caption) {
            QTest::newRow(name) << int(start) << QString::fromLatin1(menu) << QString::fromLatin1(answer)
                                << QString::fromLatin1(asked) << QString::fromLatin1(folders)
                                << QString::fromLatin1(written) << QString::fromLatin1(caption) + u" - Padmapper"_s
                                << (qstrcmp(caption, "k") == 0 || qstrcmp(caption, "Copy") == 0);
        };
        // Menu entries under File, and buttons.
        row("open profile", Template, "&Open", "out/p.hid", "hid", "out kcf pic", "", "p");
        row("open keymap", ProfileP, "&Open", "out/k.kcf", "hid", "out kcf pic", "", "k");
        row("open cancelled", Template, "&Open", "", "hid", "hid kcf pic", "", "Unnamed");
        row("save button on unnamed", Template, "Save Profile", "out/New", "hid/Unnamed", "out kcf pic", "out/New.hid",
            "New");
        row("save as keymap", KeymapK, "Save &as...", "out/Copy", "kcf/k.kcf", "hid out pic", "out/Copy.kcf", "Copy");
        row("save as cancelled", KeymapK, "Save &as...", "", "kcf/k.kcf", "hid kcf pic", "", "k");
        row("save keymap", KeymapK, "&Save", "", "", "hid kcf pic", "out/k.kcf", "k");
        row("import picture on keymap", KeymapK, "&Import/&Picture", "out/Photo.JPG", "pic", "hid kcf out", "",
            "Unnamed");
        row("load picture button", Template, "Load Picture", "out/Photo.JPG", "pic", "hid kcf out", "", "Unnamed");
        row("import picture cancelled", Template, "&Import/&Picture", "", "pic", "hid kcf pic", "", "Unnamed");
        row("import keymap", Template, "&Import/&Keymap", "out/k.kcf", "kcf", "hid out pic", "", "Unnamed");
        row("export picture", ProfileP, "&Export/&Picture", "out/x", "pic/p.jpg", "hid kcf out", "out/x.jpg", "p");
        row("export picture of keymap", KeymapK, "&Export/&Picture", "out/x", "", "hid kcf pic", "", "k");
        row("export keymap", ProfileP, "&Export/&Keymap", "out/x", "kcf/p.kcf", "hid out pic", "out/x.kcf", "p");
        row("export overview", ProfileP, "&Export/&Overview...", "out/x", "hid/p.pdf", "out kcf pic", "out/x.pdf",
            "p");
        row("print to a file", ProfileP, "&Print...", "out/x.pdf", "", "hid kcf pic", "out/x.pdf", "p");
        row("print cancelled", ProfileP, "&Print...", "", "", "hid kcf pic", "", "p");
    }
    void menuCommands()
    {
        QFETCH(int, start);
        QFETCH(QString, answer);
        QFETCH(QString, asked);
        QFETCH(QString, written);
        QFETCH(bool, keymap);
        Settings preset;
        preset.HidPath = Folder(u"hid"_s);
        preset.KcfPath = Folder(u"kcf"_s);
        preset.PicPath = Folder(u"pic"_s);
        SettingsStore(Path(u"settings.ini"_s)).WriteOnExit(preset);
        MainWindow &window = Start();
        const QString out = Folder(u"out"_s);
        QVERIFY(!MakeKeymap(out + u"/k.kcf"_s).isEmpty() && !MakePicture(out + u"/Photo.JPG"_s, 24, 32).isEmpty());
        QString profile = out + u"/p.hid"_s;
        QVERIFY(window.Doc().SaveProfile(profile, true));
        if (start == KeymapK)
            window.Doc().Open(out + u"/k.kcf"_s);
        if (start == ProfileP)
            QVERIFY(window.Doc().ImportPicture(out + u"/Photo.JPG"_s) && window.Doc().SaveAs(profile));
        EditComment(PhoneKeys::Up, u"edited"_s);
        const qsizetype files = QDir(out).entryList(QDir::Files).size()
                                + (written.isEmpty() || QFile::exists(Path(written)) ? 0 : 1);
        m_dialogs->NextOpen = m_dialogs->NextSave = m_dialogs->PrintTo = answer.isEmpty() ? QString() : Path(answer);
        m_dialogs->NextAnswer = EditorDialogs::Answer::No;

        QFETCH(QString, menu);
        QPushButton *button = nullptr;
        for (QPushButton *candidate : {window.SaveButton(), window.LoadPictureButton()})
            button = candidate->text() == menu ? candidate : button;
        QAction *entry = MenuAction(*window.menuBar(), u"&File/"_s + menu);
        QVERIFY(entry || button);
        entry ? entry->trigger() : button->click();
        QCOMPARE(m_dialogs->LastOpenFolder + m_dialogs->LastSaveProposal, asked.isEmpty() ? asked : Path(asked));
        QCOMPARE(m_dialogs->Questions, menu.endsWith(u"&Open"_s) ? 1 : 0);
        QCOMPARE(m_dialogs->Messages.size(), 0);
        QFETCH(QString, folders);
        QStringList expected;
        for (const QString &name : folders.split(u' '))
            expected << Path(name);
        const Settings &settings = window.CurrentSettings();
        QCOMPARE((QStringList{settings.HidPath, settings.KcfPath, settings.PicPath}), expected);
        QCOMPARE(QDir(out).entryList(QDir::Files).size(), files);
        if (!written.isEmpty()) // holds the document: its keys, its picture, or its overview
            QVERIFY(ReadAll(Path(written))
                        .contains(written.endsWith(u".jpg"_s)   ? ReadAll(out + u"/Photo.JPG"_s)
                                  : written.endsWith(u".pdf"_s) ? "%%EOF"_ba
                                                                : "<!-- edited"_ba));
        QTEST(window.windowTitle(), "caption");
        QCOMPARE(window.SaveButton()->text(), keymap ? u"Save Keymap"_s : u"Save Profile"_s);
        QCOMPARE(window.SendButton()->isEnabled(), !keymap);
        // The keys and the picture shown are the document's.
        QCOMPARE(window.Doc().Action(PhoneKeys::Digit(3)) == SampleKeymap()[PhoneKeys::Digit(3)],
                 start == KeymapK || answer.endsWith(u"k.kcf"_s));
        QCOMPARE(qobject_cast<PhoneScreen *>(window.Keypad()->ScreenArea())->Picture(), window.Doc().Picture().Image);
    }

    // Help > Readme: the desktop's viewer, or, when xdg-open finds none or
    // is missing, a window of the program's own.
    void readme_data()
    {
        QTest::addColumn<QString>("opener"); // what xdg-open does; "" = there is none
        QTest::addColumn<bool>("ownWindow");
        QTest::newRow("a viewer shows it") << u"exit 0"_s << false;
        QTest::newRow("no viewer for text files") << u"exit 3"_s << true;
        QTest::newRow("no xdg-open") << QString() << true;
    }
    void readme()
    {
        QFETCH(QString, opener);
        QFETCH(bool, ownWindow);
        const QByteArray path = qgetenv("PATH");
        const auto restore = qScopeGuard([&path] { qputenv("PATH", path); });
        QVERIFY(QDir().mkpath(Path(u"bin"_s)));
        if (!opener.isEmpty())
            QVERIFY(WriteFile(Path(u"bin/xdg-open"_s), "#!/bin/sh\n" + opener.toLatin1() + '\n')
                    && QFile::setPermissions(Path(u"bin/xdg-open"_s), QFile::ReadOwner | QFile::ExeOwner));
        qputenv("PATH", QFile::encodeName(Path(u"bin"_s)));
        MainWindow &window = Start();
        MenuAction(*window.menuBar(), u"&Help/&Readme"_s)->trigger();
        QTRY_VERIFY(!window.findChild<QProcess *>()); // xdg-open has answered
        QCOMPARE(window.findChild<QPlainTextEdit *>(u"readme"_s) != nullptr, ownWindow);
    }

    // The chooser shows the selected template's keys; OK, after the save
    // question, opens it as an unnamed profile on the default picture, saved
    // until the first edit. Abort asks nothing and changes nothing.
    void newFromTemplate()
    {
        MainWindow &window = Start();
        QVERIFY(window.Doc().Open(MakeKeymap(Path(u"k.kcf"_s))));
        EditComment(PhoneKeys::Up, u"edited"_s);
        for (const bool chosen : {false, true}) {
            QString shown; // the action and comment of the key "#"
            OnNextModal([chosen, &shown](QWidget *modal) {
                auto *chooser = qobject_cast<TemplateChooser *>(modal);
                chooser->TemplateList()->setCurrentItem(chooser->TemplateList()->findItems(u"Mouse"_s, {}).value(0));
                const QTreeWidgetItem *hash = chooser->KeyList()->topLevelItem(PhoneKeys::Hash);
                shown = hash->text(1) + u'|' + hash->text(2) + UnnamedFocusable(chooser).join(u',');
                chosen ? chooser->accept() : chooser->reject();
            });
            MenuAction(*window.menuBar(), u"&File/&New from template..."_s)->trigger();
            QCOMPARE(shown, u"Escape|Close a menu (Esc)"_s);
            QCOMPARE(window.Doc().CurrentFile().isEmpty(), chosen);
            QCOMPARE(m_dialogs->Questions, chosen ? 1 : 0);
        }
        Keymap mouse;
        QVERIFY(!ReadKeymapText(mouse, QFINDTESTDATA("../../templates/Mouse.kcf"), false));
        QVERIFY(window.Doc().CurrentKeymap() == mouse);
        QVERIFY(window.Doc().IsSaved() && !window.Doc().Picture().Image.isNull());
        QCOMPARE(window.windowTitle(), u"Unnamed - Padmapper"_s);
    }

    // A name typed without extension into the file dialog itself gets the
    // filter's extension.
    void saveDialogsCompleteTheTypedName_data()
    {
        QTest::addColumn<bool>("keymap");
        QTest::addColumn<QString>("written");
        QTest::newRow("export picture") << false << u"exported.png"_s;
        QTest::newRow("save as of a keymap, then save") << true << u"exported.kcf"_s;
    }
    void saveDialogsCompleteTheTypedName()
    {
        QFETCH(bool, keymap);
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        MainWindow &window = Start();
        const QString folder = Folder(QString::fromLatin1(QTest::currentDataTag()));
        if (keymap)
            window.OpenFile(MakeKeymap(folder + u"/k.kcf"_s));
        m_dialogs->RealSaveDialog = true;
        OnNextModal([&](QWidget *modal) {
            auto *dialog = qobject_cast<QFileDialog *>(modal);
            dialog->setDirectory(folder);
            auto *name = dialog->findChild<QLineEdit *>(u"fileNameEdit"_s);
            name->clear();
            QTest::keyClicks(name, u"exported"_s);
            QTest::keyClick(name, Qt::Key_Return);
        });
        if (keymap)
            QVERIFY(window.SaveAs() && window.Save());
        else
            window.ExportPicture();
        QTEST(QDir(folder).entryList({u"exported*"_s}).join(u' '), "written");
    }

    // Through real drop events, as the window receives them; the first file
    // counts. A profile or keymap dropped on changes asks first: Cancel keeps
    // them, Yes saves them. What each kind of file does is the document's test.
    void droppedFile_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("caption");
        QTest::newRow("profile, Cancel") << u"drop.hid"_s << int(EditorDialogs::Answer::Cancel) << u"Unnamed"_s;
        QTest::newRow("profile, No") << u"drop.hid"_s << int(EditorDialogs::Answer::No) << u"drop"_s;
        QTest::newRow("profile, Yes") << u"drop.hid"_s << int(EditorDialogs::Answer::Yes) << u"drop"_s;
        QTest::newRow("keymap, Cancel") << u"k.kcf"_s << int(EditorDialogs::Answer::Cancel) << u"Unnamed"_s;
        QTest::newRow("picture: no question") << u"p.png"_s << -1 << u"Unnamed"_s;
    }
    void droppedFile()
    {
        QFETCH(QString, file);
        QFETCH(int, answer);
        MainWindow &window = Start();
        QString path = Path(u"drop.hid"_s);
        QVERIFY(window.Doc().SaveProfile(path, true) && !MakeKeymap(Path(u"k.kcf"_s)).isEmpty()
                && !MakePicture(Path(u"p.png"_s), 8, 8).isEmpty());
        EditComment(PhoneKeys::Digit1, u"edited"_s);
        m_dialogs->NextAnswer = EditorDialogs::Answer(answer);
        m_dialogs->NextSave = Path(u"kept"_s);
        QFile::remove(Path(u"kept.hid"_s));
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(Path(file)), QUrl::fromLocalFile(Path(u"second.hid"_s))});
        // Events start accepted; the window must say yes itself.
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QCoreApplication::sendEvent(&window, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        drop.ignore();
        QCoreApplication::sendEvent(&window, &drop);
        QVERIFY(drop.isAccepted());
        QTEST(window.windowTitle().section(u" - "_s, 0, 0), "caption");
        QCOMPARE(m_dialogs->Questions, answer < 0 ? 0 : 1);
        QCOMPARE(window.Doc().Action(PhoneKeys::Digit1).Comment == u"edited"_s,
                 answer < 0 || answer == int(EditorDialogs::Answer::Cancel));
        QCOMPARE(QFile::exists(Path(u"kept.hid"_s)), answer == int(EditorDialogs::Answer::Yes));
    }

    // Opened files are listed, the latest first; one chosen opens as Open
    // does, one that is gone leaves the list with a message.
    void recentFiles()
    {
        MainWindow &window = Start();
        QString profile = Path(u"p.hid"_s);
        QVERIFY(window.Doc().SaveProfile(profile, true) && !MakeKeymap(Path(u"k.kcf"_s)).isEmpty());
        window.OpenFile(profile);
        window.OpenFile(Path(u"k.kcf"_s));
        EditComment(PhoneKeys::Digit1, u"edited"_s);
        QMenu *recent = MenuAction(*window.menuBar(), u"&File/&Recent"_s)->menu();
        QCOMPARE(recent->actions().at(1)->text(), u"&2 "_s + profile);
        recent->actions().at(1)->trigger();
        QCOMPARE(m_dialogs->Questions, 1);
        QCOMPARE(window.windowTitle(), u"p - Padmapper"_s);
        QCOMPARE(SettingsStore(Path(u"settings.ini"_s)).String(u"RecentFile1"_s), profile);
        QVERIFY(QFile::remove(Path(u"k.kcf"_s)));
        recent->actions().at(1)->trigger();
        QCOMPARE(m_dialogs->Shown.last(),
                 Path(u"k.kcf"_s) + u" is no longer there. It was taken off the list of recent files."_s);
        QCOMPARE(recent->actions().size(), 1);
    }

    void keymapViewFollowsEdits()
    {
        MainWindow &window = Start();
        MenuAction(*window.menuBar(), u"&File/&View Keymap"_s)->trigger();
        KeymapView *view = window.KeymapWindow();
        QVERIFY(view && view->isVisible());
        QVERIFY(view->Text().startsWith(u"<SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION"_s));
        EditComment(PhoneKeys::Hash, u"Raute"_s);
        QVERIFY(view->Text().contains(u"<!-- Raute  -->"_s));
    }

    // The readme goes with the language file's name, whatever its folder and case.
    void readmeFollowsTheLanguage()
    {
        for (const auto &[language, readme] : {std::pair(u"/usr/share/padmapper/Deutsch.lng"_s, u"Readme.txt"_s),
                                               {u"C:\\Programme\\PMX\\Russian.lng"_s, u"Readme_ru.txt"_s},
                                               {u"swedish.lng"_s, u"Readme_sv.txt"_s},
                                               {u"/x/Klingon.lng"_s, u"Readme_en.txt"_s}})
            QCOMPARE(ReadmeFileName(language), readme);
    }
};

QTEST_MAIN(tst_FileCommands)
#include "tst_filecommands.moc"
