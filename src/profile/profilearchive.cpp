// SPDX-License-Identifier: GPL-3.0-or-later
#include "profilearchive.h"

#include "keymap/keymapwriter.h"
#include "picture.h"
#include "settings/languagetext.h"
#include "support/ansitext.h"
#include "tar.h"
#include "tempfiles.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

constexpr auto TempPrefix = "PMX"_L1;

bool CopyOver(const QString &source, const QString &target)
{
    QFile in(source);
    QFile out(target);
    if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    for (;;) {
        const QByteArray piece = in.read(64 * 1024);
        if (piece.isEmpty())
            return in.atEnd();
        if (out.write(piece) != piece.size())
            return false;
    }
}

} // namespace

QString ProfileMessageText(ProfileMessage message)
{
    const QString key = QString::number(static_cast<int>(message));
    switch (message) {
    case ProfileMessage::NoPicture:
        return LanguageText(u"Errors"_s, key, u"No Picture is loadet !"_s);
    case ProfileMessage::CreatingArchiveFailed:
        return LanguageText(u"Errors"_s, key, u"Creating Archive failed !"_s);
    case ProfileMessage::ExtractingArchiveFailed:
        return LanguageText(u"Errors"_s, key, u"Extracting Archive failed !"_s);
    case ProfileMessage::ArchiveEmpty:
        return LanguageText(u"Errors"_s, key, u"The Archive contained no Files !"_s);
    case ProfileMessage::NoPictureEntry:
        return LanguageText(u"Errors"_s, key, u"The Profile contains no Picture !"_s);
    case ProfileMessage::NoKeymapEntry:
        return LanguageText(u"Errors"_s, key, u"The Profile contains no Keymap !"_s);
    case ProfileMessage::ArchiveDamaged:
        return LanguageText(u"Errors"_s, u"ArchiveDamaged"_s,
                            u"The Archive is damaged: a file in it is cut short. What could be read is shown."_s);
    }
    return {};
}

bool IsProfileNote(ProfileMessage message)
{
    return message == ProfileMessage::NoPictureEntry || message == ProfileMessage::NoKeymapEntry
           || message == ProfileMessage::ArchiveDamaged;
}

QString ProfileMessageTitle(ProfileMessage message)
{
    return IsProfileNote(message) ? LanguageText(u"Errors"_s, u"Exclamation"_s, u"Note !"_s)
                                  : LanguageText(u"Errors"_s, u"Caption"_s, u"Error"_s);
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

bool AdoptPicture(const QString &path, ProfilePicture &picture)
{
    if (path.isEmpty())
        return false;
    picture.Image = LoadPictureFile(path);
    if (LowerExtension(path) != "tmp"_L1) {
        const QString copy = NewTempFile(TempPrefix);
        if (copy.isEmpty() || !CopyOver(path, copy)) {
            // Without its bytes the picture could not be saved: better none.
            picture.Image = QImage();
            return false;
        }
        picture.PictureTempPath = copy;
        picture.PictureName = QFileInfo(path).fileName();
    }
    return !picture.Image.isNull();
}

bool SaveProfile(QString &path, bool asCopy, const Keymap &keymap, const ProfilePicture &picture,
                 std::optional<ProfileMessage> *message)
{
    const auto fail = [message](std::optional<ProfileMessage> why) {
        if (message)
            *message = why;
        return false;
    };
    // A temporary copy that vanished (a cleaner in the temporary folder) is no
    // picture either: saving without it would lose the picture.
    if (picture.Image.isNull() || picture.PictureName.isEmpty() || picture.PictureTempPath.isEmpty()
        || !QFileInfo(picture.PictureTempPath).isFile())
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
    if (!tar.CreateTarFile(path))
        return fail(ProfileMessage::CreatingArchiveFailed);
    if (message)
        *message = std::nullopt;
    return true;
}

OpenedProfile OpenProfileArchive(const QString &path)
{
    OpenedProfile opened;
    cTar tar;
    if (!tar.GetContents(path)) {
        opened.Messages << ProfileMessage::ExtractingArchiveFailed;
        return opened;
    }
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
            const QString extracted = NewTempFile(TempPrefix);
            if (extracted.isEmpty())
                continue;
            (void)tar.ExtractFile(extracted, entry);
            QString shortName = name.mid(name.lastIndexOf(u'/') + 1);
            opened.PictureName = shortName.mid(shortName.lastIndexOf(u'\\') + 1);
            opened.PictureTempPath = extracted;
        } else if (extension == "kcf"_L1) {
            opened.KeymapText = FromAnsi(tar.FileToArray(entry));
        }
    }
    // The damage comes first: it explains any note that follows.
    if (damaged)
        opened.Messages << ProfileMessage::ArchiveDamaged;
    if (opened.PictureTempPath.isEmpty())
        opened.Messages << ProfileMessage::NoPictureEntry;
    if (opened.KeymapText.isEmpty())
        opened.Messages << ProfileMessage::NoKeymapEntry;
    return opened;
}
