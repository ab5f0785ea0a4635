// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes from the line, read as AT answers and then as OBEX packets: the
// reads end without fault, stay within their caps and lose no byte.
#include "phone/seriallink.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    // The first byte decides how many AT answers come before the packets.
    const int answers = bytes.isEmpty() ? 0 : static_cast<std::uint8_t>(bytes[0]) % 4;
    QBuffer line(&bytes);
    line.open(QIODevice::ReadOnly);
    SerialLink link(&line);

    qsizetype taken = 0;
    for (int i = 0; i < answers; ++i) {
        const QString answer = link.ReadAtResponse();
        if (answer.size() > MaxAtResponseBytes + 1)
            std::abort();
        const AtResponse parsed = ParseAtResponse(answer);
        if (parsed.Success && parsed.Raw.isEmpty())
            std::abort();
        // The doubled blank after a prompt is the only byte not from the line.
        taken += answer.endsWith(QLatin1StringView("\r\n>  ")) ? answer.size() - 1 : answer.size();
    }
    for (QByteArray packet; !(packet = link.ReadObexPacket()).isEmpty();) {
        if (packet.size() > MaxObexPacketBytes)
            std::abort();
        taken += packet.size();
    }
    if (taken != bytes.size())
        std::abort();
    return 0;
}
