// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keymapreader.h"
#include "support/nativefile.h"

#include <QImage>
#include <QList>
#include <QString>

#include <optional>

class Keymap;

// What went wrong or is worth a note when saving or opening a profile; a
// number up to 7 is the message's key in the language file's "Errors" section.
enum class ProfileMessage {
    NoPicture = 1,
    CreatingArchiveFailed = 3,
    ExtractingArchiveFailed = 4,
    ArchiveEmpty = 5,
    NoPictureEntry = 6,
    NoKeymapEntry = 7,
    CreatingFileFailed = 8,
    // An entry's header promises more data than the file holds (a download or
    // copy cut short); what is there is used all the same. Key "ArchiveDamaged".
    ArchiveDamaged = 100,
};

// The localised text and title of a message; notes (6, 7 and ArchiveDamaged)
// carry the "Exclamation" title, the others "Caption". A file error behind the
// message adds its path and cause on a second line.
QString ProfileMessageText(ProfileMessage message);
QString ProfileMessageText(ProfileMessage message, const FileError &cause);
QString ProfileMessageTitle(ProfileMessage message);
bool IsProfileNote(ProfileMessage message);

// The document's picture: the decoded image shown, the temporary copy of its
// bytes that saving stores, and its original file name.
struct ProfilePicture
{
    QImage Image;
    QString PictureTempPath;
    QString PictureName;
};

// A new temporary file (NewTempFile with the program's prefix), or "" with
// error saying why none could be made.
QString MakeTempFile(FileError &error);

// The text after the last "." of a name, lower-cased (the whole name, lower-
// cased, when it has no ".").
QString LowerExtension(const QString &name);
// A file name without its folder and without the text from its last ".".
QString ProfileBaseName(const QString &path);

// Decodes the picture at path into picture.Image and, unless the file is one of
// the program's own ".tmp" copies, copies it to a new temporary file that
// becomes PictureTempPath, with PictureName the file's name. Returns whether a
// picture could be decoded. When no whole copy can be made, picture stays as it
// was and *copyError says why (it is left alone on every other path).
bool AdoptPicture(const QString &path, ProfilePicture &picture, FileError *copyError = nullptr);

// Writes a profile archive of the picture and the keymap. Unless asCopy, a path
// whose extension is not "hid" gets ".hid" appended (the path is updated) and
// an empty path fails without a message. On failure *message says why
// (NoPicture or CreatingArchiveFailed) unless the failure needs no message, and
// *cause names the file that could not be read or written.
[[nodiscard]] bool SaveProfile(QString &path, bool asCopy, const Keymap &keymap, const ProfilePicture &picture,
                               std::optional<ProfileMessage> *message = nullptr, FileError *cause = nullptr);

// What opening a profile archive found.
struct OpenedProfile
{
    // False when the archive could not be listed or extracted or held no
    // entries: nothing of the document is to change then.
    bool Opened = false;
    // The messages to show, in order.
    QList<ProfileMessage> Messages;
    // The file behind a failure to list or extract the archive.
    FileError Problem;
    // The last picture entry, extracted to a temporary file; "" when none.
    QString PictureTempPath;
    QString PictureName;
    // The last keymap entry's text; "" when none or when it was too large to
    // read, which KeymapErrors then holds for the keymap reader to report.
    QString KeymapText;
    KeymapReadErrors KeymapErrors;
};
OpenedProfile OpenProfileArchive(const QString &path);
