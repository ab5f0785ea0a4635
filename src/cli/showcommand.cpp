// SPDX-License-Identifier: GPL-3.0-or-later
#include "showcommand.h"

#include "clioutput.h"
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "keymap/keymapwriter.h"
#include "support/ansitext.h"

using namespace Qt::StringLiterals;

int RunShow(const QString &path)
{
    Keymap keymap;
    KeymapReadErrors errors;
    const bool failed = ReadKeymapText(keymap, path, false, &errors);
    WriteStdout(ToAnsi(WriteKeymapText(keymap) + "\r\n"_L1));
    if (!failed)
        return ExitStatus::Success;
    const QString summary = KeymapReadSummary(errors);
    if (WriteKeymapErrorReport(summary).isEmpty())
        Complain(u"could not write the error report %1"_s.arg(QLatin1StringView(KeymapErrorReportName)));
    WriteStderr(summary);
    return ExitStatus::Failure;
}
