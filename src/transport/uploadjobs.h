// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "phone/uploadjob.h"

#include <memory>

// Whether this build can send to a paired Bluetooth phone (it has D-Bus, so
// BlueZ's OBEX service can be reached). Without it only the serial port is
// offered.
[[nodiscard]] bool BluetoothAvailable();

// The job that carries the upload the request asks for: the serial line, or
// Bluetooth when the request's connection is Bluetooth and BluetoothAvailable().
// A Bluetooth request in a build without it is sent nowhere: its job fails
// with the serial line's "port not set" message, so callers offer Bluetooth
// only when available.
std::unique_ptr<UploadJob> MakeUploadJob(UploadRequest request);
