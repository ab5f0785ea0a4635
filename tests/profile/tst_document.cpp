// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keymapwriter.h"
#include "profile/document.h"
#include "profile/tempfiles.h"

#include "../testfiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <map>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

enum Operation {
    Open,
    Start,
    Template,
    Drop,
    ImportPicture,
    ImportKeymap,
    Save,
    SaveAs,
    ExportPicture,
    ExportKeymap,
    Edit
};
// What the document holds before: the default profile p.hid as template,
// nothing at all, the profile p.hid or the keymap k.kcf.
enum StartState { Unnamed, Blank, OnProfile, OnKeymap };

// One command on a document, and what it leaves. The comment on key "1" names
// the file the keys came from ("edited" for an edit); the file names are in
// the test's folder.
struct Row
{
    const char *Name;
    StartState Start;
    bool Edited; // before the command
    Operation Command;
    const char *File;
    bool Saved;
    const char *Current; // CurrentFile
    bool KeymapKind;
    const char *Picture; // its name
    const char *Keys;
    int Messages = 0;
    const char *Written = ""; // holds the document's keymap or picture
};

const Row Rows[] = {
    {"open profile", Unnamed, true, Open, "p.hid", true, "p.hid", false, "p.png", "p.hid"},
    {"open tar archive", OnKeymap, true, Open, "t.tar", true, "t.tar", false, "t.png", "t.tar"},
    {"open keymap: IsSaved stays changed", OnProfile, true, Open, "k.kcf", false, "k.kcf", true, "", "k.kcf"},
    {"open keymap: IsSaved stays saved", OnProfile, false, Open, "k.kcf", true, "k.kcf", true, "", "k.kcf"},
    {"open keymap with LF line ends: no keys, a note", OnProfile, true, Open, "lf.kcf", false, "lf.kcf", true, "", "",
     1},
    {"open picture: left alone", OnProfile, true, Open, "pic.png", false, "p.hid", false, "p.png", "edited"},
    {"open missing profile", OnProfile, true, Open, "no.hid", false, "p.hid", false, "p.png", "edited", 1},
    {"open missing keymap", OnProfile, true, Open, "no.kcf", false, "p.hid", false, "p.png", "edited", 1},
    {"start with profile", Unnamed, true, Start, "p.hid", true, "p.hid", false, "p.png", "p.hid"},
    {"start with keymap", Unnamed, true, Start, "k.kcf", true, "k.kcf", true, "p.png", "k.kcf"},
    {"start with missing file", OnKeymap, true, Start, "no.kcf", true, "", false, "p.png", "p.hid"},
    {"start with text file", OnKeymap, true, Start, "notes.txt", true, "", false, "p.png", "p.hid"},
    {"start with unreadable keymap", OnKeymap, true, Start, "dir.kcf", true, "", false, "p.png", "p.hid", 1},
    {"template", OnKeymap, true, Template, "p.hid", true, "", false, "p.png", "p.hid"},
    {"drop profile", OnKeymap, true, Drop, "p.hid", true, "p.hid", false, "p.png", "p.hid"},
    {"drop keymap: keys only", OnProfile, false, Drop, "k.kcf", true, "p.hid", false, "p.png", "k.kcf"},
    {"drop picture on keymap", OnKeymap, true, Drop, "pic.png", false, "", false, "pic.png", "edited"},
    {"drop picture on profile", OnProfile, false, Drop, "pic.png", true, "p.hid", false, "pic.png", "p.hid"},
    {"drop text file", OnKeymap, false, Drop, "notes.txt", true, "k.kcf", true, "", "k.kcf"},
    {"drop picture that is none: kept", OnKeymap, false, Drop, "bad.png", true, "k.kcf", true, "", "k.kcf", 1},
    {"drop truncated picture: kept", OnProfile, true, Drop, "cut.png", false, "p.hid", false, "p.png", "edited", 1},
    {"import picture on keymap", OnKeymap, false, ImportPicture, "pic.png", false, "", false, "pic.png", "k.kcf"},
    {"import picture on profile", OnProfile, false, ImportPicture, "pic.png", false, "p.hid", false, "pic.png",
     "p.hid"},
    {"import keymap", OnProfile, false, ImportKeymap, "k.kcf", false, "p.hid", false, "p.png", "k.kcf"},
    {"import missing keymap", OnProfile, false, ImportKeymap, "no.kcf", true, "p.hid", false, "p.png", "p.hid", 1},
    {"save profile", OnProfile, true, Save, "", true, "p.hid", false, "p.png", "edited", 0, "p.hid"},
    {"save keymap", OnKeymap, true, Save, "", true, "k.kcf", true, "", "edited", 0, "k.kcf"},
    {"save unnamed: no name, no message", Unnamed, true, Save, "", false, "", false, "p.png", "edited"},
    {"save as profile gets .hid", Unnamed, true, SaveAs, "o", true, "o.hid", false, "p.png", "edited", 0, "o.hid"},
    {"save as keymap", OnKeymap, true, SaveAs, "o.kcf", true, "o.kcf", true, "", "edited", 0, "o.kcf"},
    {"save as profile without picture", Blank, true, SaveAs, "o", false, "", false, "", "edited", 1},
    {"save as into missing folder", OnProfile, true, SaveAs, "no/o", false, "p.hid", false, "p.png", "edited", 1},
    {"export picture", OnProfile, true, ExportPicture, "o.png", false, "p.hid", false, "p.png", "edited", 0, "o.png"},
    {"export keymap", Unnamed, false, ExportKeymap, "o.kcf", true, "", false, "p.png", "p.hid", 0, "o.kcf"},
    {"export to missing folder", OnKeymap, false, ExportKeymap, "no/o", true, "k.kcf", true, "", "k.kcf", 1},
    {"edit", OnKeymap, false, Edit, "", false, "k.kcf", true, "", "edited"},
};

