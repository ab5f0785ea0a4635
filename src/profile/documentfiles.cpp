// SPDX-License-Identifier: GPL-3.0-or-later
// The document's file commands: which file opens as what, and what each one
// does to the file name and to IsSaved.
#include "document.h"
#include "picture.h"

#include "keymap/keymapwriter.h"
#include "support/nativefile.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

FileKind FileKindOf(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    if (extension == "hid"_L1 || extension == "tar"_L1)
        return FileKind::Profile;
    if (extension == "kcf"_L1)
        return FileKind::Keymap;
    if (IsProfilePictureName(path))
        return FileKind::Picture;
    return FileKind::Other;
}

bool Document::Open(const QString &path)
{
    const QString file = AbsoluteFilePath(path);
    switch (FileKindOf(path)) {
    case FileKind::Profile:
        if (OpenProfile(file) && m_currentFile == file)
            emit FileOpenedOrSaved(file);
        return true;
    case FileKind::Keymap:
        if (ReadKeymap(file, false)) {
            RemovePicture();
            SetCurrentFile(file);
            StartHistory();
            emit FileOpenedOrSaved(file);
        }
        return true;
    case FileKind::Picture:
    case FileKind::Other:
        break;
    }
    return false;
}

bool Document::OpenAtStart(const QString &path)
{
    // A name that leads nowhere is passed over in silence; a file that is there
    // but cannot be read has its message raised.
    if (!PathExists(path))
        return false;
    const QString file = AbsoluteFilePath(path);
    bool opened = false;
    switch (FileKindOf(path)) {
    case FileKind::Profile:
        opened = OpenProfile(file);
        break;
    case FileKind::Keymap:
        opened = ReadKeymap(file, false);
        if (opened)
            SetCurrentFile(file);
        break;
    case FileKind::Picture:
    case FileKind::Other:
        return false;
    }
    m_isSaved = true;
    StartHistory();
    if (opened && m_currentFile == file)
        emit FileOpenedOrSaved(file);
    return opened;
}

void Document::OpenTemplate(const QString &path, const QString &keymap)
{
    if (!path.isEmpty())
        OpenProfile(path);
    else
        RemovePicture();
    if (!keymap.isEmpty())
        ReadKeymap(keymap, false);
    SetCurrentFile(QString());
    // A template as it came holds nothing of the user's: closing it or opening
    // another file need not ask, just as for the default profile at start. The
    // first edit makes it a change worth the question.
    m_isSaved = true;
    StartHistory();
}

void Document::Drop(const QString &path)
{
    // A dropped keymap or picture leaves IsSaved as it was, and so do its undo
    // and redo.
    const Content before = CurrentContent();
    switch (FileKindOf(path)) {
    case FileKind::Profile:
        if (const QString file = AbsoluteFilePath(path); OpenProfile(file) && m_currentFile == file)
            emit FileOpenedOrSaved(file);
        return;
    case FileKind::Keymap:
        ReadKeymap(path, false);
        break;
    case FileKind::Picture:
        if (AdoptDroppedPicture(path))
            BecomeProfile();
        break;
    case FileKind::Other:
        return;
    }
    Record(before, false);
}

bool Document::ImportPicture(const QString &path)
{
    const Content before = CurrentContent();
    const bool decoded = AdoptPicture(path);
    if (decoded) {
        m_isSaved = false;
        BecomeProfile();
    }
    // A picture that could not be decoded still replaced the one shown: a
    // step too, but one that leaves IsSaved.
    Record(before, decoded);
    return decoded;
}

bool Document::ImportKeymap(const QString &path)
{
    const Content before = CurrentContent();
    if (!ReadKeymap(path, false))
        return false;
    m_isSaved = false;
    Record(before, true);
    return true;
}

void Document::BecomeProfile()
{
    if (IsKeymapDocument())
        SetCurrentFile(QString());
}

bool Document::Save()
{
    return SaveAs(m_currentFile);
}

bool Document::SaveAs(const QString &path)
{
    if (IsKeymapDocument()) {
        if (!WriteKeymap(path))
            return false;
        SetCurrentFile(path);
    } else {
        QString profile = path;
        if (!SaveProfile(profile, false))
            return false;
    }
    m_isSaved = true;
    NameHistory(m_currentFile);
    m_history.setClean();
    emit FileOpenedOrSaved(m_currentFile);
    return true;
}

bool Document::ExportPicture(const QString &path)
{
    if (m_picture.PictureTempPath.isEmpty())
        return false;
    FileError cause;
    if (!CopyWholeFile(m_picture.PictureTempPath, path, &cause)) {
        Raise(ProfileMessage::CreatingFileFailed, cause);
        return false;
    }
    return true;
}

bool Document::ExportKeymap(const QString &path)
{
    return WriteKeymap(path);
}

bool Document::WriteKeymap(const QString &path)
{
    FileError cause;
    if (!WriteKeymapText(m_keymap, path, &cause)) {
        Raise(ProfileMessage::CreatingFileFailed, cause);
        return false;
    }
    return true;
}
