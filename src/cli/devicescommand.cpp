// SPDX-License-Identifier: GPL-3.0-or-later
#include "devicescommand.h"

#include "clioutput.h"
#include "transport/uploadjobs.h"

#ifdef PADMAPPER_HAS_DBUS
#include "bluetooth/paireddevices.h"
#endif

using namespace Qt::StringLiterals;

int RunDevices()
{
#ifdef PADMAPPER_HAS_DBUS
    const std::optional<QList<PairedDevice>> devices = PairedDevices();
    if (!devices) {
        Complain(u"cannot reach BlueZ (org.bluez on the system bus): is the Bluetooth service running?"_s);
        return ExitStatus::Failure;
    }
    for (const PairedDevice &device : *devices)
        WriteStdout((device.Address + u'\t' + device.Alias + u'\n').toLocal8Bit());
    return ExitStatus::Success;
#else
    Complain(u"Bluetooth is not available on this system"_s);
    return ExitStatus::Failure;
#endif
}
