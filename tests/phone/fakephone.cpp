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
constexpr quint8 OpAbort = 0xFF;
constexpr quint8 FinalBit = 0x80;
constexpr quint8 OpcodeMask = 0x7F;
constexpr quint8 RespContinue = 0x90;
constexpr quint8 RespSuccess = 0xA0;
constexpr quint8 RespBadRequest = 0xC0;
constexpr quint8 RespForbidden = 0xC3;
constexpr quint8 HiName = 0x01;
constexpr quint8 HiBody = 0x48;
constexpr quint8 HiEndOfBody = 0x49;
constexpr quint8 HiConnectionId = 0xCB;
constexpr int PollIntervalMs = 20;

QByteArray Be16(qsizetype value)
{
    return QByteArray(1, char((value >> 8) & 0xFF)) + char(value & 0xFF);
}

QByteArray Be32(quint32 value)
{
    return Be16(value >> 16) + Be16(value & 0xFFFF);
}

struct Headers
{
    QMap<quint8, QByteArray> values;
    QByteArray body;
};

// Headers by the encoding in the top two bits of their identifier.
Headers ParseHeaders(QByteArrayView bytes)
{
    Headers headers;
    qsizetype at = 0;
    while (at < bytes.size()) {
        const quint8 id = quint8(bytes[at]);
        qsizetype size = 0;
        qsizetype valueAt = at + 1;
        switch (id & 0xC0) {
        case 0x00:
        case 0x40:
            if (at + 3 > bytes.size())
                return headers;
            size = (qsizetype(quint8(bytes[at + 1])) << 8 | quint8(bytes[at + 2])) - 3;
            valueAt = at + 3;
            break;
        case 0x80:
            size = 1;
            break;
        default:
            size = 4;
            break;
        }
        if (size < 0 || valueAt + size > bytes.size())
            return headers;
        const QByteArray value = bytes.sliced(valueAt, size).toByteArray();
        headers.values[id] = value;
        if (id == HiBody || id == HiEndOfBody) {
            headers.body += value;
        }
        at = valueAt + size;
    }
    return headers;
}

QString Utf16BeName(const QByteArray &value)
{
    QString name;
    for (qsizetype i = 0; i + 1 < value.size(); i += 2)
        name += QChar(char16_t(quint8(value[i]) << 8 | quint8(value[i + 1])));
    while (name.endsWith(QChar(u'\0')))
        name.chop(1);
    return name;
}

} // namespace

FakePhone::FakePhone()
    : FakePhone(Options())
{
}

FakePhone::FakePhone(const Options &options)
    : m_options(options)
{
}

FakePhone::~FakePhone()
{
    Stop();
}

bool FakePhone::Start()
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY);
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
        return false;
    char name[128] = {};
    if (ptsname_r(m_master, name, sizeof name) != 0)
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

void FakePhone::Stop()
{
    m_stop.store(true);
    if (m_thread.joinable())
        m_thread.join();
    Vanish();
}

