// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include <optional>

// A Bluetooth device paired with this computer, as BlueZ lists it.
struct PairedDevice
{
    QString Address; // "00:11:22:33:44:55"
    QString Alias; // the name the user knows it by

    bool operator==(const PairedDevice &) const = default;
};

// The devices BlueZ (org.bluez on the system bus) knows as paired, sorted by
// alias, then address; asks BlueZ each time and waits at most timeoutMs.
// std::nullopt when BlueZ cannot be reached (no system bus, bluetoothd not
// running, no answer).
std::optional<QList<PairedDevice>> PairedDevices(int timeoutMs = 5000);
