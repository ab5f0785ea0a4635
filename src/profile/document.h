// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keymap.h"
#include "profilearchive.h"

#include <QDateTime>
#include <QImage>
#include <QObject>
#include <QString>
#include <QUndoStack>

#include <optional>

// A message for the user, worded and titled in the active language; the window
// shows it in one message box.
struct DocumentMessage
{
    enum class Icon { Critical, Exclamation };
    QString Text;
    QString Title;
    Icon Kind = Icon::Critical;
};

// What a file is taken for, by the text after the last "." of its name (any
// case): "hid" and "tar" are profiles, "kcf" bare keymaps, "jpg", "jpeg",
// "gif", "bmp" and "png" pictures.
enum class FileKind { Profile, Keymap, Picture, Other };
FileKind FileKindOf(const QString &path);

class DocumentStep;

// The one open document: the keymap of the 22 keys, the picture, the file it
// came from and whether it has unsaved changes. Edits and the file commands go
// through it, it keeps IsSaved itself and announces every change; the windows
// only ask for file names, show its messages and redraw.
//
// The document kind follows the file name: a name ending in ".kcf" is a bare
// keymap, anything else (an unnamed document too) a profile.
//
// IsSaved: every edit and every import clears it; opening a profile, the file named
// at start or the default profile, and a successful save set it. Opening a bare
// keymap, dropping a keymap or a picture and exporting leave it as it was.
//
// History: every edit, import and dropped keymap or picture is one step that
// Undo takes back and Redo makes again; typing a comment is one step per key.
// Opening a document starts a new history. A step undone or redone follows
// the rule of its command: edits and imports clear IsSaved, drops leave it;
// reaching the state last saved or opened makes the document saved again.
class Document : public QObject
{
    Q_OBJECT

public:
    explicit Document(QObject *parent = nullptr);
    ~Document() override;

    const Keymap &CurrentKeymap() const { return m_keymap; }
    const KeyAction &Action(PhoneKey key) const { return m_keymap[key]; }
    const ProfilePicture &Picture() const { return m_picture; }
    QString CurrentFile() const { return m_currentFile; }
    bool IsSaved() const { return m_isSaved; }
    bool IsKeymapDocument() const;

    // The document's name for the caption: the file name without its folder and
    // its last extension, or the localised "Unnamed".
    QString DisplayName() const;
    // The name in the save question: with its extension, or "Unnamed".
    QString NameWithExtension() const;
    // The main window's caption: "Name - Padmapper".
    QString Caption() const;

    // An edit of one key: its whole action.
    void SetAction(PhoneKey key, const KeyAction &action);

    // The history of the steps, for the window's Undo and Redo.
    const QUndoStack &History() const { return m_history; }
    void Undo();
    void Redo();

    // The file commands. A failure raises its message, except that saving an
    // unnamed profile fails in silence (there is no name to write to).

    // Open: a profile (then saved) or a bare keymap, which takes the place of
    // the picture and becomes the document's file; since nothing was saved,
    // IsSaved stays. False for a file of any other kind, which is left alone.
    bool Open(const QString &path);
    // The file named at start: a profile or a keymap, then saved. False when
    // the default document is to come instead: nothing is at the path (no
    // message then), it is of another kind, or it could not be read.
    bool OpenAtStart(const QString &path);
    // The default profile as a template: opened, then unnamed and saved. An
    // empty path opens nothing and leaves the document without a picture. The
    // keys of a keymap given take the place of the profile's: a ready-made
    // keymap on the default picture.
    void OpenTemplate(const QString &path, const QString &keymap = {});
    // A dropped file: a profile is opened; a keymap only replaces the keys; a
    // picture is taken, and a keymap document becomes an unnamed profile. A
    // picture that cannot be decoded leaves the picture shown, with a message.
    // Anything else is left alone.
    void Drop(const QString &path);
    // A picture chosen for the profile; a keymap document becomes an unnamed
    // profile. False when it could not be decoded: its copy then replaces the
    // picture all the same, but IsSaved and the file name stay.
    bool ImportPicture(const QString &path);
    // The keys of a keymap file; false when it could not be read.
    bool ImportKeymap(const QString &path);
    // Writes the document to its file: a keymap document as keymap text, any
    // other as a profile.
    [[nodiscard]] bool Save();
    // Writes the document under a new name, which it takes: a keymap document
    // as keymap text to path, any other as a profile (".hid" appended unless
    // path ends in it).
    [[nodiscard]] bool SaveAs(const QString &path);
    // Copies of the picture's bytes (false without a picture) or of the keymap
    // text; the document stays as it is.
    [[nodiscard]] bool ExportPicture(const QString &path);
    [[nodiscard]] bool ExportKeymap(const QString &path);

