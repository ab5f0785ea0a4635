// SPDX-License-Identifier: GPL-3.0-or-later
#include "overviewcommand.h"

#include "clioutput.h"
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "phoneart/overview.h"
#include "profile/document.h"
#include "profile/picture.h"
#include "settings/filemessage.h"

using namespace Qt::StringLiterals;

int RunOverview(const QString &path, const QString &outPath)
{
    // Checked first, so that a mistyped name costs no reading.
    if (!OverviewFormatOf(outPath)) {
        Complain(u"the overview is written as .pdf or .png, not %1"_s.arg(outPath));
        return ExitStatus::Failure;
    }
    Keymap keymap;
    KeymapReadErrors errors;
    QImage picture;
    bool readErrors = false;
    switch (FileKindOf(path)) {
    case FileKind::Profile: {
        const OpenedProfile profile = OpenProfileArchive(path);
        for (const ProfileMessage message : profile.Messages)
            WriteStderr(ProfileMessageText(message, profile.Problem));
        if (!profile.Opened)
            return ExitStatus::Failure;
        if (!profile.PictureTempPath.isEmpty())
            picture = LoadPictureFile(profile.PictureTempPath);
        errors = profile.KeymapErrors;
        readErrors = ReadKeymapText(keymap, profile.KeymapText, true, &errors);
        break;
    }
    case FileKind::Keymap:
        readErrors = ReadKeymapText(keymap, path, false, &errors);
        break;
    case FileKind::Picture:
    case FileKind::Other:
        Complain(u"%1 is neither a profile nor a keymap"_s.arg(path));
        return ExitStatus::Failure;
    }
    // As with pack: an overview of half a keymap, or of the phone's defaults
    // when the file is missing, would look right and be wrong.
    if (readErrors) {
        WriteStderr(ReportKeymapErrors(errors));
        return ExitStatus::Failure;
    }
    FileError error;
    if (!WriteOverview(outPath, MakeOverview(ProfileBaseName(path), keymap, picture), &error)) {
        Complain(FileFailureMessage(u"the overview could not be written"_s, error));
        return ExitStatus::Failure;
    }
    return ExitStatus::Success;
}
