// SPDX-License-Identifier: GPL-3.0-or-later
#include "profilearchive.h"

#include "keymap/keymapwriter.h"
#include "picture.h"
#include "profiletexts.h"
#include "settings/commontexts.h"
#include "settings/filemessage.h"
#include "support/ansitext.h"
#include "tar.h"
#include "tempfiles.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace {

constexpr auto TempPrefix = "PMX"_L1;

} // namespace

QString ProfileMessageText(ProfileMessage message)
{
    switch (message) {
    case ProfileMessage::NoPicture:
        return LanguageText(ProfileText::NoPicture);
    case ProfileMessage::CreatingArchiveFailed:
        return LanguageText(ProfileText::CreatingArchiveFailed);
    case ProfileMessage::ExtractingArchiveFailed:
        return LanguageText(ProfileText::ExtractingArchiveFailed);
    case ProfileMessage::ArchiveEmpty:
        return LanguageText(ProfileText::ArchiveEmpty);
    case ProfileMessage::NoPictureEntry:
        return LanguageText(ProfileText::NoPictureEntry);
    case ProfileMessage::NoKeymapEntry:
        return LanguageText(ProfileText::NoKeymapEntry);
    case ProfileMessage::ArchiveDamaged:
        return LanguageText(ProfileText::ArchiveDamaged);
    case ProfileMessage::CreatingFileFailed:
        return LanguageText(CommonText::CreatingFileFailed);
    }
    return {};
}

QString ProfileMessageText(ProfileMessage message, const FileError &cause)
{
    return FileFailureMessage(ProfileMessageText(message), cause);
}

QString MakeTempFile(FileError &error)
{
    const QString path = NewTempFile(TempPrefix);
    if (path.isEmpty()) {
        const QString folder = QDir::tempPath();
        error = FolderWriteProblem(folder);
        if (!error.Any())
            error = FileError{FileProblem::Other, folder, EIO};
    }
    return path;
}

bool IsProfileNote(ProfileMessage message)
{
    return message == ProfileMessage::NoPictureEntry || message == ProfileMessage::NoKeymapEntry
           || message == ProfileMessage::ArchiveDamaged;
}

QString ProfileMessageTitle(ProfileMessage message)
{
    return IsProfileNote(message) ? LanguageText(ProfileText::NoteTitle) : LanguageText(ProfileText::ErrorTitle);
}

QString LowerExtension(const QString &name)
{
    return name.mid(name.lastIndexOf(u'.') + 1).toLower();
}

QString ProfileBaseName(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot < 0 ? name : name.left(dot);
}

bool AdoptPicture(const QString &path, ProfilePicture &picture, FileError *copyError)
{
    if (path.isEmpty())
        return false;
    QImage image = LoadPictureFile(path);
    if (LowerExtension(path) != "tmp"_L1) {
        // Without all its bytes the picture could not be saved: the document
        // keeps the picture it had.
        FileError error;
        const QString copy = MakeTempFile(error);
        if (copy.isEmpty() || !CopyWholeFile(path, copy, &error)) {
            if (!copy.isEmpty())
                RemoveFile(copy);
            if (copyError)
                *copyError = error;
            return false;
        }
        picture.PictureTempPath = copy;
        picture.PictureName = QFileInfo(path).fileName();
    }
    picture.Image = std::move(image);
    return !picture.Image.isNull();
}

bool SaveProfile(QString &path, bool asCopy, const Keymap &keymap, const ProfilePicture &picture,
                 std::optional<ProfileMessage> *message, FileError *cause)
{
    const auto fail = [message](std::optional<ProfileMessage> why) {
        if (message)
            *message = why;
        return false;
    };
    // A temporary copy that vanished (a cleaner in the temporary folder) is no
    // picture either: saving without it would lose the picture.
    if (picture.Image.isNull() || picture.PictureName.isEmpty() || picture.PictureTempPath.isEmpty()
        || !IsRegularFile(picture.PictureTempPath))
        return fail(ProfileMessage::NoPicture);
    if (!asCopy) {
        if (path.isEmpty())
            return fail(std::nullopt);
        if (LowerExtension(path) != "hid"_L1)
            path += ".hid"_L1;
    }
    const QString base = ProfileBaseName(path);
    cTar tar;
    tar.AddFile(picture.PictureTempPath, base + u'.' + LowerExtension(picture.PictureName), QString());
    tar.AddFile(QString(), base + ".kcf"_L1, WriteKeymapText(keymap));
    if (!tar.CreateTarFile(path)) {
        if (cause)
            *cause = tar.LastFileError();
        return fail(ProfileMessage::CreatingArchiveFailed);
    }
    if (message)
        *message = std::nullopt;
    return true;
}

OpenedProfile OpenProfileArchive(const QString &path)
{
    OpenedProfile opened;
    cTar tar;
    const auto failed = [&opened](const FileError &problem) {
        opened.Opened = false;
        opened.Messages = {ProfileMessage::ExtractingArchiveFailed};
        opened.Problem = problem;
        if (!opened.PictureTempPath.isEmpty())
            RemoveFile(opened.PictureTempPath);
        opened.PictureTempPath.clear();
        return opened;
    };
    if (!tar.GetContents(path))
        return failed(tar.LastFileError());
    if (tar.TotalFiles() == 0) {
        opened.Messages << ProfileMessage::ArchiveEmpty;
        return opened;
    }
    opened.Opened = true;
    bool damaged = false;
    for (int entry = 1; entry <= tar.TotalFiles(); ++entry) {
        damaged = damaged || tar.IsCut(entry);
        const QString name = tar.Filename(entry);
        const QString extension = LowerExtension(name);
        if (ProfilePictureExtensions().contains(extension)) {
            FileError error;
            const QString extracted = MakeTempFile(error);
            if (extracted.isEmpty())
                return failed(error);
            // An entry that holds nothing is not extracted, and its picture
            // stays empty; a copy that could not be written fails the opening.
            if (!tar.ExtractFile(extracted, entry) && tar.LastFileError().Any()) {
                RemoveFile(extracted);
                return failed(tar.LastFileError());
            }
            QString shortName = name.mid(name.lastIndexOf(u'/') + 1);
            opened.PictureName = shortName.mid(shortName.lastIndexOf(u'\\') + 1);
            opened.PictureTempPath = extracted;
        } else if (extension == "kcf"_L1) {
            if (tar.Size(entry) > LargestKeymapSize) {
                opened.KeymapText.clear();
                opened.KeymapErrors = KeymapTooLarge(path);
                continue;
            }
            opened.KeymapText = FromAnsi(tar.FileToArray(entry));
            opened.KeymapErrors = KeymapReadErrors();
        }
    }
    // The damage comes first: it explains any note that follows.
    if (damaged)
        opened.Messages << ProfileMessage::ArchiveDamaged;
    if (opened.PictureTempPath.isEmpty())
        opened.Messages << ProfileMessage::NoPictureEntry;
    if (opened.KeymapText.isEmpty() && !opened.KeymapErrors.Any())
        opened.Messages << ProfileMessage::NoKeymapEntry;
    return opened;
}
