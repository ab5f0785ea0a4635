// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakephone.h"

#include <QMutexLocker>

#include <chrono>

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// OBEX numbers as the standard gives them.
constexpr quint8 OpConnect = 0x80;
constexpr quint8 OpDisconnect = 0x81;
constexpr quint8 OpPut = 0x02;
constexpr quint8 OpPutFinal = 0x82;
constexpr quint8 OpAbort = 0xFF;
constexpr quint8 RespContinue = 0x90;
constexpr quint8 RespSuccess = 0xA0;
constexpr quint8 RespBadRequest = 0xC0;
constexpr quint8 HiName = 0x01;
constexpr quint8 HiBody = 0x48;
constexpr quint8 HiEndOfBody = 0x49;
constexpr qsizetype MaxPacket = 1024;
constexpr int PollIntervalMs = 20;

qsizetype Be16At(QByteArrayView bytes, qsizetype at)
{
    return qsizetype(quint8(bytes[at])) << 8 | quint8(bytes[at + 1]);
}

} // namespace

FakePhone::FakePhone() : FakePhone(Options())
{
}

FakePhone::FakePhone(const Options &options) : m_options(options)
{
}

FakePhone::~FakePhone()
{
    m_stop.store(true);
    if (m_thread.joinable())
        m_thread.join();
    if (m_master >= 0)
        ::close(m_master);
}

bool FakePhone::Start()
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY);
    char name[128] = {};
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0 || ptsname_r(m_master, name, sizeof name))
        return false;
    m_portName = QString::fromLocal8Bit(name);
    // The settings stay for every later opener. The phone does not keep the
    // port open itself, so a client that held it is the only holder to find.
    const int port = ::open(name, O_RDWR | O_NOCTTY);
    if (port < 0)
        return false;
    termios raw{};
    if (tcgetattr(port, &raw) == 0) {
        cfmakeraw(&raw);
        tcsetattr(port, TCSANOW, &raw);
    }
    ::close(port);
    m_thread = std::thread([this] { Loop(); });
    return true;
}

bool FakePhone::PortIsExclusive() const
{
    const int port = ::open(m_portName.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (port < 0)
        return errno == EBUSY;
    int exclusive = 0;
    const bool asked = ::ioctl(port, TIOCGEXCL, &exclusive) == 0;
    ::close(port);
    return !asked || exclusive != 0;
}

FakePhone::Record FakePhone::Seen() const
{
    QMutexLocker lock(&m_mutex);
    return m_seen;
}

void FakePhone::Loop()
{
    char buffer[4096];
    while (!m_stop.load() && m_master >= 0) {
        pollfd poller{m_master, POLLIN, 0};
        if (::poll(&poller, 1, PollIntervalMs) <= 0)
            continue;
        // While no client has the port open, the line reports a hang-up.
        const ssize_t got = (poller.revents & POLLIN) ? ::read(m_master, buffer, sizeof buffer) : 0;
        if (got <= 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(PollIntervalMs));
            continue;
        }
        m_input.append(buffer, got);
        while (m_master >= 0) {
            if (!m_obexMode) {
                const qsizetype end = m_input.indexOf('\r');
                if (end < 0)
                    break;
                const QByteArray line = m_input.first(end);
                m_input.remove(0, end + 1);
                HandleLine(line);
                continue;
            }
            const qsizetype length = m_input.size() < 3 ? 0 : Be16At(m_input, 1);
            if (m_input.size() >= 3 && length < 3)
                m_input.clear();
            if (length < 3 || m_input.size() < length)
                break;
            const QByteArray packet = m_input.first(length);
            m_input.remove(0, length);
            HandleRequest(packet);
        }
    }
}

void FakePhone::HandleLine(const QByteArray &line)
{
    const QByteArray command = line.trimmed().toUpper();
    {
        QMutexLocker lock(&m_mutex);
        m_seen.AtCommands << QString::fromLatin1(command);
    }
    const Answer answer = command == "AT*EOBEX"     ? m_options.Eobex
                          : command == "AT+CPROT=0" ? m_options.Cprot
                                                    : Answer::Error;
    if (answer == Answer::Silent)
        return;
    m_obexMode = answer == Answer::Connect;
    const char *result = answer == Answer::Connect ? "CONNECT"
                         : answer == Answer::Ok    ? "OK"
                         : answer == Answer::Error ? "ERROR"
                                                   : "+CME ERROR: 4";
    Send(line + "\r\r\n" + result + "\r\n");
}

void FakePhone::PaceLine(qsizetype bytes) const
{
    if (m_options.LineBps > 0)
        std::this_thread::sleep_for(std::chrono::microseconds(bytes * 10 * 1000000 / m_options.LineBps));
}

void FakePhone::Send(const QByteArray &bytes)
{
    PaceLine(bytes.size());
    for (qsizetype at = 0; at < bytes.size();) {
        const ssize_t written = ::write(m_master, bytes.constData() + at, size_t(bytes.size() - at));
        if (written <= 0)
            return;
        at += written;
    }
}

void FakePhone::Reply(quint8 code)
{
    Send(char(code) + QByteArray::fromHex("0003"));
}

void FakePhone::HandleRequest(const QByteArray &packet)
{
    PaceLine(packet.size());
    {
        QMutexLocker lock(&m_mutex);
        m_seen.LastRequest = packet.toHex(' ');
    }
    if (m_options.StallAfter >= 0 && m_answered >= m_options.StallAfter)
        return;
    ++m_answered;
    const quint8 opcode = quint8(packet[0]);
    if (packet.size() > MaxPacket)
        return Reply(RespBadRequest);
    if (opcode == OpConnect) // version 1.0, no flags, 1024 bytes, Connection Id 1
        return Send(QByteArray::fromHex("A0000C10000400CB00000001"));
    if (opcode == OpAbort) {
        m_putting = false;
        return Reply(RespSuccess);
    }
    if (opcode == OpDisconnect) {
        m_obexMode = false;
        return Reply(RespSuccess);
    }
    if (opcode != OpPut && opcode != OpPutFinal)
        return Reply(RespBadRequest);
    if (!m_putting) {
        m_putName.clear();
        m_putBody.clear();
    }
    m_putting = true;
    // Headers by the encoding in the top two bits of their identifier: text
    // and byte sequences carry a 2-byte length, the others 1 or 4 bytes.
    for (qsizetype at = 3; at < packet.size();) {
        const quint8 id = quint8(packet[at]);
        const bool prefixed = id < 0x80;
        const qsizetype size = prefixed              ? (at + 3 <= packet.size() ? Be16At(packet, at + 1) - 3 : -1)
                               : (id & 0xC0) == 0x80 ? 1
                                                     : 4;
        const qsizetype valueAt = at + (prefixed ? 3 : 1);
        if (size < 0 || valueAt + size > packet.size())
            return Reply(RespBadRequest);
        const QByteArray value = packet.mid(valueAt, size);
        // A name is null-terminated UTF-16.
        if (id == HiName && !value.endsWith(QByteArray(2, '\0')))
            return Reply(RespBadRequest);
        if (id == HiBody || id == HiEndOfBody)
            m_putBody += value;
        for (qsizetype i = 0; id == HiName && i + 1 < value.size() && (value[i] || value[i + 1]); i += 2)
            m_putName += QChar(char16_t(Be16At(value, i)));
        at = valueAt + size;
    }
    if (opcode == OpPut)
        return Reply(RespContinue);
    m_putting = false;
    {
        QMutexLocker lock(&m_mutex);
        m_seen.Files[m_putName] = m_putBody;
    }
    Reply(RespSuccess);
}
