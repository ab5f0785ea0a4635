// SPDX-License-Identifier: GPL-3.0-or-later
#include "portscommand.h"

#include "clioutput.h"
#include "phone/seriallink.h"

int RunPorts()
{
    for (const QString &port : OfferedPorts())
        WriteStdout((port + u'\n').toLocal8Bit());
    return ExitStatus::Success;
}
