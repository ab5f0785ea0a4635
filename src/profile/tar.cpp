// SPDX-License-Identifier: GPL-3.0-or-later
#include "tar.h"

#include "support/ansitext.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 BlockSize = 512;

// Header layout: offset and length of each field.
namespace Field {
constexpr int NameOffset = 0, NameLength = 100;
constexpr int ModeOffset = 100;
constexpr int SizeOffset = 124, SizeLength = 12;
constexpr int MtimeOffset = 136;
constexpr int ChecksumOffset = 148, ChecksumLength = 8;
constexpr int TypeOffset = 156;
constexpr int MagicOffset = 257;
} // namespace Field

constexpr char RegularFileType = '0';
constexpr qint64 CopyPieceSize = 256 * 1024;

qint64 PaddedLength(qint64 length)
{
    return (length + BlockSize - 1) / BlockSize * BlockSize;
}

QByteArray OctalField(qint64 value, int digits)
{
    return QByteArray::number(value, 8).rightJustified(digits, '0').right(digits) + '\0';
}

// Seconds of the local wall-clock time counted as if it were UTC.
qint64 LocalClockSeconds()
{
    const QDateTime now = QDateTime::currentDateTime();
    return std::max<qint64>(0, now.toSecsSinceEpoch() + now.offsetFromUtc());
}

QByteArray Header(const QByteArray &name, qint64 dataLength)
{
    QByteArray header(BlockSize, '\0');
    auto put = [&header](int offset, const QByteArray &bytes) { header.replace(offset, bytes.size(), bytes); };
    put(Field::NameOffset, name.left(Field::NameLength));
    put(Field::ModeOffset, QByteArray("000644 "));
    put(Field::SizeOffset, OctalField(dataLength, 11));
    put(Field::MtimeOffset, OctalField(LocalClockSeconds(), 11));
    put(Field::ChecksumOffset, QByteArray(Field::ChecksumLength, ' '));
    header[Field::TypeOffset] = RegularFileType;
    // The old GNU magic: "ustar", blank, blank, NUL.
    put(Field::MagicOffset, QByteArray("ustar  "));
    qint64 sum = 0;
    for (const char c : std::as_const(header))
        sum += static_cast<unsigned char>(c);
    put(Field::ChecksumOffset, OctalField(sum, 7));
    return header;
}

bool IsPlaceholder(const QByteArray &data)
{
    return data.size() == 1 && data[0] == '\0';
}

QByteArray Placeholder()
{
    return QByteArray(1, '\0');
}

} // namespace

std::optional<std::int32_t> cTar::OctalToLong(QByteArrayView field)
{
    QByteArray text;
    for (const char c : field) {
        if (c != '\0')
            text += c;
    }
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == ' ')
        ++begin;
    while (end > begin && text[end - 1] == ' ')
        --end;
    while (begin < end && text[begin] == '0')
        ++begin;
    double value = 0;
    for (qsizetype i = begin; i < end; ++i) {
        const char c = text[i];
        const int digit = (c >= '0' && c <= '9') ? c - '0' : 0;
        value = value * 8 + digit;
    }
    const double rounded = std::nearbyint(value);
    if (rounded > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return static_cast<std::int32_t>(rounded);
}

bool cTar::GetContents(const QString &archivePath)
{
    m_fileError = FileError();
    m_archivePath = archivePath;
    m_entries.clear();
    QFile file;
    if (!OpenForReading(file, archivePath, &m_fileError))
        return false;
    const qint64 fileSize = file.size();
    m_archiveSize = fileSize;
    qint64 position = 0;
    while (position + BlockSize <= fileSize) {
        if (!file.seek(position))
            return false;
        const QByteArray header = file.read(BlockSize);
        if (header.size() != BlockSize)
            break; // a header cut short by the end of the file counts as empty
        TarEntry entry;
        for (const char c : QByteArrayView(header).first(Field::NameLength)) {
            if (c != '\0')
                entry.Name += FromAnsi(QByteArrayView(&c, 1));
        }
        if (entry.Name.isEmpty())
            break;
        if (m_entries.size() >= MaximumEntries)
            return false;
        const std::optional<std::int32_t> size =
            OctalToLong(QByteArrayView(header).sliced(Field::SizeOffset, Field::SizeLength));
        if (!size)
            return false;
        position += BlockSize;
        entry.Size = *size;
        entry.DataOffset = position;
        m_entries.append(entry);
        position += PaddedLength(entry.Size);
    }
    return true;
}

bool cTar::IsBadIndex(int entry) const
{
    return entry < 1 || entry > TotalFiles();
}

