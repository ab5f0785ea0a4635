// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/aboutdialog.h"
#include "editor/keymapview.h"
#include "editor/phonekeypad.h"
#include "keymap/keymapwriter.h"
#include "profile/document.h"
#include "profile/tar.h"
#include "mainwindowharness.h"
#include "settings/readme.h"

#include "../testfiles.h"

#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

Keymap SampleKeymap()
{
    Keymap keymap;
    keymap.ResetToPhoneDefaults();
    keymap[PhoneKeys::Digit(3)] = KeyAction{false, 0, 4, 9, u"Alt+Tab"_s};
    return keymap;
}

} // namespace

class tst_FileCommands : public QObject, MainWindowHarness
{
    Q_OBJECT

private:
    QString Folder(const QString &name) const
    {
        QDir().mkpath(Path(name));
        return Path(name);
    }

    QString MakePicture(const QString &path, Qt::GlobalColor colour)
    {
        QImage image(24, 32, QImage::Format_RGB32);
        image.fill(colour);
        return image.save(path) ? path : QString();
    }

    QString MakeKeymap(const QString &path)
    {
        return WriteKeymapText(SampleKeymap(), path) ? path : QString();
    }

private slots:
    void cleanup() { Close(); }

    void profileRoundTrip()
    {
        MainWindow &window = Start();
        EditComment(PhoneKeys::Digit(8), u"Runter"_s);
        m_dialogs->NextSave = Folder(u"profiles"_s) + u"/Games"_s;
        QVERIFY(window.SaveAs());
        QCOMPARE(window.Doc().CurrentFile(), Path(u"profiles/Games.hid"_s));
        QVERIFY(window.Doc().IsSaved());
        QCOMPARE(window.windowTitle(), u"Games - Padmapper"_s);
        QCOMPARE(window.CurrentSettings().HidPath, Path(u"profiles"_s));

        // Open it again in a fresh document.
        EditComment(PhoneKeys::Digit(8), u"lost"_s);
        m_dialogs->NextAnswer = EditorDialogs::Answer::No;
        m_dialogs->NextOpen = Path(u"profiles/Games.hid"_s);
        window.Open();
        QCOMPARE(m_dialogs->Questions, 1);
        QCOMPARE(window.Doc().Action(PhoneKeys::Digit(8)).Comment, u"Runter"_s);
        QVERIFY(window.Doc().IsSaved());

        // Save writes to the same file.
        EditComment(PhoneKeys::Digit(8), u"Unten"_s);
        QVERIFY(window.Save());
        QVERIFY(window.Doc().IsSaved());
        cTar tar;
        QVERIFY(tar.GetContents(Path(u"profiles/Games.hid"_s)));
        QVERIFY(tar.FileToArray(2).contains("<!-- Unten  -->"));
    }

    void keymapDocumentRoundTrip()
    {
        MainWindow &window = Start();
        const QString keymap = MakeKeymap(Folder(u"keymaps"_s) + u"/Work.kcf"_s);
        m_dialogs->NextOpen = keymap;
        window.Open();
        // Opening a keymap moves the profile folder and leaves the saved flag.
        QCOMPARE(window.CurrentSettings().HidPath, Path(u"keymaps"_s));
        QVERIFY(window.CurrentSettings().KcfPath.isEmpty());
        QCOMPARE(window.windowTitle(), u"Work - Padmapper"_s);
        QCOMPARE(window.SaveButton()->text(), u"Save Keymap"_s);
        QVERIFY(!window.SendButton()->isEnabled());
        QCOMPARE(window.Doc().CurrentKeymap(), SampleKeymap());
        // A keymap has no picture: the one shown so far goes, and cannot be exported.
        QVERIFY(window.Doc().Picture().PictureTempPath.isEmpty());
        QVERIFY(qobject_cast<PhoneScreen *>(window.Keypad()->ScreenArea())->Picture().isNull());
        window.ExportPicture();
        QVERIFY(m_dialogs->LastSaveProposal.isEmpty());

        EditComment(PhoneKeys::Digit(3), u"Fenster"_s);
        QVERIFY(window.Save());
        QVERIFY(window.Doc().IsSaved());
        QVERIFY(ReadAll(keymap).contains("<!-- Fenster  -->\r\n"));
        QVERIFY(ReadAll(keymap).endsWith("</SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION>\r\n"));

        m_dialogs->NextSave = Folder(u"elsewhere"_s) + u"/Copy"_s;
        QVERIFY(window.SaveAs());
        QCOMPARE(window.Doc().CurrentFile(), Path(u"elsewhere/Copy.kcf"_s));
        QCOMPARE(window.CurrentSettings().KcfPath, Path(u"elsewhere"_s));
    }

