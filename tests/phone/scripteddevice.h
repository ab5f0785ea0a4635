// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QIODevice>

// A phone as a script: the bytes it will send, all at once, and everything the
// client wrote. Once the script is read, a wait for more times out at once.
class ScriptedDevice : public QIODevice
{
public:
    explicit ScriptedDevice(const QByteArray &answers = {}) : m_answers(answers)
    {
        open(QIODevice::ReadWrite | QIODevice::Unbuffered);
    }

    QByteArray Written() const { return m_written; }
    // How long the client last offered to wait for more bytes; -1 before it did.
    int LastWaitMs() const { return m_lastWaitMs; }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return m_answers.size() - m_readAt + QIODevice::bytesAvailable(); }
    bool waitForReadyRead(int msecs) override
    {
        m_lastWaitMs = msecs;
        return false;
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 count = qMin(maxSize, m_answers.size() - m_readAt);
        std::copy_n(m_answers.constData() + m_readAt, count, data);
        m_readAt += count;
        return count;
    }
    qint64 writeData(const char *data, qint64 size) override
    {
        m_written.append(data, size);
        return size;
    }

private:
    QByteArray m_answers;
    qint64 m_readAt = 0;
    QByteArray m_written;
    int m_lastWaitMs = -1;
};

// "A0 00 03" as bytes.
inline QByteArray Hex(const char *spaced)
{
    return QByteArray::fromHex(QByteArray(spaced).replace(' ', ""));
}

// Bytes without a short period, so that a piece sent twice or out of order shows.
inline QByteArray TestData(qsizetype size)
{
    QByteArray data(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        data[i] = char((i * 13 + i / 509) & 0xFF);
    return data;
}
