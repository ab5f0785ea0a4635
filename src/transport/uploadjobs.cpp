// SPDX-License-Identifier: GPL-3.0-or-later
#include "uploadjobs.h"

#include "phone/serialuploadjob.h"

#ifdef PADMAPPER_HAS_DBUS
#include "bluetooth/obexuploadjob.h"
#endif

bool BluetoothAvailable()
{
#ifdef PADMAPPER_HAS_DBUS
    return true;
#else
    return false;
#endif
}

std::unique_ptr<UploadJob> MakeUploadJob(UploadRequest request)
{
#ifdef PADMAPPER_HAS_DBUS
    if (request.Connection == PhoneConnection::Bluetooth)
        return std::make_unique<ObexUploadJob>(std::move(request));
#else
    if (request.Connection == PhoneConnection::Bluetooth)
        request.Port = SerialPort();
#endif
    return std::make_unique<SerialUploadJob>(std::move(request));
}