KeyAction Marked(const QString &origin)
{
    return KeyAction{false, 0, 0, 65, origin};
}

// Steps on p.hid (or k.kcf when the row's steps start with "kcf"), then what
// is left: IsSaved, key "1"'s comment, the picture's name and CurrentFile. "a"
// and "b" type a letter into the comment, "key" changes the key instead.
struct HistoryRow
{
    const char *Name;
    const char *Steps;
    bool Saved;
    const char *Keys;
    const char *Picture = "p.png";
    const char *Current = "p.hid";
};

const HistoryRow HistoryRows[] = {
    {"undo an edit: saved again", "key undo", true, "p.hid"},
    {"typing is one step per key", "a b undo", true, "p.hid"},
    {"undo past the save: changed", "a save key undo undo", false, "p.hid"},
    {"redo to the save: saved", "a save undo redo", true, "p.hida"},
    {"a drop leaves IsSaved, its undo too", "dropkcf key undo", false, "k.kcf"},
    {"redo a drop", "dropkcf undo redo", true, "k.kcf"},
    {"undo a picture import on a keymap", "kcf importpic undo", true, "k.kcf", "", "k.kcf"},
    {"undo a keymap import", "importkcf undo", true, "p.hid"},
    {"opening starts a new history", "key open undo", true, "p.hid"},
    {"a keymap opened over changes is no saved state", "key kcf key undo undo", false, "k.kcf", "", "k.kcf"},
    {"undo after Save As keeps the new name", "a saveas undo", false, "p.hid", "p.png", "o.hid"},
    {"redo to Save As: saved under the new name", "a saveas undo redo", true, "p.hida", "p.png", "o.hid"},
    {"a picture's undo after Save As keeps it", "kcf importpic saveas undo", false, "k.kcf", "", "o.hid"},
};

} // namespace

class tst_Document : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString Path(const char *name) const { return *name ? m_dir->filePath(QString::fromLatin1(name)) : QString(); }

