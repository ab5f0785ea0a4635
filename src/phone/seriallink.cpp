// SPDX-License-Identifier: GPL-3.0-or-later
#include "seriallink.h"

#include "support/ansitext.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QRegularExpression>
#include <QSerialPort>
#include <QSerialPortInfo>

#include <algorithm>
#include <array>
#include <atomic>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcPhone, "padmapper.phone", QtWarningMsg)
Q_LOGGING_CATEGORY(lcPhoneWire, "padmapper.phone.wire", QtWarningMsg)

namespace {

constexpr char LineFeed = '\n';
constexpr char CarriageReturn = '\r';
constexpr char CtrlZ = 26;
// The text-entry prompt a phone shows when it waits for a message body.
constexpr QByteArrayView TextPrompt = "\r\n> ";
// Bytes taken from the port in one read.
constexpr qint64 ReadChunkBytes = 4096;
// What the port may hold for us between reads.
constexpr qint64 PortReadBufferBytes = 64 * 1024;

// Final result lines that end an answer; a "*" at the end matches any tail.
constexpr std::array<QLatin1StringView, 9> FinalResultPatterns = {
    "OK"_L1,         "ERROR"_L1, "BUSY"_L1,         "CONNECT"_L1,      "NO DIALTONE"_L1,
    "NO CARRIER"_L1, "RING"_L1,  "+CME ERROR:*"_L1, "+CMS ERROR:*"_L1,
};
constexpr std::array<QLatin1StringView, 4> SuccessCodes = {"OK"_L1, "CONNECT"_L1, "RING"_L1, ">"_L1};
constexpr std::array<QLatin1StringView, 4> FailureCodes = {"NO CARRIER"_L1, "ERROR"_L1, "BUSY"_L1, "NO DIALTONE"_L1};

// Modem texts are trimmed of blanks only, not of other white space: a line that
// still holds a CR is not a result code.
QByteArrayView TrimBlanks(QByteArrayView text)
{
    while (!text.isEmpty() && text.front() == ' ')
        text = text.sliced(1);
    while (!text.isEmpty() && text.back() == ' ')
        text.chop(1);
    return text;
}

QStringView TrimBlanks(QStringView text)
{
    while (!text.isEmpty() && text.front() == u' ')
        text = text.sliced(1);
    while (!text.isEmpty() && text.back() == u' ')
        text.chop(1);
    return text;
}

bool IsFinalResultLine(QByteArrayView line)
{
    if (line.endsWith(CarriageReturn))
        line.chop(1);
    const QByteArray upper = TrimBlanks(line).toByteArray().toUpper();
    return std::any_of(FinalResultPatterns.begin(), FinalResultPatterns.end(), [&](QLatin1StringView pattern) {
        if (pattern.endsWith(u'*'))
            return upper.startsWith(QByteArrayView(pattern.chopped(1)));
        return upper == QByteArrayView(pattern);
    });
}

#ifdef Q_OS_UNIX
// The descriptors of the ports open in this process, each stored plus one so
// that 0 marks a free slot; read by ReleasePortsFromSignalHandler.
std::array<std::atomic<int>, 8> g_openPorts{};

void RememberOpenPort(int descriptor)
{
    for (std::atomic<int> &slot : g_openPorts) {
        int free = 0;
        if (slot.compare_exchange_strong(free, descriptor + 1))
            return;
    }
}

void ForgetOpenPort(int descriptor)
{
    for (std::atomic<int> &slot : g_openPorts) {
        int held = descriptor + 1;
        if (slot.compare_exchange_strong(held, 0))
            return;
    }
}

// The device a port name stands for, as the serial port opens it.
QByteArray DevicePath(const QString &portName)
{
    if (portName.startsWith(u'/') || portName.startsWith("./"_L1) || portName.startsWith("../"_L1))
        return QFile::encodeName(portName);
    return QFile::encodeName("/dev/"_L1 + portName);
}

// Looks through the open files of every process this user may see for the
// character device; the first process found holding it fills holder.
bool FindPortHolder(dev_t device, PortHolder &holder)
{
    DIR *processes = ::opendir("/proc");
    if (!processes)
        return false;
    bool found = false;
    while (const dirent *process = ::readdir(processes)) {
        char *end = nullptr;
        const long processId = std::strtol(process->d_name, &end, 10);
        if (processId <= 0 || *end != '\0')
            continue;
        const QByteArray fdFolder = "/proc/" + QByteArray(process->d_name) + "/fd/";
        DIR *descriptors = ::opendir(fdFolder.constData());
        if (!descriptors)
            continue; // another user's process, or one that just ended
        while (const dirent *descriptor = ::readdir(descriptors)) {
            struct stat target
            {};
            const QByteArray link = fdFolder + descriptor->d_name;
            if (descriptor->d_name[0] != '.' && ::stat(link.constData(), &target) == 0 && S_ISCHR(target.st_mode)
                && target.st_rdev == device) {
                found = true;
                break;
            }
        }
        ::closedir(descriptors);
        if (found) {
            QFile name(u"/proc/%1/comm"_s.arg(processId));
            holder.ProcessId = processId;
            holder.Program = name.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(name.readAll().trimmed())
                                                            : QString();
            break;
        }
    }
    ::closedir(processes);
    return found;
}

// A port the serial port could not open although it exists: a running program
// may have it open, or a program that ended without closing it (killed, say)
// left it locked for exclusive use, which only closing it properly, or the
// device going away, clears.
PortOpenError ExplainRefusedPort(const QString &portName, PortHolder &holder)
{
    const QByteArray path = DevicePath(portName);
    struct stat device
    {};
    if (::stat(path.constData(), &device) != 0 || !S_ISCHR(device.st_mode))
        return PortOpenError::InUse;
    if (FindPortHolder(device.st_rdev, holder))
        return PortOpenError::HeldByProgram;
    const int descriptor = ::open(path.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor >= 0) {
        ::close(descriptor);
        return PortOpenError::InUse;
    }
    return errno == EBUSY ? PortOpenError::LeftLocked : PortOpenError::InUse;
}
#endif

template<std::size_t N>
bool IsOneOf(QStringView text, const std::array<QLatin1StringView, N> &codes)
{
    return std::find(codes.begin(), codes.end(), text) != codes.end();
}

} // namespace

