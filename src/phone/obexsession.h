// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <optional>

class SerialLink;

// The OBEX client on a link that is already in OBEX mode. Requests never exceed
// 1024 bytes, whatever the phone announces. Runs on the thread that uses the
// link; only the abort flag may be set from elsewhere (also from a signal
// handler: it is a lock-free atomic).
class cOBEXObject : public QObject
{
    Q_OBJECT

public:
    explicit cOBEXObject(SerialLink &link, QObject *parent = nullptr);

    // Checked before each further piece of an upload; never cleared here.
    bool AbortFlag() const { return m_abortFlag.load(); }
    void SetAbortFlag(bool abort) { m_abortFlag.store(abort); }

    // The folder-browsing service identifier, the Target of an upload's Connect.
    static QByteArray UUID();

    // maxPacketSize 0 is announced as 1024 and replaced by 1024. True when the
    // phone answered Success; only then are its identifier and size kept.
    [[nodiscard]] bool Connect(quint16 &maxPacketSize, QByteArrayView target);
    // True at once when not connected; otherwise true when the phone answered
    // Success, which ends the session.
    [[nodiscard]] bool Disconnect();
    // An empty name selects the root folder.
    [[nodiscard]] bool SetPath(const QString &folder);
    // What the phone sent, however its last answer ended.
    QByteArray GetFolderListing();
    // The file's bytes as gathered; LastResponseCode() tells whether the final
    // answer was Success (a caller facing the user shows any other code).
    QByteArray ObexGet(const QString &name);
    [[nodiscard]] bool ObexDelete(const QString &name);
    // Sends data under the name; DataTransfer follows every acknowledged piece.
    // True when the last packet was answered Success; false at the first other
    // answer, after an abort, or when the phone stops answering; false at once,
    // with nothing sent, for a name too long for the first packet.
    [[nodiscard]] bool ObexPut(const QString &name, QByteArrayView data);

    // A Connection Id header with the given identifier, or the session's own.
    QByteArray ConnectionIdHeader(std::optional<quint32> connectionId = std::nullopt) const;

    quint32 ConnectionId() const { return m_connectionId; }
    int PhoneMaxPacketSize() const { return m_phoneMaxPacketSize; }
    QString CurrentPath() const { return m_currentPath; }
    bool IsConnected() const { return m_connected; }
    int LastResponseCode() const { return m_lastResponseCode; }

    // Milliseconds from any fixed point, for the rate of each piece; a steady
    // clock unless replaced (tests give a clock of their own).
    using MillisecondClock = std::function<qint64()>;
    void SetClock(MillisecondClock clock) { m_clock = std::move(clock); }

signals:
    // Bytes acknowledged so far, the total, and the last piece's rate in bytes
    // per second.
    void DataTransfer(qint32 bytesSent, qint32 total, qint32 rate);

private:
    int Request(QByteArrayView packet, QByteArray *body = nullptr);
    void StartTimer();
    qint32 Rate(qsizetype bytes) const;
    QByteArray GetLoop(QByteArrayView firstHeaders);

    SerialLink &m_link;
    quint32 m_connectionId = 0;
    int m_phoneMaxPacketSize = 0;
    QString m_currentPath;
    bool m_connected = false;
    std::atomic<bool> m_abortFlag{false};
    MillisecondClock m_clock;
    qint64 m_startTime = 0;
    int m_lastResponseCode = 0;
};

// Data bytes the first packet of an upload can carry next to the Length header
// (less the Name header's size), and every later packet.
inline constexpr qsizetype FirstPieceLimitBase = 1013;
inline constexpr qsizetype PieceLimit = 1018;
// A download stops gathering beyond this.
inline constexpr qsizetype MaxGetBytes = 16 * 1024 * 1024;
// What the first packet carries for this name: an upload of up to this many
// bytes goes out as one packet. Below 0 for a name too long to be sent.
qsizetype FirstPieceLimit(const QString &name);
// The longest name the first packet has room for: two bytes a character and
// five around them must leave the data at least nothing.
inline constexpr qsizetype MaxRemoteNameLength = (FirstPieceLimitBase - 5) / 2;
