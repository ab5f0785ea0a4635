// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QLoggingCategory>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>

class QIODevice;
class QSerialPort;

Q_DECLARE_LOGGING_CATEGORY(lcPhone)
// Every byte written to and read from the port, in hexadecimal.
Q_DECLARE_LOGGING_CATEGORY(lcPhoneWire)

// How long a read waits for the next byte, and the time a write of n bytes
// may take: WriteTimeoutPerByteMs * n + WriteTimeoutConstantMs.
inline constexpr int DefaultReadTimeoutMs = 5000;
inline constexpr int WriteTimeoutPerByteMs = 10;
inline constexpr int WriteTimeoutConstantMs = 100;
// How often a waiting read looks at its cancel flag.
inline constexpr int CancelCheckMs = 50;

// One AT answer may not grow beyond this, far above anything a phone answers
// (a few hundred bytes); a phone that streams without ever ending a line gets
// its answer cut here.
inline constexpr qsizetype MaxAtResponseBytes = 64 * 1024;
// An OBEX packet's length field cannot say more than this.
inline constexpr qsizetype MaxObexPacketBytes = 0xFFFF;

// The answer to an AT command. Success is true only when a success code
// (OK, CONNECT, RING, ">") ended the answer; Raw holds the whole answer when it
// was not blank.
struct AtResponse
{
    QString Echo;
    QString Info;
    bool Success = false;
    QString Raw;

    bool operator==(const AtResponse &) const = default;
};

// Classifies a collected answer (as ReadAtResponse returns it) into its parts.
AtResponse ParseAtResponse(const QString &answer);

// Why a port could not be opened.
enum class PortOpenError {
    None,
    NotFound, // no such device
    InUse, // another program holds it, or the user may not open it: which one is not known
    HeldByProgram, // a running program has it open (LastOpenHolder() says which)
    LeftLocked, // locked for exclusive use, yet no program has it open: one that was killed left it so
    Other,
};

// A running program that has a port open.
struct PortHolder
{
    QString Program;
    qint64 ProcessId = 0;
};

// The link to the phone: one serial port (or any open QIODevice standing in for
// one), AT commands on it, and the raw bytes of OBEX packets. Reads block; each
// waits at most the read time-out for the next byte. Bytes that arrive together
// are read together and kept for the next call, so no byte of a later answer is
// lost. Use one link from one thread at a time: the port belongs to the thread
// that opened it.
class SerialLink
{
public:
    SerialLink();
    // Works on an already open device, which the link does not own or close.
    explicit SerialLink(QIODevice *device);
    ~SerialLink();
    SerialLink(const SerialLink &) = delete;
    SerialLink &operator=(const SerialLink &) = delete;

    // Opens a serial port by name ("COM3", "/dev/rfcomm0", "ttyUSB0") at the
    // speed, 8 data bits, no parity, 1 stop bit, no flow control, DTR and RTS on
    // where the port has them, and sets the read time-out to 5000 ms. On failure
    // returns false and LastOpenError() says why.
    [[nodiscard]] bool OpenPort(const QString &portName, qint32 speed);
    // Closes a port opened by OpenPort. True when there was nothing to close or
    // the port closed cleanly.
    bool ClosePort();
    [[nodiscard]] bool IsOpen() const;
    [[nodiscard]] PortOpenError LastOpenError() const { return m_openError; }
    // With LastOpenError() HeldByProgram: the program found holding the port.
    [[nodiscard]] PortHolder LastOpenHolder() const { return m_holder; }

    void SetReadTimeout(int milliseconds);
    [[nodiscard]] int ReadTimeout() const { return m_readTimeoutMs; }
    // While set, a read from a port opened by OpenPort that waits for a byte
    // ends within CancelCheckMs once the flag turns true, as if its time-out
    // had passed. The flag may be set
    // from any thread or a signal handler; nullptr waits the full time-out.
    void SetCancelFlag(const std::atomic<bool> *flag) { m_cancel = flag; }

    // Writes all bytes within the write time-out; false when the link is not
    // open or not every byte went out.
    [[nodiscard]] bool WritePort(QByteArrayView bytes);
    // Collects one modem answer up to and including the line of its final
    // result code, or what came before the read time-out. "" when not open.
    QString ReadAtResponse();
    // Sends a command ("AT..." followed by CR; other text is a message body and
    // gets Ctrl-Z) and classifies the answer. A fresh AtResponse when the write
    // failed or nothing but blanks came back.
    AtResponse SendAtCommand(const QString &command);
    // Reads one OBEX packet: as soon as the bytes gathered match the length in
    // its 3-byte prefix, or what came before the read time-out. "" when not open.
    QByteArray ReadObexPacket();

private:
    bool NextByte(char &byte);
    void DropPending();

    QIODevice *m_device = nullptr;
    std::unique_ptr<QSerialPort> m_port;
    // Taken at opening: a port whose device went away may no longer know it,
    // and the signal handlers' list must still be cleared of it.
    int m_portDescriptor = -1;
    PortOpenError m_openError = PortOpenError::None;
    PortHolder m_holder;
    int m_readTimeoutMs = DefaultReadTimeoutMs;
    const std::atomic<bool> *m_cancel = nullptr;
    QByteArray m_pending;
    qsizetype m_pendingPos = 0;
};

// Takes every port opened by a SerialLink in this process out of exclusive mode,
// using only async-signal-safe calls: for a signal handler that ends the
// program while a port is open, so that the next program can open it.
void ReleasePortsFromSignalHandler();

// The serial ports the settings offer: on Windows the COM ports of the system,
// elsewhere /dev/rfcomm0, /dev/ttyACM0 and /dev/ttyUSB0 followed by any other
// serial device found.
QStringList OfferedPorts();