AtResponse ParseAtResponse(const QString &answer)
{
    AtResponse response;
    if (TrimBlanks(QStringView(answer)).isEmpty())
        return response;
    const QStringList pieces = answer.split("\r\n"_L1);
    response.Echo = pieces.first();
    for (qsizetype i = 1; i < pieces.size(); ++i) {
        const QString code = TrimBlanks(QStringView(pieces[i])).toString().toUpper();
        if (code.isEmpty())
            continue;
        if (IsOneOf(code, SuccessCodes)) {
            response.Success = true;
            break;
        }
        if (IsOneOf(code, FailureCodes))
            break;
        if (!response.Info.isEmpty())
            response.Info += "\r\n"_L1;
        response.Info += pieces[i];
    }
    response.Raw = answer;
    return response;
}

SerialLink::SerialLink() = default;

SerialLink::SerialLink(QIODevice *device) : m_device(device)
{
}

SerialLink::~SerialLink()
{
    ClosePort();
}

bool SerialLink::OpenPort(const QString &portName, qint32 speed)
{
    ClosePort();
    m_device = nullptr;
    m_openError = PortOpenError::None;
    m_holder = PortHolder();
    auto port = std::make_unique<QSerialPort>(portName);
    port->setReadBufferSize(PortReadBufferBytes);
    if (!port->open(QIODevice::ReadWrite)) {
        qCInfo(lcPhone) << "cannot open" << portName << port->errorString();
        switch (port->error()) {
        case QSerialPort::DeviceNotFoundError:
            m_openError = PortOpenError::NotFound;
            break;
        case QSerialPort::PermissionError:
#ifdef Q_OS_UNIX
            m_openError = ExplainRefusedPort(portName, m_holder);
#else
            m_openError = PortOpenError::InUse;
#endif
            break;
        default:
            m_openError = PortOpenError::Other;
            break;
        }
        return false;
    }
    // A port that cannot take a setting keeps its own: a pseudo-terminal has no
    // modem lines, a virtual Bluetooth port ignores the speed.
    if (!port->setBaudRate(speed) || !port->setDataBits(QSerialPort::Data8) || !port->setParity(QSerialPort::NoParity)
        || !port->setStopBits(QSerialPort::OneStop) || !port->setFlowControl(QSerialPort::NoFlowControl))
        qCInfo(lcPhone) << "port settings not taken:" << port->errorString();
    if (!port->setDataTerminalReady(true) || !port->setRequestToSend(true))
        qCDebug(lcPhone) << "no DTR/RTS on" << portName << port->errorString();
    port->clearError();
#ifdef Q_OS_UNIX
    m_portDescriptor = port->handle();
    RememberOpenPort(m_portDescriptor);
#endif
    m_port = std::move(port);
    m_device = m_port.get();
    SetReadTimeout(DefaultReadTimeoutMs);
    return true;
}

bool SerialLink::ClosePort()
{
    DropPending();
    if (!m_port)
        return true;
#ifdef Q_OS_UNIX
    ForgetOpenPort(m_portDescriptor);
    m_portDescriptor = -1;
#endif
    m_port->close();
    const bool closed = m_port->error() == QSerialPort::NoError;
    m_port.reset();
    m_device = nullptr;
    return closed;
}

bool SerialLink::IsOpen() const
{
    return m_device && m_device->isOpen();
}

void SerialLink::SetReadTimeout(int milliseconds)
{
    m_readTimeoutMs = std::max(0, milliseconds);
}