    void importsAndExportsMoveTheirFolders()
    {
        MainWindow &window = Start();
        m_dialogs->NextOpen = MakePicture(Folder(u"pictures"_s) + u"/Photo.JPG"_s, Qt::green);
        window.ImportPicture();
        QCOMPARE(window.CurrentSettings().PicPath, Path(u"pictures"_s));
        QVERIFY(!window.Doc().IsSaved());
        QCOMPARE(window.Doc().Picture().PictureName, u"Photo.JPG"_s);

        m_dialogs->NextSave = Folder(u"out"_s) + u"/pic"_s;
        window.ExportPicture();
        QCOMPARE(m_dialogs->LastSaveProposal, Path(u"pictures/Unnamed.jpg"_s));
        QCOMPARE(ReadAll(Path(u"out/pic.jpg"_s)), ReadAll(Path(u"pictures/Photo.JPG"_s)));
        QCOMPARE(window.CurrentSettings().PicPath, Path(u"out"_s));

        m_dialogs->NextOpen = MakeKeymap(Folder(u"kcf"_s) + u"/In.kcf"_s);
        window.ImportKeymap();
        QCOMPARE(window.CurrentSettings().KcfPath, Path(u"kcf"_s));
        QCOMPARE(window.Doc().CurrentKeymap(), SampleKeymap());

        m_dialogs->NextSave = Folder(u"kcf-out"_s) + u"/Out"_s;
        window.ExportKeymap();
        QCOMPARE(m_dialogs->LastSaveProposal, Path(u"kcf/Unnamed.kcf"_s));
        QCOMPARE(ReadAll(Path(u"kcf-out/Out.kcf"_s)), WriteKeymapText(SampleKeymap()).toLatin1() + "\r\n");
        QCOMPARE(window.CurrentSettings().KcfPath, Path(u"kcf-out"_s));
    }

    void saveDialogsCompleteTheTypedName_data()
    {
        QTest::addColumn<int>("command");
        QTest::addColumn<QString>("written");
        QTest::newRow("export picture") << 0 << u"exported.png"_s;
        QTest::newRow("export keymap") << 1 << u"exported.kcf"_s;
        QTest::newRow("save as of a keymap, then save") << 2 << u"exported.kcf"_s;
    }
    void saveDialogsCompleteTheTypedName()
    {
        QFETCH(int, command);
        QFETCH(QString, written);
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        MainWindow &window = Start();
        const QString folder = Folder(QString::fromLatin1(QTest::currentDataTag()));
        if (command == 2)
            window.OpenFile(MakeKeymap(folder + u"/k.kcf"_s));
        m_dialogs->RealSaveDialog = true;
        // Types the name into the file dialog and presses Return, as a user does.
        OnNextModal([&](QWidget *modal) {
            auto *dialog = qobject_cast<QFileDialog *>(modal);
            dialog->setDirectory(folder);
            auto *name = dialog->findChild<QLineEdit *>(u"fileNameEdit"_s);
            name->clear();
            QTest::keyClicks(name, u"exported"_s);
            QTest::keyClick(name, Qt::Key_Return);
        });
        if (command == 0)
            window.ExportPicture();
        if (command == 1)
            window.ExportKeymap();
        if (command == 2)
            QVERIFY(window.SaveAs() && window.Save());
        QCOMPARE(QDir(folder).entryList({u"exported*"_s}), QStringList{written});
    }

