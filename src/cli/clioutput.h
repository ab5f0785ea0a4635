// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// Exit statuses of the console tool.
namespace ExitStatus {
inline constexpr int Success = 0;
inline constexpr int Failure = 1;
inline constexpr int Usage = 2;
} // namespace ExitStatus

// Bytes to standard output as they are (no line-end translation).
void WriteStdout(const QByteArray &bytes);
// A message for a person on standard error: CR LF becomes the platform's line
// end, a final line end is added, text in the terminal's encoding.
void WriteStderr(const QString &message);
// "padmapper-cli: " and the message on standard error.
void Complain(const QString &message);
