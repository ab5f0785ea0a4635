// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Small file helpers shared by the tests.

#include <QByteArray>
#include <QFile>
#include <QString>

// The whole file, or nothing when it cannot be read.
inline QByteArray ReadAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaces the file with the bytes; false when that failed.
inline bool WriteFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}