    // Reads keymap text (isText) or a keymap file into the keymap. Errors are
    // reported as one message and in the error report file; with text, fetched
    // holds an error met while getting it. IsSaved and the file name stay as
    // they were. Returns false when the file could not be read at all; the
    // keymap is then unchanged.
    bool ReadKeymap(const QString &source, bool isText, KeymapReadErrors fetched = {});

    // Opens a profile archive: its picture and keymap replace the document's,
    // the file name becomes the path and the document is saved. Messages about
    // an unreadable archive (then nothing changes) or a missing picture or
    // keymap (the rest is opened all the same) are raised on the way. Returns
    // false when the file itself could not be read (not a regular file, no
    // permission, ...).
    bool OpenProfile(const QString &path);
    // Reads the profile at path ahead of its opening: its entries are extracted
    // and its picture decoded, while the document stays as it is and no message
    // is raised. A later OpenProfile of that path, when the file has not changed
    // since, takes what was read instead of reading it again.
    void ReadAhead(const QString &path);
    // Forgets what ReadAhead read, deleting its extracted picture.
    void DropReadAhead();

    // Shows the picture at path and keeps a copy of its bytes (unless it is one
    // of the program's own copies). Returns whether it could be decoded. When no
    // whole copy can be made, a message says why and the picture stays as it was.
    // IsSaved stays as it was.
    bool AdoptPicture(const QString &path);
    // Leaves the document without a picture, as a bare keymap is.
    void RemovePicture();

    // Writes the document as a profile. Unless asCopy, path gets ".hid" when it
    // has another extension and becomes the document's file name. Raises the
    // message of a failure; IsSaved stays as it was.
    [[nodiscard]] bool SaveProfile(QString &path, bool asCopy);

signals:
    void KeyActionChanged(PhoneKey key);
    void KeymapReplaced();
    void PictureChanged();
    void CurrentFileChanged();
    // A profile or keymap file was opened (not as the template) or saved.
    void FileOpenedOrSaved(const QString &path);
    // Emitted synchronously, in the order things happen.
    void MessageRaised(const DocumentMessage &message);

private:
    friend class DocumentStep;
    // What a step of the history changes.
    struct Content
    {
        Keymap Keys;
        ProfilePicture Picture;
        QString File;
        bool operator==(const Content &other) const;
    };
    Content CurrentContent() const;
    // Shows content again as an undo or redo does; clearsSaved as the step's
    // command did.
    void Restore(const Content &content, bool clearsSaved);
    // Makes the change from before to now a step, unless nothing changed. A
    // comment typed on commentKey joins the step of the letters before it.
    void Record(const Content &before, bool clearsSaved, PhoneKey commentKey = -1);
    // A new history for a document just opened; its state is the clean one
    // when it is saved.
    void StartHistory();
    // The document was saved under file: every step of the history takes it.
    void NameHistory(const QString &file);
    [[nodiscard]] bool AdoptDroppedPicture(const QString &path);

    void SetCurrentFile(const QString &path);
    // A keymap document that gets a picture is a profile, not yet named.
    void BecomeProfile();
    [[nodiscard]] bool WriteKeymap(const QString &path);
    void Raise(ProfileMessage message, const FileError &cause = {});

    struct ReadAheadProfile
    {
        QString Path;
        qint64 Size = -1;
        QDateTime Modified;
        OpenedProfile Opened;
        QImage Picture;
    };
    // What ReadAhead read for path, if it matches the file as it is now.
    std::optional<ReadAheadProfile> TakeReadAhead(const QString &path);

    Keymap m_keymap;
    ProfilePicture m_picture;
    std::optional<ReadAheadProfile> m_readAhead;
    QString m_currentFile;
    bool m_isSaved = true;
    QUndoStack m_history;
};
