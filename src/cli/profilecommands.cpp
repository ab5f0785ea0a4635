// SPDX-License-Identifier: GPL-3.0-or-later
#include "profilecommands.h"

#include "clioutput.h"
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "profile/profilearchive.h"
#include "profile/tar.h"
#include "settings/filemessage.h"

#include <QFile>

using namespace Qt::StringLiterals;

int RunList(const QString &archivePath)
{
    cTar tar;
    if (!tar.GetContents(archivePath)) {
        Complain(ProfileMessageText(ProfileMessage::ExtractingArchiveFailed, tar.LastFileError()));
        return ExitStatus::Failure;
    }
    QString listing;
    for (int entry = 1; entry <= tar.TotalFiles(); ++entry)
        listing += u"%1\t%2\t%3\n"_s.arg(entry).arg(tar.Size(entry)).arg(tar.Filename(entry));
    WriteStdout(listing.toLocal8Bit());
    return ExitStatus::Success;
}

int RunExtract(const QString &archivePath, const QString &entry, const QString &destination)
{
    bool isNumber = false;
    const int number = entry.toInt(&isNumber);
    if (!isNumber) {
        Complain(u"not an entry number: %1"_s.arg(entry));
        return ExitStatus::Usage;
    }
    cTar tar;
    if (!tar.GetContents(archivePath)) {
        Complain(ProfileMessageText(ProfileMessage::ExtractingArchiveFailed, tar.LastFileError()));
        return ExitStatus::Failure;
    }
    // An entry cut short would make a file that looks whole but is not.
    if (tar.IsCut(number)) {
        Complain(u"entry %1 of %2 is cut short: the archive holds less than the %3 bytes its header gives"_s
                     .arg(number)
                     .arg(archivePath)
                     .arg(tar.Size(number)));
        return ExitStatus::Failure;
    }
    if (!tar.ExtractFile(destination, number)) {
        if (tar.LastFileError().Any())
            Complain(ProfileMessageText(ProfileMessage::CreatingFileFailed, tar.LastFileError()));
        else if (number < 1 || number > tar.TotalFiles())
            Complain(u"%1 has no entry %2 (it has %3)"_s.arg(archivePath).arg(number).arg(tar.TotalFiles()));
        else
            Complain(u"entry %1 is empty and was not extracted to %2"_s.arg(number).arg(destination));
        return ExitStatus::Failure;
    }
    return ExitStatus::Success;
}

int RunPack(const QString &picturePath, const QString &keymapPath, const QString &outPath)
{
    QFile pictureFile;
    FileError pictureError;
    if (!OpenForReading(pictureFile, picturePath, &pictureError)) {
        Complain(FileFailureMessage(u"no picture file"_s, pictureError));
        return ExitStatus::Failure;
    }
    pictureFile.close();
    ProfilePicture picture;
    if (FileError copyError; !AdoptPicture(picturePath, picture, &copyError) && copyError.Any()) {
        Complain(ProfileMessageText(ProfileMessage::CreatingFileFailed, copyError));
        return ExitStatus::Failure;
    }

    Keymap keymap;
    KeymapReadErrors errors;
    const bool readErrors = ReadKeymapText(keymap, keymapPath, false, &errors);
    if (readErrors) {
        // A failing pack writes nothing: a profile of half a keymap, or of the
        // phone defaults when the file is missing, must not replace OUT.
        WriteStderr(ReportKeymapErrors(errors));
        return ExitStatus::Failure;
    }

    QString path = outPath;
    std::optional<ProfileMessage> message;
    FileError cause;
    if (!SaveProfile(path, false, keymap, picture, &message, &cause)) {
        if (message)
            Complain(ProfileMessageText(*message, cause));
        return ExitStatus::Failure;
    }
    return ExitStatus::Success;
}
