// SPDX-License-Identifier: GPL-3.0-or-later
#include "clioutput.h"

#include "support/nativefile.h"

#include <cstdio>

#ifdef Q_OS_WIN
#include <fcntl.h>
#include <io.h>
#endif

using namespace Qt::StringLiterals;

void WriteStdout(const QByteArray &bytes)
{
#ifdef Q_OS_WIN
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

void WriteStderr(const QString &message)
{
    QString text = message;
#ifndef Q_OS_WIN
    text.replace("\r\n"_L1, "\n"_L1);
#endif
    if (!text.endsWith(u'\n'))
        text += u'\n';
#ifdef Q_OS_WIN
    const QByteArray bytes = text.toLocal8Bit();
#else
    // File names in messages come out as the system spelled them.
    const QByteArray bytes = EncodeFileName(text);
#endif
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

void Complain(const QString &message)
{
    WriteStderr("padmapper-cli: "_L1 + message);
}
