// SPDX-License-Identifier: GPL-3.0-or-later
#include "paireddevices.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using InterfaceProperties = QMap<QString, QVariantMap>;
using ManagedObjects = QMap<QDBusObjectPath, InterfaceProperties>;

} // namespace

std::optional<QList<PairedDevice>> PairedDevices(int timeoutMs)
{
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
        return std::nullopt;
    const QDBusMessage call = QDBusMessage::createMethodCall(u"org.bluez"_s, u"/"_s,
                                                             u"org.freedesktop.DBus.ObjectManager"_s,
                                                             u"GetManagedObjects"_s);
    const QDBusMessage reply = bus.call(call, QDBus::Block, timeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != "a{oa{sa{sv}}}"_L1)
        return std::nullopt;

    QList<PairedDevice> devices;
    const auto objects = qdbus_cast<ManagedObjects>(reply.arguments().constFirst());
    for (const InterfaceProperties &interfaces : objects) {
        const auto device = interfaces.constFind(u"org.bluez.Device1"_s);
        if (device == interfaces.constEnd() || !device->value(u"Paired"_s).toBool())
            continue;
        devices.append({device->value(u"Address"_s).toString(), device->value(u"Alias"_s).toString()});
    }
    std::sort(devices.begin(), devices.end(), [](const PairedDevice &a, const PairedDevice &b) {
        const int byAlias = a.Alias.compare(b.Alias, Qt::CaseInsensitive);
        return byAlias != 0 ? byAlias < 0 : a.Address < b.Address;
    });
    return devices;
}
