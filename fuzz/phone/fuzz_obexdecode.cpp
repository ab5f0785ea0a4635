// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as a phone's answer: decoding ends without fault, and a decoded
// name encodes back to the bytes it came from.
#include "phone/obexpacket.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView packet(data, static_cast<qsizetype>(size));
    cPacket decoded;
    decoded.Decode(packet);
    if (!packet.isEmpty() && decoded.ResponseCode() != data[0])
        std::abort();
    if (decoded.Body().size() > packet.size() || decoded.UnknownData().size() > packet.size())
        std::abort();

    cPacket again;
    again.Decode(ObexPacket(ObexResponse::Success, NameHeader(decoded.Name())));
    if (again.Name() != decoded.Name())
        std::abort();
    return 0;
}
