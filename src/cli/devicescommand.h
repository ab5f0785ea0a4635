// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// devices: the Bluetooth devices paired with this computer, one per line as
// ADDRESS, a tab and the name; nothing when none is paired. Fails with a
// message when BlueZ cannot be reached or the build has no Bluetooth.
// Returns the exit status.
int RunDevices();