bool SerialLink::WritePort(QByteArrayView bytes)
{
    if (!IsOpen())
        return false;
    qCDebug(lcPhoneWire) << "out" << bytes.toByteArray().toHex(' ');
    const QDeadlineTimer deadline(WriteTimeoutPerByteMs * bytes.size() + WriteTimeoutConstantMs);
    if (m_device->write(bytes.data(), bytes.size()) != bytes.size())
        return false;
    while (m_device->bytesToWrite() > 0) {
        if (deadline.hasExpired() || !m_device->waitForBytesWritten(int(deadline.remainingTime()))) {
            if (m_port)
                m_port->clear(QSerialPort::Output);
            return false;
        }
    }
    return true;
}

void SerialLink::DropPending()
{
    m_pending.clear();
    m_pendingPos = 0;
}

bool SerialLink::NextByte(char &byte)
{
    if (m_pendingPos < m_pending.size()) {
        byte = m_pending[m_pendingPos++];
        return true;
    }
    DropPending();
    if (!IsOpen())
        return false;
    const QDeadlineTimer deadline(m_readTimeoutMs);
    for (;;) {
        if (m_device->bytesAvailable() > 0) {
            m_pending = m_device->read(ReadChunkBytes);
            if (!m_pending.isEmpty()) {
                qCDebug(lcPhoneWire) << "in" << m_pending.toHex(' ');
                m_pendingPos = 1;
                byte = m_pending[0];
                return true;
            }
        }
        if (m_cancel && m_cancel->load())
            return false;
        // With a cancel flag a port waits in slices, so that a cancel is seen
        // soon; a slice that ran out is no reason to stop (only a port tells
        // that from an error). An error (the port went away) ends the wait at
        // once, like a time-out.
        const bool sliced = m_cancel && m_port;
        const qint64 slice = sliced ? std::min<qint64>(deadline.remainingTime(), CancelCheckMs)
                                    : deadline.remainingTime();
        if (deadline.hasExpired() || !m_device->waitForReadyRead(int(slice))) {
            if (m_device->bytesAvailable() > 0)
                return NextByte(byte);
            if (deadline.hasExpired() || !sliced || m_port->error() != QSerialPort::TimeoutError)
                return false;
            m_port->clearError();
        }
    }
}

QString SerialLink::ReadAtResponse()
{
    if (!IsOpen())
        return QString();
    QByteArray answer;
    char byte = 0;
    while (answer.size() < MaxAtResponseBytes && NextByte(byte)) {
        if (byte == LineFeed) {
            const qsizetype lineStart = answer.lastIndexOf(LineFeed) + 1;
            if (IsFinalResultLine(QByteArrayView(answer).sliced(lineStart))) {
                answer += byte;
                break;
            }
        }
        answer += byte;
        if (answer.endsWith(TextPrompt)) {
            answer += byte;
            break;
        }
    }
    return FromAnsi(answer);
}

AtResponse SerialLink::SendAtCommand(const QString &command)
{
    const bool isCommand = command.startsWith("AT"_L1, Qt::CaseInsensitive);
    const QByteArray bytes = ToAnsi(command) + (isCommand ? CarriageReturn : CtrlZ);
    if (!WritePort(bytes))
        return AtResponse();
    return ParseAtResponse(ReadAtResponse());
}

QByteArray SerialLink::ReadObexPacket()
{
    if (!IsOpen())
        return QByteArray();
    QByteArray packet;
    qsizetype length = 0;
    char byte = 0;
    while (packet.size() < MaxObexPacketBytes && NextByte(byte)) {
        packet += byte;
        if (packet.size() == 3)
            length = (qsizetype(quint8(packet[1])) << 8) | quint8(packet[2]);
        if (length != 0 && length == packet.size())
            break;
        if (length > packet.size()) {
            // Take what is already waiting of the rest in one piece.
            const qsizetype take = std::min(length - packet.size(), m_pending.size() - m_pendingPos);
            packet.append(m_pending.constData() + m_pendingPos, take);
            m_pendingPos += take;
            if (length == packet.size())
                break;
        }
    }
    return packet;
}

void ReleasePortsFromSignalHandler()
{
#if defined(Q_OS_UNIX) && defined(TIOCNXCL)
    for (const std::atomic<int> &slot : g_openPorts) {
        if (const int held = slot.load(); held > 0)
            ::ioctl(held - 1, TIOCNXCL);
    }
#endif
}

QStringList OfferedPorts()
{
    QStringList ports;
#ifdef Q_OS_WIN
    static const QRegularExpression comName(u"^COM[0-9]+$"_s);
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
        if (comName.match(info.portName()).hasMatch() && !ports.contains(info.portName()))
            ports << info.portName();
    }
#else
    ports << u"/dev/rfcomm0"_s << u"/dev/ttyACM0"_s << u"/dev/ttyUSB0"_s;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
        if (!ports.contains(info.systemLocation()))
            ports << info.systemLocation();
    }
#endif
    return ports;
}
