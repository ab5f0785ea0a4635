// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QString>
#include <QStringView>

class SerialLink;

// Request opcodes, final bit included.
namespace ObexOpcode {
inline constexpr quint8 Connect = 0x80;
inline constexpr quint8 Disconnect = 0x81;
inline constexpr quint8 Put = 0x02;
inline constexpr quint8 PutFinal = 0x82;
inline constexpr quint8 GetFinal = 0x83;
inline constexpr quint8 SetPathFinal = 0x85;
inline constexpr quint8 Abort = 0xFF;
} // namespace ObexOpcode

// Response codes the client tells apart; anything else is a failure.
namespace ObexResponse {
inline constexpr quint8 Continue = 0x90;
inline constexpr quint8 Success = 0xA0;
} // namespace ObexResponse

namespace ObexHeaderId {
inline constexpr quint8 Name = 0x01;
inline constexpr quint8 Type = 0x42;
inline constexpr quint8 Target = 0x46;
inline constexpr quint8 Body = 0x48;
inline constexpr quint8 EndOfBody = 0x49;
inline constexpr quint8 Who = 0x4A;
inline constexpr quint8 Length = 0xC3;
inline constexpr quint8 ConnectionId = 0xCB;
} // namespace ObexHeaderId

inline constexpr quint8 ObexVersion = 0x10; // 1.0; also marks the connect block in an answer
inline constexpr quint16 DefaultMaxPacketSize = 1024;
inline constexpr qsizetype ObexPrefixBytes = 3; // opcode and 2-byte length; also a header's prefix

// The value's low bytes, big-endian, exactly width bytes: higher bytes that do
// not fit are dropped.
QByteArray NumberBytes(quint32 value, int width);
// Any number of bytes read big-endian; only the low 32 bits are kept.
quint32 BytesNumber(QByteArrayView bytes);

// Builders of requests and headers. Lengths are written in 16 bits.
QByteArray ObexPacket(quint8 opcode, QByteArrayView payload = {});
// 0x00, then each 16-bit character low byte first, then 0x00: for characters
// below U+0100 this is big-endian UTF-16 with its terminator.
QByteArray NameHeader(QStringView name);
// The type text as single bytes with a 0x00 terminator.
QByteArray TypeHeader(QStringView type);
QByteArray TargetHeader(QByteArrayView target);
// An End of Body header when last is true, else a Body header.
QByteArray BodyHeader(QByteArrayView data, bool last);
// The byte count of data in 4 bytes.
QByteArray LengthHeader(QByteArrayView data);
QByteArray ConnectionIdHeader(quint32 connectionId);
// Version 1.0, no flags, the packet size (0 gives 1024), a Target header only
// when a target is given.
QByteArray ConnectRequest(quint16 maxPacketSize, QByteArrayView target);
// Carries only the low 16 bits of the connection identifier, after two zero
// bytes where the upper half belongs; the phones take it so.
QByteArray DisconnectRequest(quint32 connectionId);

// One decoded answer of the phone. Every property is reset by Decode; a packet
// that ends inside a header, or whose header length is below the header's own
// fixed part (3 bytes, 5 for a Name), is decoded up to that header and no
// further.
class cPacket
{
public:
    // Reads one packet from the link and decodes it; all properties are reset
    // (ResponseCode 0) when nothing arrived.
    void ReadPort(SerialLink &link);
    void Decode(QByteArrayView packet);

    int ResponseCode() const { return m_responseCode; }
    bool ConnectHeader() const { return m_connectHeader; }
    int MaxPacketSize() const { return m_maxPacketSize; }
    // Everything from the first header the decoder does not know to the end.
    QByteArray UnknownData() const { return m_unknownData; }
    quint32 Length() const { return m_length; }
    bool LengthHeader() const { return m_lengthHeader; }
    quint32 ConnectionID() const { return m_connectionId; }
    bool ConnectionIDHeader() const { return m_connectionIdHeader; }
    // The last Body or End of Body header's value: bodies are not joined.
    QByteArray Body() const { return m_body; }
    bool BodyHeader() const { return m_bodyHeader; }
    bool EndOfBody() const { return m_endOfBody; }
    QString TypeString() const { return m_typeString; }
    bool TypeHeader() const { return m_typeHeader; }
    QByteArray Target() const { return m_target; }
    bool TargetHeader() const { return m_targetHeader; }
    QByteArray Who() const { return m_who; }
    bool WhoHeader() const { return m_whoHeader; }
    // Count and Time headers are not decoded: these stay empty.
    quint32 Count() const { return 0; }
    bool CountHeader() const { return false; }
    QDateTime Time() const { return QDateTime(); }
    bool TimeHeader() const { return false; }
    QString Name() const { return m_name; }
    bool NameHeader() const { return m_nameHeader; }

private:
    void Reset();

    int m_responseCode = 0;
    bool m_connectHeader = false;
    int m_maxPacketSize = 0;
    QByteArray m_unknownData;
    quint32 m_length = 0;
    bool m_lengthHeader = false;
    quint32 m_connectionId = 0;
    bool m_connectionIdHeader = false;
    QByteArray m_body;
    bool m_bodyHeader = false;
    bool m_endOfBody = false;
    QString m_typeString;
    bool m_typeHeader = false;
    QByteArray m_target;
    bool m_targetHeader = false;
    QByteArray m_who;
    bool m_whoHeader = false;
    QString m_name;
    bool m_nameHeader = false;
};

// Each byte in hexadecimal without leading zeros, each followed by "_":
// 80 00 07 gives "80_0_7_". For diagnostics.
QString HexDump(QByteArrayView bytes);
