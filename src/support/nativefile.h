// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <memory>

class QFile;
class QSaveFile;
class QUrl;

// Every file the program reads or writes on the user's behalf goes through
// here: names that are not UTF-8 survive the trip through QString, a reader
// never blocks on a pipe or a device, and a file written is complete or absent.

// Why a file could not be read or written.
enum class FileProblem {
    None,
    Missing, // nothing at the path
    FolderMissing, // the folder that should hold the file is not there
    NotRegularFile, // a folder, pipe, device or socket
    NoPermission,
    DiskFull,
    TooLarge, // beyond a file-size limit, or more than the program takes in
    Other, // see SystemError
};

struct FileError
{
    FileProblem Problem = FileProblem::None;
    QString Path;
    int SystemError = 0; // the system's error number behind Other

    bool Any() const { return Problem != FileProblem::None; }
};

// File names as the system spells them, in bytes, to text and back without
// loss. On Unix valid UTF-8 decodes as usual and each byte of an invalid
// sequence becomes the lone surrogate U+DC80 + byte, which encoding turns back
// into that byte. Elsewhere names are UTF-16 already and these are Qt's own.
QString DecodeFileName(QByteArrayView name);
QByteArray EncodeFileName(QStringView name);
// The program's arguments after its own name, decoded as file names.
QStringList DecodeArguments(int argc, const char *const *argv);
// The local file a file: URL names (a dropped file), empty for other URLs. The
// URL's percent-encoded bytes are the name's bytes, so a name that is not
// UTF-8 comes through as DecodeFileName gives it.
QString LocalFileFromUrl(const QUrl &url);
// The path made absolute against the working folder and cleaned, by text
// alone: QFileInfo's own would pass it through the lossy conversion.
QString AbsoluteFilePath(const QString &path);

// Whether anything (a file, folder, pipe ...) is at the path.
bool PathExists(const QString &path);
bool IsRegularFile(const QString &path);

// Opens a regular file for reading; anything else is refused without opening
// it, so a pipe or a device never blocks the caller. False with *error set when
// the file cannot be read; the file is then closed.
[[nodiscard]] bool OpenForReading(QFile &file, const QString &path, FileError *error = nullptr);

// Writes a file that is complete or absent: the bytes go to a new file beside
// the target, which replaces the target (taking its permissions) only once
// every byte is on disk. Until Commit() succeeds the target stays as it was;
// a writer destroyed uncommitted leaves no trace. A target that exists and is
// not a regular file is refused.
class WholeFileWriter
{
public:
    explicit WholeFileWriter(const QString &path);
    ~WholeFileWriter();
    WholeFileWriter(const WholeFileWriter &) = delete;
    WholeFileWriter &operator=(const WholeFileWriter &) = delete;

    [[nodiscard]] bool Open();
    [[nodiscard]] bool Write(QByteArrayView bytes);
    [[nodiscard]] bool Commit();
    // Drops what was written; the target stays as it was.
    void Discard();
    // Why the last step failed; its path is the target's.
    const FileError &Error() const { return m_error; }

private:
    bool Fail(FileProblem problem, int systemError = 0);

    QString m_path;
    qint64 m_written = 0;
    FileError m_error;
#ifdef Q_OS_UNIX
    QByteArray m_target; // the path in the system's bytes, links followed
    QByteArray m_partial; // the new file until it replaces the target
    int m_handle = -1;
#else
    std::unique_ptr<QSaveFile> m_file;
#endif
};

[[nodiscard]] bool WriteWholeFile(const QString &path, QByteArrayView bytes, FileError *error = nullptr);
// Copies a regular file; the target is complete or as it was before.
[[nodiscard]] bool CopyWholeFile(const QString &source, const QString &target, FileError *error = nullptr);

// Creates a folder with every missing level above it.
[[nodiscard]] bool MakeFolders(const QString &folder, FileError *error = nullptr);
// Removes a file; false when it could not be removed (or was not there).
bool RemoveFile(const QString &path);
// Why no new file can be made in the folder (None when one can, as far as the
// system tells beforehand).
FileError FolderWriteProblem(const QString &folder);