QString cTar::Filename(int entry) const
{
    return IsBadIndex(entry) ? QString() : m_entries[entry - 1].Name;
}

std::int32_t cTar::Size(int entry) const
{
    return IsBadIndex(entry) ? 0 : m_entries[entry - 1].Size;
}

bool cTar::IsCut(int entry) const
{
    return !IsBadIndex(entry) && m_entries[entry - 1].DataOffset + m_entries[entry - 1].Size > m_archiveSize;
}

bool cTar::IsDir(int entry) const
{
    return !IsBadIndex(entry) && m_entries[entry - 1].Size == 0 && m_entries[entry - 1].Name.endsWith(u'/');
}

QByteArray cTar::FileToArray(int entry) const
{
    if (IsBadIndex(entry) || IsDir(entry) || Size(entry) <= 0)
        return Placeholder();
    m_fileError = FileError();
    QFile file;
    if (!OpenForReading(file, m_archivePath, &m_fileError))
        return Placeholder();
    const TarEntry &e = m_entries[entry - 1];
    // Never more than the file holds, whatever the header says.
    const qint64 available = std::clamp<qint64>(file.size() - e.DataOffset, 0, e.Size);
    if (available == 0 || !file.seek(e.DataOffset))
        return Placeholder();
    QByteArray data = file.read(available);
    return data.isEmpty() ? Placeholder() : data;
}

bool cTar::ExtractFile(const QString &destination, int entry) const
{
    m_fileError = FileError();
    if (!MakeFolders(QFileInfo(destination).path(), &m_fileError))
        return false;
    if (IsBadIndex(entry) || IsDir(entry) || Size(entry) <= 0)
        return false;
    QFile in;
    if (!OpenForReading(in, m_archivePath, &m_fileError))
        return false;
    const TarEntry &e = m_entries[entry - 1];
    qint64 remaining = std::clamp<qint64>(in.size() - e.DataOffset, 0, e.Size);
    if (remaining == 0 || !in.seek(e.DataOffset))
        return false;

    // One pass over the data, in pieces: the first piece tells the stored empty
    // placeholder (a single byte 0) from real data.
    WholeFileWriter out(destination);
    const auto writeFailed = [this, &out] {
        m_fileError = out.Error();
        return false;
    };
    bool first = true;
    while (remaining > 0) {
        const QByteArray piece = in.read(std::min(remaining, CopyPieceSize));
        if (piece.isEmpty())
            return false;
        if (first && remaining == 1 && IsPlaceholder(piece))
            return false;
        if (first && !out.Open())
            return writeFailed();
        first = false;
        if (!out.Write(piece))
            return writeFailed();
        remaining -= piece.size();
    }
    return out.Commit() || writeFailed();
}

void cTar::AddFile(const QString &sourcePath, const QString &nameInArchive, const QString &content)
{
    m_pending.append(PendingFile{sourcePath, nameInArchive, content});
}

bool cTar::CreateTarFile(const QString &archivePath) const
{
    m_fileError = FileError();
    if (m_pending.isEmpty())
        return false;
    WholeFileWriter out(archivePath);
    const auto writeFailed = [this, &out] {
        m_fileError = out.Error();
        return false;
    };
    if (!out.Open())
        return writeFailed();
    for (const PendingFile &pending : m_pending) {
        const QByteArray name = ToAnsi(pending.ArchiveName);
        if (!pending.Content.isEmpty()) {
            const QByteArray content = ToAnsi(pending.Content);
            // Content text is not padded: the next header follows directly.
            if (!out.Write(Header(name, content.size())) || !out.Write(content))
                return writeFailed();
            continue;
        }
        if (pending.SourcePath.isEmpty() || !PathExists(pending.SourcePath))
            continue;
        QFile source;
        if (!OpenForReading(source, pending.SourcePath, &m_fileError))
            return false;
        const qint64 length = source.size();
        if (!out.Write(Header(name, length)))
            return writeFailed();
        qint64 remaining = length;
        while (remaining > 0) {
            const QByteArray piece = source.read(std::min(remaining, CopyPieceSize));
            if (piece.isEmpty()) {
                // The source shrank or vanished while copying.
                m_fileError = FileError{FileProblem::Other, pending.SourcePath, EIO};
                return false;
            }
            if (!out.Write(piece))
                return writeFailed();
            remaining -= piece.size();
        }
        if (!out.Write(QByteArray(PaddedLength(length) - length, '\0')))
            return writeFailed();
    }
    if (!out.Write(QByteArray(BlockSize, '\0')))
        return writeFailed();
    return out.Commit() || writeFailed();
}