void FakePhone::Vanish()
{
    if (m_master >= 0)
        ::close(m_master);
    m_master = -1;
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

QStringList FakePhone::AtCommands() const
{
    QMutexLocker lock(&m_mutex);
    return m_atCommands;
}

QList<QByteArray> FakePhone::Requests() const
{
    QMutexLocker lock(&m_mutex);
    return m_requests;
}

QMap<QString, QByteArray> FakePhone::Files() const
{
    QMutexLocker lock(&m_mutex);
    return m_files;
}

int FakePhone::Disconnects() const
{
    QMutexLocker lock(&m_mutex);
    return m_disconnects;
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
        for (;;) {
            if (m_master < 0)
                return;
            // Text where a packet should begin: the client started over with AT.
            if (m_obexMode && !m_input.isEmpty() && m_input[0] == 'A')
                m_obexMode = false;
            if (!m_obexMode) {
                const qsizetype end = m_input.indexOf('\r');
                if (end < 0)
                    break;
                const QByteArray line = m_input.first(end);
                m_input.remove(0, end + 1);
                HandleLine(line);
                continue;
            }
            if (m_input.size() < 3)
                break;
            const qsizetype length = qsizetype(quint8(m_input[1])) << 8 | quint8(m_input[2]);
            if (length < 3) {
                m_input.clear();
                break;
            }
            if (m_input.size() < length)
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
        m_atCommands << QString::fromLatin1(command);
    }
    Answer answer = Answer::Ok;
    if (command == "AT*EOBEX")
        answer = m_options.Eobex;
    else if (command == "AT+CPROT=0")
        answer = m_options.Cprot;
    else if (!command.startsWith("AT"))
        answer = Answer::Error;
    if (answer == Answer::Silent)
        return;
    QByteArray reply = line + '\r';
    switch (answer) {
    case Answer::Connect:
        reply += "\r\nCONNECT\r\n";
        m_obexMode = true;
        break;
    case Answer::Error:
        reply += "\r\nERROR\r\n";
        break;
    case Answer::Ok:
        reply += "\r\nOK\r\n";
        break;
    case Answer::CmeError:
        reply += "\r\n+CME ERROR: 4\r\n";
        break;
    case Answer::EchoOnly:
    case Answer::Silent:
        break;
    }
    Send(reply);
}

void FakePhone::PaceLine(qsizetype bytes) const
{
    if (m_options.LineBps > 0)
        std::this_thread::sleep_for(std::chrono::microseconds(bytes * 10 * 1000000 / m_options.LineBps));
}

void FakePhone::Send(const QByteArray &bytes)
{
    PaceLine(bytes.size());
    qsizetype at = 0;
    while (at < bytes.size() && m_master >= 0) {
        const ssize_t written = ::write(m_master, bytes.constData() + at, size_t(bytes.size() - at));
        if (written <= 0)
            return;
        at += written;
    }
}

void FakePhone::Reply(quint8 code, const QByteArray &headers)
{
    Send(char(code) + Be16(3 + headers.size()) + headers);
}

void FakePhone::HandleRequest(const QByteArray &packet)
{
    PaceLine(packet.size());
    {
        QMutexLocker lock(&m_mutex);
        m_requests << packet;
    }
    if (m_options.VanishAfter >= 0 && m_answered >= m_options.VanishAfter) {
        Vanish();
        return;
    }
    if (m_options.StallAfter >= 0 && m_answered >= m_options.StallAfter)
        return;
    ++m_answered;

    const quint8 opcode = quint8(packet[0]);
    const bool final = opcode & FinalBit;
    switch (opcode & OpcodeMask) {
    case OpConnect & OpcodeMask:
        if (opcode == OpConnect) {
            Reply(RespSuccess, QByteArray::fromHex("10000400") + char(HiConnectionId) + Be32(1));
            return;
        }
        break;
    case OpPut: {
        ++m_putPackets;
        if (m_putPackets == m_options.RejectPut) {
            m_putting = false;
            Reply(RespForbidden);
            return;
        }
        const Headers headers = ParseHeaders(QByteArrayView(packet).sliced(3));
        if (!m_putting) {
            m_putting = true;
            m_putName = Utf16BeName(headers.values.value(HiName));
            m_putBody.clear();
        }
        m_putBody += headers.body;
        if (!final) {
            Reply(RespContinue);
            return;
        }
        m_putting = false;
        {
            QMutexLocker lock(&m_mutex);
            m_files[m_putName] = m_putBody;
        }
        Reply(RespSuccess);
        return;
    }
    case OpDisconnect & OpcodeMask:
        if (opcode == OpDisconnect) {
            Reply(RespSuccess);
            m_obexMode = false;
            QMutexLocker lock(&m_mutex);
            ++m_disconnects;
            return;
        }
        break;
    case OpAbort & OpcodeMask:
        if (opcode == OpAbort) {
            m_putting = false;
            Reply(RespSuccess);
            return;
        }
        break;
    default:
        break;
    }
    Reply(RespBadRequest);
}