private slots:
    // p.hid with the picture p.png, t.tar alike, k.kcf and lf.kcf (LF line
    // ends), a picture, a text file and a folder dir.kcf.
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(!MakePicture(Path("p.png"), 24, 32).isEmpty() && QFile::copy(Path("p.png"), Path("pic.png")));
        for (const char *name : {"p.hid", "t.tar"}) {
            Document document;
            QVERIFY(document.AdoptPicture(Path("p.png")));
            document.SetAction(PhoneKeys::Digit1, Marked(QString::fromLatin1(name)));
            QString path = Path(name);
            QVERIFY(document.SaveProfile(path, true));
        }
        Keymap keymap;
        keymap[PhoneKeys::Digit1] = Marked(u"k.kcf"_s);
        QVERIFY(WriteKeymapText(keymap, Path("k.kcf")) && WriteFile(Path("notes.txt"), "notes"));
        QVERIFY(WriteFile(Path("lf.kcf"), ReadAll(Path("k.kcf")).replace("\r\n", "\n")));
        QVERIFY(QDir().mkpath(Path("dir.kcf")));
        QVERIFY(WriteFile(Path("cut.png"), ReadAll(Path("pic.png")).left(200)) && WriteFile(Path("bad.png"), "none"));
    }
    void cleanupTestCase() { DeleteTempFiles(); }

    void commands_data()
    {
        QTest::addColumn<int>("row");
        for (const Row &row : Rows)
            QTest::newRow(row.Name) << int(&row - Rows);
    }
    void commands()
    {
        QFETCH(int, row);
        const Row &r = Rows[row];
        Document document;
        if (r.Start == Unnamed || r.Start == Blank)
            document.OpenTemplate(r.Start == Unnamed ? Path("p.hid") : QString());
        else
            QVERIFY(document.Open(Path(r.Start == OnProfile ? "p.hid" : "k.kcf")));
        if (r.Edited)
            document.SetAction(PhoneKeys::Digit1, Marked(u"edited"_s));
        int messages = 0;
        connect(&document, &Document::MessageRaised, this, [&messages] { ++messages; });

        const QString path = Path(r.File);
        switch (r.Command) {
        case Open:
            document.Open(path);
            break;
        case Start:
            // As the window starts: the default profile when the file is not taken.
            if (!document.OpenAtStart(path))
                document.OpenTemplate(Path("p.hid"));
            break;
        case Template:
            document.OpenTemplate(path);
            break;
        case Drop:
            document.Drop(path);
            break;
        case ImportPicture:
            QVERIFY(document.ImportPicture(path));
            break;
        case ImportKeymap:
            document.ImportKeymap(path);
            break;
        case Save:
            (void)document.Save();
            break;
        case SaveAs:
            (void)document.SaveAs(path);
            break;
        case ExportPicture:
            (void)document.ExportPicture(path);
            break;
        case ExportKeymap:
            (void)document.ExportKeymap(path);
            break;
        case Edit:
            document.SetAction(PhoneKeys::Digit1, Marked(u"edited"_s));
            break;
        }

        QCOMPARE(document.IsSaved(), r.Saved);
        QCOMPARE(document.CurrentFile(), Path(r.Current));
        QCOMPARE(document.IsKeymapDocument(), r.KeymapKind);
        const QString name = QString::fromLatin1(r.Current).section(u'.', 0, -2);
        QCOMPARE(document.Caption(), (name.isEmpty() ? u"Unnamed"_s : name) + u" - Padmapper"_s);
        QCOMPARE(document.Picture().PictureName, QString::fromLatin1(r.Picture));
        QCOMPARE(document.Action(PhoneKeys::Digit1).Comment, QString::fromLatin1(r.Keys));
        QCOMPARE(messages, r.Messages);
        const QString written = Path(r.Written);
        if (written.endsWith(u".png"_s))
            QCOMPARE(ReadAll(written), ReadAll(document.Picture().PictureTempPath));
        else if (!written.isEmpty())
            QVERIFY(ReadAll(written).contains(WriteKeymapText(document.CurrentKeymap()).toLatin1()));
    }

    void history_data()
    {
        QTest::addColumn<int>("row");
        for (const HistoryRow &row : HistoryRows)
            QTest::newRow(row.Name) << int(&row - HistoryRows);
    }
    void history()
    {
        QFETCH(int, row);
        const HistoryRow &r = HistoryRows[row];
        Document document;
        QVERIFY(document.Open(Path("p.hid")));
        for (const QString &step : QString::fromLatin1(r.Steps).split(u' ')) {
            KeyAction action = document.Action(PhoneKeys::Digit1);
            if (step.size() == 1)
                action.Comment += step;
            else if (step == "key"_L1)
                ++action.KeyCode;
            if (step.size() == 1 || step == "key"_L1)
                document.SetAction(PhoneKeys::Digit1, action);
            const std::map<QString, std::function<void()>> commands = {
                {u"undo"_s, [&] { document.Undo(); }},
                {u"redo"_s, [&] { document.Redo(); }},
                {u"save"_s, [&] { QVERIFY(document.Save()); }},
                {u"saveas"_s, [&] { QVERIFY(document.SaveAs(Path("o.hid"))); }},
                {u"open"_s, [&] { document.Open(Path("p.hid")); }},
                {u"kcf"_s, [&] { document.Open(Path("k.kcf")); }},
                {u"dropkcf"_s, [&] { document.Drop(Path("k.kcf")); }},
                {u"importpic"_s, [&] { QVERIFY(document.ImportPicture(Path("pic.png"))); }},
                {u"importkcf"_s, [&] { QVERIFY(document.ImportKeymap(Path("k.kcf"))); }},
            };
            if (const auto command = commands.find(step); command != commands.end())
                command->second();
        }
        QCOMPARE(document.IsSaved(), r.Saved);
        QCOMPARE(document.Action(PhoneKeys::Digit1).Comment, QString::fromLatin1(r.Keys));
        QCOMPARE(document.Picture().PictureName, QString::fromLatin1(r.Picture));
        QCOMPARE(document.CurrentFile(), Path(r.Current));
    }
};

QTEST_GUILESS_MAIN(tst_Document)
#include "tst_document.moc"