    void cancelledDialogsChangeNothing()
    {
        MainWindow &window = Start();
        const Keymap before = window.Doc().CurrentKeymap();
        window.Open();
        window.ImportPicture();
        window.ImportKeymap();
        window.ExportKeymap();
        QVERIFY(!window.SaveAs());
        QVERIFY(window.Doc().IsSaved());
        QCOMPARE(window.Doc().CurrentKeymap(), before);
        QVERIFY(window.CurrentSettings().HidPath.isEmpty());
        QVERIFY(window.CurrentSettings().PicPath.isEmpty());
    }

    // Through real drop events, as the window receives them; the first file counts.
    void droppedFiles_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("caption");
        QTest::newRow("profile") << u"drop.hid"_s << u"drop - Padmapper"_s;
        QTest::newRow("picture on a keymap") << u"drop.bmp"_s << u"Unnamed - Padmapper"_s;
        QTest::newRow("anything else") << u"drop.txt"_s << u"k - Padmapper"_s;
    }
    void droppedFiles()
    {
        QFETCH(QString, file);
        QFETCH(QString, caption);
        MainWindow &window = Start();
        const QString path = Path(file);
        QString profile = path;
        if (file.endsWith(u".hid"_s)) // the default profile
            QVERIFY(window.Doc().SaveProfile(profile, true));
        else // a picture, whatever its name says
            QVERIFY(QFile::copy(MakePicture(Path(u"p.bmp"_s), Qt::yellow), path));
        window.OpenFile(MakeKeymap(Path(u"k.kcf"_s)));

        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path), QUrl::fromLocalFile(Path(u"second.hid"_s))});
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &drop);
        QVERIFY(drop.isAccepted());
        QCOMPARE(window.windowTitle(), caption);
    }

    void keymapViewFollowsEdits()
    {
        MainWindow &window = Start();
        window.ViewKeymap();
        KeymapView *view = window.KeymapWindow();
        QVERIFY(view && view->isVisible());
        QVERIFY(view->Text().startsWith(u"<SONY_ERICSSON_REMOTE_CONTROL_CONFIGURATION"_s));
        EditComment(PhoneKeys::Hash, u"Raute"_s);
        QVERIFY(view->Text().contains(u"<!-- Raute  -->"_s));
        QVERIFY(!window.Doc().IsSaved());
    }

    void readmeByLanguage_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("readme");
        QTest::newRow("German") << u"/usr/share/padmapper/Deutsch.lng"_s << u"Readme.txt"_s;
        QTest::newRow("Windows path") << u"C:\\Programme\\PMX\\Russian.lng"_s << u"Readme_ru.txt"_s;
        QTest::newRow("Swedish") << u"swedish.lng"_s << u"Readme_sv.txt"_s;
        QTest::newRow("unknown") << u"/x/Klingon.lng"_s << u"Readme_en.txt"_s;
        QTest::newRow("none") << QString() << u"Readme_en.txt"_s;
    }
    void aboutShowsTheBuildsVersionAndALink()
    {
        QCOMPARE(AboutDialog::VersionText(), u"Version:   "_s + QString::fromLatin1(PADMAPPER_VERSION));
        AboutDialog about;
        QVERIFY(about.LinkLabel()->openExternalLinks() && about.LinkLabel()->text().contains(u"href="_s));
    }

    void readmeByLanguage()
    {
        QFETCH(QString, language);
        QFETCH(QString, readme);
        QCOMPARE(ReadmeFileName(language), readme);
    }
};

QTEST_MAIN(tst_FileCommands)
#include "tst_filecommands.moc"
