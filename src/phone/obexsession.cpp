// SPDX-License-Identifier: GPL-3.0-or-later
#include "obexsession.h"

#include "obexpacket.h"
#include "seriallink.h"

#include <algorithm>
#include <array>
#include <chrono>

using namespace Qt::StringLiterals;

namespace {

constexpr quint8 SetPathNoCreate = 0x02;
constexpr QStringView FolderListingType = u"x-obex/folder-listing";
constexpr std::array<quint8, 16> FolderBrowsingUuid = {0xF9, 0xEC, 0x7B, 0xC4, 0x95, 0x3C, 0x11, 0xD2,
                                                       0x98, 0x4E, 0x52, 0x54, 0x00, 0xDC, 0x9E, 0x09};

} // namespace

qsizetype FirstPieceLimit(const QString &name)
{
    return FirstPieceLimitBase - NameHeader(name).size();
}

cOBEXObject::cOBEXObject(SerialLink &link, QObject *parent)
    : QObject(parent), m_link(link), m_clock([] {
          return qint64(std::chrono::duration_cast<std::chrono::milliseconds>(
                            std::chrono::steady_clock::now().time_since_epoch())
                            .count());
      })
{
}

QByteArray cOBEXObject::UUID()
{
    return QByteArray(reinterpret_cast<const char *>(FolderBrowsingUuid.data()), FolderBrowsingUuid.size());
}

QByteArray cOBEXObject::ConnectionIdHeader(std::optional<quint32> connectionId) const
{
    return ::ConnectionIdHeader(connectionId.value_or(m_connectionId));
}

// Sends one packet and reads the answer; returns its response code (0 when
// nothing came back) and hands over its body when asked.
int cOBEXObject::Request(QByteArrayView packet, QByteArray *body)
{
    cPacket answer;
    if (m_link.WritePort(packet))
        answer.ReadPort(m_link);
    m_lastResponseCode = answer.ResponseCode();
    if (body)
        *body = answer.Body();
    return m_lastResponseCode;
}

bool cOBEXObject::Connect(quint16 &maxPacketSize, QByteArrayView target)
{
    if (maxPacketSize == 0)
        maxPacketSize = DefaultMaxPacketSize;
    cPacket answer;
    if (m_link.WritePort(ConnectRequest(maxPacketSize, target)))
        answer.ReadPort(m_link);
    m_lastResponseCode = answer.ResponseCode();
    if (answer.ResponseCode() != ObexResponse::Success)
        return false;
    m_connected = true;
    m_phoneMaxPacketSize = answer.MaxPacketSize();
    m_connectionId = answer.ConnectionID();
    return true;
}

bool cOBEXObject::Disconnect()
{
    if (!m_connected)
        return true;
    if (!m_link.WritePort(DisconnectRequest(m_connectionId)))
        return false;
    const QByteArray answer = m_link.ReadObexPacket();
    if (answer.isEmpty() || quint8(answer[0]) != ObexResponse::Success)
        return false;
    m_connectionId = 0;
    m_connected = false;
    return true;
}

bool cOBEXObject::SetPath(const QString &folder)
{
    m_currentPath = folder.isEmpty() ? u"\\"_s : m_currentPath + u'\\' + folder;
    QByteArray payload;
    payload += char(SetPathNoCreate);
    payload += '\0';
    payload += ConnectionIdHeader();
    payload += NameHeader(folder);
    return Request(ObexPacket(ObexOpcode::SetPathFinal, payload)) == ObexResponse::Success;
}

QByteArray cOBEXObject::GetLoop(QByteArrayView firstHeaders)
{
    QByteArray gathered;
    QByteArray body;
    int code = Request(ObexPacket(ObexOpcode::GetFinal, firstHeaders), &body);
    while (code == ObexResponse::Continue) {
        gathered += body;
        // A phone that keeps answering Continue with no end would fill memory.
        if (gathered.size() > MaxGetBytes)
            return gathered;
        code = Request(ObexPacket(ObexOpcode::GetFinal, ConnectionIdHeader()), &body);
    }
    gathered += body;
    return gathered;
}

QByteArray cOBEXObject::GetFolderListing()
{
    return GetLoop(ConnectionIdHeader() + TypeHeader(FolderListingType));
}

QByteArray cOBEXObject::ObexGet(const QString &name)
{
    return GetLoop(ConnectionIdHeader() + NameHeader(name));
}

bool cOBEXObject::ObexDelete(const QString &name)
{
    return Request(ObexPacket(ObexOpcode::PutFinal, ConnectionIdHeader() + NameHeader(name))) == ObexResponse::Success;
}

void cOBEXObject::StartTimer()
{
    m_startTime = m_clock();
}

qint32 cOBEXObject::Rate(qsizetype bytes) const
{
    // An answer within the same millisecond counts as one.
    const qint64 elapsed = std::max<qint64>(1, m_clock() - m_startTime);
    return qint32(qint64(bytes) * 1000 / elapsed);
}

bool cOBEXObject::ObexPut(const QString &name, QByteArrayView data)
{
    const QByteArray nameHeader = NameHeader(name);
    const qsizetype firstLimit = FirstPieceLimitBase - nameHeader.size();
    // The first packet would exceed 1024 bytes, which the phone refuses.
    if (firstLimit < 0)
        return false;
    const qint32 total = qint32(data.size());
    const QByteArray firstHeaders = nameHeader + LengthHeader(data);

    if (data.size() <= firstLimit) {
        StartTimer();
        const bool sent = Request(ObexPacket(ObexOpcode::PutFinal, firstHeaders + BodyHeader(data, true)))
                          == ObexResponse::Success;
        emit DataTransfer(total, total, Rate(data.size()));
        return sent;
    }

    StartTimer();
    const QByteArrayView first = data.first(firstLimit);
    const int firstCode = Request(ObexPacket(ObexOpcode::Put, firstHeaders + BodyHeader(first, false)));
    if (firstCode == ObexResponse::Success || firstCode == ObexResponse::Continue)
        emit DataTransfer(qint32(first.size()), total, Rate(first.size()));
    if (firstCode != ObexResponse::Continue)
        return false;

    qsizetype sent = first.size();
    while (sent < data.size()) {
        const QByteArrayView piece = data.sliced(sent, std::min(PieceLimit, data.size() - sent));
        StartTimer();
        // After an Abort the phone does not answer Continue, so the loop ends.
        const QByteArray packet = AbortFlag() ? ObexPacket(ObexOpcode::Abort)
                                              : ObexPacket(ObexOpcode::Put, BodyHeader(piece, false));
        if (Request(packet) != ObexResponse::Continue)
            return false;
        sent += piece.size();
        emit DataTransfer(qint32(sent), total, Rate(piece.size()));
    }
    return Request(ObexPacket(ObexOpcode::PutFinal, BodyHeader({}, true))) == ObexResponse::Success;
}
