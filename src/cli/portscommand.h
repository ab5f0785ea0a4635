// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Writes the serial ports the settings offer, one per line; returns the exit
// status.
int RunPorts();
