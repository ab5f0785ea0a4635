// SPDX-License-Identifier: GPL-3.0-or-later
#include "showcommand.h"

#include "clioutput.h"
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "keymap/keymapwriter.h"
#include "profile/document.h"
#include "profile/profilearchive.h"
#include "support/ansitext.h"

using namespace Qt::StringLiterals;

int RunShow(const QString &path)
{
    Keymap keymap;
    KeymapReadErrors errors;
    bool failed = false;
    if (FileKindOf(path) == FileKind::Profile) {
        const OpenedProfile profile = OpenProfileArchive(path);
        for (const ProfileMessage message : profile.Messages)
            WriteStderr(ProfileMessageText(message, profile.Problem));
        if (!profile.Opened)
            return ExitStatus::Failure;
        errors = profile.KeymapErrors;
        failed = ReadKeymapText(keymap, profile.KeymapText, true, &errors);
    } else {
        failed = ReadKeymapText(keymap, path, false, &errors);
    }
    WriteStdout(ToAnsi(WriteKeymapText(keymap) + "\r\n"_L1));
    if (const QString note = KeymapReadNote(errors); !note.isEmpty())
        WriteStderr(note);
    if (!failed)
        return ExitStatus::Success;
    WriteStderr(ReportKeymapErrors(errors));
    return ExitStatus::Failure;
}
