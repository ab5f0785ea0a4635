// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/nativefile.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <optional>

// One entry of a listed archive.
struct TarEntry
{
    QString Name; // the name field with every NUL removed
    std::int32_t Size = 0; // the size field read as octal
    qint64 DataOffset = 0; // where the entry's data starts in the file
};

// One file to add when writing an archive: the bytes of SourcePath, or the
// Content text (Windows-1252) when that is not empty.
struct PendingFile
{
    QString SourcePath;
    QString ArchiveName;
    QString Content;
};

// A small reader and writer of the tar archives profiles are stored in.
//
// The reader trusts only the name and size fields, stops at the first header
// whose name is empty (or that lies wholly or partly beyond the end of the
// file) and lists anything else as a plain entry, extension headers included.
// Entries are numbered from 1; a bad number gives an empty result.
//
// The writer stores every entry as a regular file with mode 644 under the old
// GNU magic, pads file data to 512 bytes but not content text, and ends the
// archive with a single zero block.
class cTar
{
public:
    // The most entries a listing may hold; a longer archive does not list.
    static constexpr int MaximumEntries = 32767;

    int TotalFiles() const { return static_cast<int>(m_entries.size()); }

    // Lists the archive. False when the file cannot be read or holds too many
    // entries or a size beyond 32 bits; the list then keeps what was read.
    [[nodiscard]] bool GetContents(const QString &archivePath);

    // The entry's data. A bad number, a directory or an empty entry give the
    // placeholder: one byte 0. Data the header promises beyond the end of the
    // file is not there and not returned (see IsCut).
    QByteArray FileToArray(int entry) const;

    // Writes the entry's data to a file, making its folder as needed. False for
    // a bad number, for data that is the placeholder (empty, or the single byte
    // 0), or when the file cannot be written. Of a cut entry it writes what the
    // archive holds: a caller that needs the whole entry asks IsCut first.
    [[nodiscard]] bool ExtractFile(const QString &destination, int entry) const;

    QString Filename(int entry) const;
    bool IsDir(int entry) const;
    std::int32_t Size(int entry) const;
    // True when the entry's header promises more data than the archive held
    // when it was listed: the file was cut short. False for a bad number.
    bool IsCut(int entry) const;
    const QList<TarEntry> &Entries() const { return m_entries; }

    void AddFile(const QString &sourcePath, const QString &nameInArchive, const QString &content);

    // Writes all pending files as a new archive, which replaces the file at the
    // path only once it is complete. A pending file whose source does not exist
    // is skipped. False when nothing was added, or the archive could not be
    // written (the previous file then stays as it was).
    [[nodiscard]] bool CreateTarFile(const QString &archivePath) const;

    // The number an octal header field spells: NULs and outer blanks dropped,
    // every non-digit counting 0 and 8 and 9 at face value. Empty on overflow.
    static std::optional<std::int32_t> OctalToLong(QByteArrayView field);

    // Why the last GetContents, FileToArray, ExtractFile or CreateTarFile could
    // not read or write a file; no problem when it did not fail for that.
    const FileError &LastFileError() const { return m_fileError; }

private:
    bool IsBadIndex(int entry) const;

    QString m_archivePath;
    qint64 m_archiveSize = 0;
    QList<TarEntry> m_entries;
    QList<PendingFile> m_pending;
    mutable FileError m_fileError;
};
