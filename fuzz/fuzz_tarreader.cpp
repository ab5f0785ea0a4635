// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as an archive file: listing and reading every entry must end
// without fault and hand out no more than the file holds.
#include "profile/tar.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

QString ScratchPath(const char *name)
{
    return QDir::tempPath() + QStringLiteral("/padmapper-fuzz-%1-").arg(QCoreApplication::applicationPid())
           + QString::fromLatin1(name);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QString archive = ScratchPath("archive.tar");
    static const QString extracted = ScratchPath("entry.bin");
    {
        QFile file(archive);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size));
    }
    cTar tar;
    (void)tar.GetContents(archive);
    if (tar.TotalFiles() > cTar::MaximumEntries || qint64(tar.TotalFiles()) * 512 > qint64(size))
        std::abort();
    for (int entry = 0; entry <= tar.TotalFiles() + 1; ++entry) {
        (void)tar.Filename(entry);
        (void)tar.IsDir(entry);
        const QByteArray bytes = tar.FileToArray(entry);
        if (bytes.size() > std::max<qsizetype>(1, qsizetype(size)) || bytes.isEmpty())
            std::abort();
        if (tar.ExtractFile(extracted, entry) && QFileInfo(extracted).size() != bytes.size())
            std::abort();
        QFile::remove(extracted);
    }
    return 0;
}
