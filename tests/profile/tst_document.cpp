// SPDX-License-Identifier: GPL-3.0-or-later
#include "keymap/keymapwriter.h"
#include "profile/document.h"
#include "profile/tempfiles.h"

#include "../testfiles.h"

#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

enum Operation {
    Open, Start, Template, Drop, ImportPicture, ImportKeymap, Save, SaveAs, ExportPicture, ExportKeymap, Edit
};
// What the document holds before: the default profile as template, nothing
// at all, the profile p.hid or the keymap k.kcf; optionally edited since.
enum StartState { Unnamed, Blank, OnProfile, OnKeymap };

// The comment on key "1" names the file the keys came from.
KeyAction Marked(const QString &origin)
{
    return KeyAction{false, 0, 0, 65, origin};
}
void Mark(Document &document, const QString &origin)
{
    document.SetAction(PhoneKeys::Digit1, Marked(origin));
}

} // namespace

class tst_Document : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString Path(const QString &name) const { return name.isEmpty() ? QString() : m_dir->filePath(name); }

private slots:
    // p.hid with the picture p.png, t.tar alike, k.kcf, a picture and a text file.
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QImage image(24, 32, QImage::Format_RGB32);
        image.fill(Qt::blue);
        QVERIFY(image.save(Path(u"p.png"_s)) && image.save(Path(u"pic.png"_s)));
        for (const QString &name : {u"p.hid"_s, u"t.tar"_s}) {
            Document document;
            QVERIFY(document.AdoptPicture(Path(u"p.png"_s)));
            Mark(document, name);
            QString path = Path(name);
            QVERIFY(document.SaveProfile(path, true));
        }
        Keymap keymap;
        keymap[PhoneKeys::Digit1] = Marked(u"k.kcf"_s);
        QVERIFY(WriteKeymapText(keymap, Path(u"k.kcf"_s)) && WriteFile(Path(u"notes.txt"_s), "notes"));
    }
    void cleanupTestCase() { DeleteTempFiles(); }

    void commands_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<bool>("edited");
        QTest::addColumn<int>("operation");
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("saved");
        QTest::addColumn<QString>("current"); // CurrentFile
        QTest::addColumn<bool>("keymapKind");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("picture"); // its name
        QTest::addColumn<QString>("keys"); // the file key "1" came from
        QTest::addColumn<int>("messages");
        QTest::addColumn<QString>("written"); // holds the document's keymap or picture

        const auto row = [](const char *name, StartState start, bool edited, Operation operation,
                            const QString &file, bool saved, const QString &current, bool keymapKind,
                            const QString &picture, const QString &keys, int messages = 0,
                            const QString &written = {}) {
            const QString caption
                = (current.isEmpty() ? u"Unnamed"_s : current.section(u'.', 0, -2)) + u" - Padmapper"_s;
            QTest::newRow(name) << int(start) << edited << int(operation) << file << saved << current
                                << keymapKind << caption << picture << keys << messages << written;
        };
        const QString p = u"p.hid"_s, t = u"t.tar"_s, k = u"k.kcf"_s, png = u"p.png"_s, pic = u"pic.png"_s;
        const QString txt = u"notes.txt"_s, ed = u"edited"_s, none;
        const QString oHid = u"o.hid"_s, oKcf = u"o.kcf"_s, oPng = u"o.png"_s;
        row("open profile", Unnamed, true, Open, p, true, p, false, png, p);
        row("open tar archive", OnKeymap, true, Open, t, true, t, false, u"t.png"_s, t);
        row("open keymap: IsSaved stays changed", OnProfile, true, Open, k, false, k, true, none, k);
        row("open keymap: IsSaved stays saved", OnProfile, false, Open, k, true, k, true, none, k);
        row("open picture: left alone", OnProfile, true, Open, pic, false, p, false, png, ed);
        row("open missing profile", OnProfile, true, Open, u"no.hid"_s, false, p, false, png, ed, 1);
        row("start with profile", Unnamed, true, Start, p, true, p, false, png, p);
        row("start with keymap", Unnamed, true, Start, k, true, k, true, png, k);
        row("start with missing file", OnKeymap, true, Start, u"no.kcf"_s, true, none, false, png, p);
        row("start with text file", OnKeymap, true, Start, txt, true, none, false, png, p);
        row("template", OnKeymap, true, Template, p, true, none, false, png, p);
        row("drop profile", OnKeymap, true, Drop, p, true, p, false, png, p);
        row("drop keymap: keys only", OnProfile, false, Drop, k, true, p, false, png, k);
        row("drop picture on keymap", OnKeymap, true, Drop, pic, false, none, false, pic, ed);
        row("drop picture on profile", OnProfile, false, Drop, pic, true, p, false, pic, p);
        row("drop text file", OnKeymap, false, Drop, txt, true, k, true, none, k);
        row("import picture on keymap", OnKeymap, false, ImportPicture, pic, false, none, false, pic, k);
        row("import picture on profile", OnProfile, false, ImportPicture, pic, false, p, false, pic, p);
        row("import keymap", OnProfile, false, ImportKeymap, k, false, p, false, png, k);
        row("import missing keymap", OnProfile, false, ImportKeymap, u"no.kcf"_s, true, p, false, png, p, 1);
        row("save profile", OnProfile, true, Save, none, true, p, false, png, ed, 0, p);
        row("save keymap", OnKeymap, true, Save, none, true, k, true, none, ed, 0, k);
        row("save unnamed: no name, no message", Unnamed, true, Save, none, false, none, false, png, ed);
        row("save as profile gets .hid", Unnamed, true, SaveAs, u"o"_s, true, oHid, false, png, ed, 0, oHid);
        row("save as keymap", OnKeymap, true, SaveAs, oKcf, true, oKcf, true, none, ed, 0, oKcf);
        row("save as profile without picture", Blank, true, SaveAs, u"o"_s, false, none, false, none, ed, 1);
        row("save as into missing folder", OnProfile, true, SaveAs, u"no/o"_s, false, p, false, png, ed, 1);
        row("export picture", OnProfile, true, ExportPicture, oPng, false, p, false, png, ed, 0, oPng);
        row("export keymap", Unnamed, false, ExportKeymap, oKcf, true, none, false, png, p, 0, oKcf);
        row("export to missing folder", OnKeymap, false, ExportKeymap, u"no/o"_s, true, k, true, none, k, 1);
        row("edit", OnKeymap, false, Edit, none, false, k, true, none, ed);
    }
    void commands()
    {
        QFETCH(int, start);
        QFETCH(bool, edited);
        QFETCH(int, operation);
        QFETCH(QString, file);
        Document document;
        if (start == Unnamed || start == Blank)
            document.OpenTemplate(start == Unnamed ? Path(u"p.hid"_s) : QString());
        else
            QVERIFY(document.Open(Path(start == OnProfile ? u"p.hid"_s : u"k.kcf"_s)));
        if (edited)
            Mark(document, u"edited"_s);
        QStringList messages;
        connect(&document, &Document::MessageRaised, this,
                [&messages](const DocumentMessage &message) { messages << message.Text; });

        const QString path = Path(file);
        switch (operation) {
        case Open: document.Open(path); break;
        case Start:
            // As the window starts: the default profile when the file is not taken.
            if (!document.OpenAtStart(path))
                document.OpenTemplate(Path(u"p.hid"_s));
            break;
        case Template: document.OpenTemplate(path); break;
        case Drop: document.Drop(path); break;
        case ImportPicture: QVERIFY(document.ImportPicture(path)); break;
        case ImportKeymap: document.ImportKeymap(path); break;
        case Save: (void)document.Save(); break;
        case SaveAs: (void)document.SaveAs(path); break;
        case ExportPicture: (void)document.ExportPicture(path); break;
        case ExportKeymap: (void)document.ExportKeymap(path); break;
        case Edit: Mark(document, u"edited"_s); break;
        }

        QTEST(document.IsSaved(), "saved");
        QFETCH(QString, current);
        QCOMPARE(document.CurrentFile(), Path(current));
        QTEST(document.IsKeymapDocument(), "keymapKind");
        QTEST(document.Caption(), "caption");
        QTEST(document.Picture().PictureName, "picture");
        QTEST(document.Action(PhoneKeys::Digit1).Comment, "keys");
        QTEST(int(messages.size()), "messages");
        QFETCH(QString, written);
        if (written.endsWith(u".png"_s))
            QCOMPARE(ReadAll(Path(written)), ReadAll(document.Picture().PictureTempPath));
        else if (!written.isEmpty())
            QVERIFY(ReadAll(Path(written)).contains(WriteKeymapText(document.CurrentKeymap()).toLatin1()));
    }
};

QTEST_GUILESS_MAIN(tst_Document)
#include "tst_document.moc"
