// SPDX-License-Identifier: GPL-3.0-or-later
#include "obexpacket.h"

#include "seriallink.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype ConnectBlockBytes = 4; // version, flags, 2-byte packet size
constexpr qsizetype FourByteHeaderBytes = 5; // id and a 4-byte value
constexpr qsizetype NameValueSkip = 1; // the leading 0x00 of a name's value
constexpr qsizetype NameFixedBytes = 5; // id, length, the leading 0x00 and the last byte

quint16 HeaderLength(QByteArrayView header)
{
    return quint16((quint8(header[1]) << 8) | quint8(header[2]));
}

QByteArray PrefixedHeader(quint8 id, QByteArrayView value)
{
    QByteArray header;
    header.reserve(ObexPrefixBytes + value.size());
    header += char(id);
    header += NumberBytes(quint32(ObexPrefixBytes + value.size()), 2);
    header += value;
    return header;
}

} // namespace

QByteArray NumberBytes(quint32 value, int width)
{
    QByteArray bytes(width, '\0');
    for (int i = width - 1; i >= 0 && value != 0; --i) {
        bytes[i] = char(value & 0xFF);
        value >>= 8;
    }
    return bytes;
}

quint32 BytesNumber(QByteArrayView bytes)
{
    quint32 value = 0;
    for (const char byte : bytes)
        value = (value << 8) | quint8(byte);
    return value;
}

QByteArray ObexPacket(quint8 opcode, QByteArrayView payload)
{
    QByteArray packet;
    packet.reserve(ObexPrefixBytes + payload.size());
    packet += char(opcode);
    packet += NumberBytes(quint32(ObexPrefixBytes + payload.size()), 2);
    packet += payload;
    return packet;
}

QByteArray NameHeader(QStringView name)
{
    if (name.isEmpty())
        return PrefixedHeader(ObexHeaderId::Name, {});
    // Low byte first after one leading zero: big-endian UTF-16 for the
    // characters the phones' names use.
    QByteArray value;
    value.reserve(2 * name.size() + 2);
    value += '\0';
    for (const QChar c : name) {
        value += char(c.unicode() & 0xFF);
        value += char(c.unicode() >> 8);
    }
    value += '\0';
    return PrefixedHeader(ObexHeaderId::Name, value);
}

QByteArray TypeHeader(QStringView type)
{
    QByteArray value;
    value.reserve(type.size() + 1);
    for (const QChar c : type)
        value += char(c.unicode() & 0xFF);
    value += '\0';
    return PrefixedHeader(ObexHeaderId::Type, value);
}

QByteArray TargetHeader(QByteArrayView target)
{
    return PrefixedHeader(ObexHeaderId::Target, target);
}

QByteArray BodyHeader(QByteArrayView data, bool last)
{
    return PrefixedHeader(last ? ObexHeaderId::EndOfBody : ObexHeaderId::Body, data);
}

QByteArray LengthHeader(QByteArrayView data)
{
    return char(ObexHeaderId::Length) + NumberBytes(quint32(data.size()), 4);
}

QByteArray ConnectionIdHeader(quint32 connectionId)
{
    return char(ObexHeaderId::ConnectionId) + NumberBytes(connectionId, 4);
}

QByteArray ConnectRequest(quint16 maxPacketSize, QByteArrayView target)
{
    QByteArray payload;
    payload += char(ObexVersion);
    payload += '\0';
    payload += NumberBytes(maxPacketSize == 0 ? DefaultMaxPacketSize : maxPacketSize, 2);
    if (!target.isEmpty())
        payload += TargetHeader(target);
    return ObexPacket(ObexOpcode::Connect, payload);
}

QByteArray DisconnectRequest(quint32 connectionId)
{
    QByteArray payload;
    payload += char(ObexHeaderId::ConnectionId);
    payload += NumberBytes(0, 2);
    payload += NumberBytes(connectionId, 2);
    return ObexPacket(ObexOpcode::Disconnect, payload);
}

void cPacket::ReadPort(SerialLink &link)
{
    Decode(link.ReadObexPacket());
}

void cPacket::Reset()
{
    *this = cPacket();
}

void cPacket::Decode(QByteArrayView packet)
{
    Reset();
    if (packet.isEmpty())
        return;
    m_responseCode = quint8(packet[0]);
    // The length field is not checked against the real size.
    QByteArrayView rest = packet.size() > ObexPrefixBytes ? packet.sliced(ObexPrefixBytes) : QByteArrayView();
    while (!rest.isEmpty()) {
        const quint8 id = quint8(rest[0]);
        // A version byte at any header position is read as a connect block.
        if (id == ObexVersion) {
            if (rest.size() < ConnectBlockBytes)
                return;
            m_connectHeader = true;
            m_maxPacketSize = int(BytesNumber(rest.sliced(2, 2)));
            rest = rest.sliced(ConnectBlockBytes);
            continue;
        }
        if (id == ObexHeaderId::Length || id == ObexHeaderId::ConnectionId) {
            if (rest.size() < FourByteHeaderBytes)
                return;
            const quint32 value = BytesNumber(rest.sliced(1, 4));
            if (id == ObexHeaderId::Length) {
                m_lengthHeader = true;
                m_length = value;
            } else {
                m_connectionIdHeader = true;
                m_connectionId = value;
            }
            rest = rest.sliced(FourByteHeaderBytes);
            continue;
        }
        const bool prefixed = id == ObexHeaderId::Name || id == ObexHeaderId::Type || id == ObexHeaderId::Target
                              || id == ObexHeaderId::Body || id == ObexHeaderId::EndOfBody || id == ObexHeaderId::Who;
        if (!prefixed) {
            m_unknownData = rest.toByteArray();
            return;
        }
        if (rest.size() < ObexPrefixBytes)
            return;
        const qsizetype length = HeaderLength(rest);
        // A Name's value holds at least its leading 0x00 and one terminator byte.
        const qsizetype fixedPart = id == ObexHeaderId::Name ? NameFixedBytes : ObexPrefixBytes;
        if (length < fixedPart || length > rest.size())
            return;
        const QByteArrayView value = rest.sliced(ObexPrefixBytes, length - ObexPrefixBytes);
        switch (id) {
        case ObexHeaderId::Name: {
            m_nameHeader = true;
            // The inverse of NameHeader: the value without its first and last
            // byte, in pairs low byte first.
            const QByteArrayView characters = value.sliced(NameValueSkip, value.size() - 2 * NameValueSkip);
            QString name;
            name.reserve(characters.size() / 2);
            for (qsizetype i = 0; i + 1 < characters.size(); i += 2)
                name += QChar(char16_t(quint8(characters[i]) | (quint8(characters[i + 1]) << 8)));
            m_name = name;
            break;
        }
        case ObexHeaderId::Type:
            m_typeHeader = true;
            m_typeString = QString::fromLatin1(value.isEmpty() ? value : value.chopped(1));
            break;
        case ObexHeaderId::Target:
            m_targetHeader = true;
            m_target = value.toByteArray();
            break;
        case ObexHeaderId::Who:
            m_whoHeader = true;
            m_who = value.toByteArray();
            break;
        default:
            m_bodyHeader = true;
            m_endOfBody = id == ObexHeaderId::EndOfBody;
            m_body = value.toByteArray();
            break;
        }
        rest = rest.sliced(length);
    }
}

QString HexDump(QByteArrayView bytes)
{
    QString text;
    for (const char byte : bytes)
        text += QString::number(quint8(byte), 16).toUpper() + u'_';
    return text;
}
