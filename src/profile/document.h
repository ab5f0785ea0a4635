// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keymap.h"
#include "profilearchive.h"

#include <QDateTime>
#include <QImage>
#include <QObject>
#include <QString>

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

// The one open document: the keymap of the 22 keys, the picture, the file it
// came from and whether it has unsaved changes. Edits go through it and it
// announces every change; the windows only show it.
//
// The document kind follows the file name: a name ending in ".kcf" is a bare
// keymap, anything else (an unnamed document too) a profile.
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

    // Edits of one key; each marks the document changed.
    void SetModifiers(PhoneKey key, int modifiers);
    void SetIsMouse(PhoneKey key, bool isMouse);
    void SetKeyCode(PhoneKey key, int keyCode);
    void SetMouseAction(PhoneKey key, int mouseAction);
    void SetComment(PhoneKey key, const QString &comment);
    void SetAction(PhoneKey key, const KeyAction &action);

    void SetCurrentFile(const QString &path);
    void SetSaved(bool saved);

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
    bool AdoptPicture(const QString &path);
    // Leaves the document without a picture, as a bare keymap is.
    void RemovePicture();

    // Writes the document as a profile. Unless asCopy, path gets ".hid" when it
    // has another extension and becomes the document's file name. Raises the
    // message of a failure; IsSaved is the caller's business.
    [[nodiscard]] bool SaveProfile(QString &path, bool asCopy);

signals:
    void KeyActionChanged(PhoneKey key);
    void KeymapReplaced();
    void PictureChanged();
    void CurrentFileChanged();
    void SavedChanged(bool saved);
    // Emitted synchronously, in the order things happen.
    void MessageRaised(const DocumentMessage &message);

private:
    void Edited(PhoneKey key);
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
};
