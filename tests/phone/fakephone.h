// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QString>
#include <QStringList>

#include <atomic>
#include <thread>

// A phone at the far end of a pseudo-terminal, for tests and benchmarks. It
// answers the AT dialogue as these phones do (echo of the line, then the result
// in CR LF ... CR LF), enters OBEX mode on CONNECT and serves Connect, Put,
// Abort and Disconnect, refusing requests beyond the 1024 bytes it announces.
// Its OBEX parsing is written from the OBEX standard (big-endian UTF-16
// names), independently of the client code under test.
class FakePhone
{
public:
    enum class Answer { Connect, Error, CmeError, Ok, Silent };

    struct Options
    {
        Answer Eobex = Answer::Connect; // to AT*EOBEX
        Answer Cprot = Answer::Connect; // to AT+CPROT=0
        // Requests answered before the phone falls silent (Connect counts); -1 never.
        int StallAfter = -1;
        // Bits per second on the line (10 bits a byte, both directions); 0 unthrottled.
        qint64 LineBps = 0;
    };

    FakePhone();
    explicit FakePhone(const Options &options);
    ~FakePhone();
    FakePhone(const FakePhone &) = delete;
    FakePhone &operator=(const FakePhone &) = delete;

    // Opens the pseudo-terminal and starts answering; false when no terminal
    // could be made.
    [[nodiscard]] bool Start();
    // The device a client opens, e.g. /dev/pts/4.
    QString PortName() const { return m_portName; }
    // Whether the port is locked for exclusive use: a client holds it, or one
    // ended without closing it. (Root may open such a port all the same.)
    bool PortIsExclusive() const;

    // What the phone has seen so far.
    struct Record
    {
        QStringList AtCommands;
        QByteArray LastRequest; // the last OBEX request, in spaced hexadecimal
        QMap<QString, QByteArray> Files; // stored by completed uploads, by name
    };
    Record Seen() const;

private:
    void Loop();
    void HandleLine(const QByteArray &line);
    void HandleRequest(const QByteArray &packet);
    void Send(const QByteArray &bytes);
    void Reply(quint8 code);
    void PaceLine(qsizetype bytes) const;

    Options m_options;
    QString m_portName;
    int m_master = -1;
    std::thread m_thread;
    std::atomic<bool> m_stop{false};

    // Touched by the phone's thread only.
    bool m_obexMode = false;
    QByteArray m_input;
    int m_answered = 0;
    QString m_putName;
    QByteArray m_putBody;
    bool m_putting = false;

    mutable QMutex m_mutex;
    Record m_seen;
};
