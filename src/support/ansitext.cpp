// SPDX-License-Identifier: GPL-3.0-or-later
#include "ansitext.h"

#include <array>

namespace {

// Code points of the bytes 0x80..0x9F; the rest of Windows-1252 equals Latin-1.
constexpr std::array<char16_t, 32> HighControlBlock = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
constexpr unsigned char FirstHighControl = 0x80;
constexpr unsigned char LastHighControl = 0x9F;
// A byte of a file name that is not UTF-8, kept as a lone surrogate (see
// DecodeFileName): in an archive name it is that byte again.
constexpr char16_t FirstEscapedByte = 0xDC80;
constexpr char16_t LastEscapedByte = 0xDCFF;

char ToAnsiByte(char16_t c)
{
    if (c < FirstHighControl || (c > LastHighControl && c <= 0xFF))
        return static_cast<char>(c);
    for (std::size_t i = 0; i < HighControlBlock.size(); ++i) {
        if (HighControlBlock[i] == c)
            return static_cast<char>(FirstHighControl + i);
    }
    if (c >= FirstEscapedByte && c <= LastEscapedByte)
        return static_cast<char>(c - 0xDC00);
    return '?';
}

} // namespace

QString FromAnsi(QByteArrayView bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    QChar *out = text.data();
    for (const char byte : bytes) {
        const auto b = static_cast<unsigned char>(byte);
        if (b >= FirstHighControl && b <= LastHighControl)
            *out++ = QChar(HighControlBlock[b - FirstHighControl]);
        else
            *out++ = QChar(char16_t(b));
    }
    return text;
}

QByteArray ToAnsi(QStringView text)
{
    QByteArray bytes(text.size(), Qt::Uninitialized);
    char *out = bytes.data();
    for (const QChar c : text)
        *out++ = ToAnsiByte(c.unicode());
    return bytes;
}
