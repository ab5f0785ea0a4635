// SPDX-License-Identifier: GPL-3.0-or-later
#include "nativefile.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QUrl>

#include <cerrno>

#ifdef Q_OS_UNIX
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <QFileInfo>
#include <QSaveFile>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 CopyPieceSize = 256 * 1024;

FileError MakeError(FileProblem problem, const QString &path, int systemError = 0)
{
    return FileError{problem, path, problem == FileProblem::Other ? systemError : 0};
}

void Report(FileError *error, const FileError &what)
{
    if (error)
        *error = what;
}

// What a system error number means for the user. A missing name while writing
// is a missing folder: the file itself is about to be made.
FileProblem ProblemOf(int systemError, bool writing)
{
    switch (systemError) {
    case ENOENT:
        return writing ? FileProblem::FolderMissing : FileProblem::Missing;
    case ENOTDIR:
        return FileProblem::FolderMissing;
    case EACCES:
    case EPERM:
        return FileProblem::NoPermission;
    case ENOSPC:
#ifdef EDQUOT
    case EDQUOT:
#endif
        return FileProblem::DiskFull;
    case EFBIG:
        return FileProblem::TooLarge;
    case EISDIR:
        return FileProblem::NotRegularFile;
    default:
        return FileProblem::Other;
    }
}

#ifdef Q_OS_UNIX

constexpr char32_t EscapeBase = 0xDC00;

// The length of the valid UTF-8 sequence at the start of bytes, 0 when there
// is none (overlong forms, encoded surrogates and values beyond U+10FFFF are
// not valid, so an escape can never come from a valid sequence).
qsizetype ValidSequenceLength(QByteArrayView bytes, char32_t &codePoint)
{
    const auto byte = [&bytes](qsizetype i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = byte(0);
    qsizetype length = 0;
    char32_t minimum = 0;
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        minimum = 0x80;
        codePoint = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        minimum = 0x800;
        codePoint = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        minimum = 0x10000;
        codePoint = lead & 0x07;
    } else {
        return 0;
    }
    if (bytes.size() < length)
        return 0;
    for (qsizetype i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
        codePoint = (codePoint << 6) | (byte(i) & 0x3F);
    }
    if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return 0;
    return length;
}

int OpenNative(const QByteArray &path, int flags, mode_t mode = 0)
{
    int handle = -1;
    do {
        handle = ::open(path.constData(), flags | O_CLOEXEC, mode);
    } while (handle < 0 && errno == EINTR);
    return handle;
}

QByteArray FolderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return ".";
    return slash == 0 ? QByteArray("/") : path.left(slash);
}

#endif

} // namespace

#ifdef Q_OS_UNIX

QString DecodeFileName(QByteArrayView name)
{
    QString text;
    text.reserve(name.size());
    while (!name.isEmpty()) {
        char32_t codePoint = 0;
        const qsizetype length = ValidSequenceLength(name, codePoint);
        if (length == 0) {
            text += QChar(static_cast<char16_t>(EscapeBase + static_cast<unsigned char>(name[0])));
            name = name.sliced(1);
            continue;
        }
        text += QString::fromUcs4(&codePoint, 1);
        name = name.sliced(length);
    }
    return text;
}

QByteArray EncodeFileName(QStringView name)
{
    QByteArray bytes;
    bytes.reserve(name.size());
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t unit = name[i].unicode();
        const bool pair = QChar::isHighSurrogate(unit) && i + 1 < name.size() && name[i + 1].isLowSurrogate();
        if (!pair && unit >= EscapeBase + 0x80 && unit <= EscapeBase + 0xFF) {
            bytes += static_cast<char>(unit - EscapeBase);
            continue;
        }
        bytes += name.sliced(i, pair ? 2 : 1).toUtf8();
        if (pair)
            ++i;
    }
    return bytes;
}

QString AbsoluteFilePath(const QString &path)
{
    if (path.startsWith(u'/'))
        return QDir::cleanPath(path);
    char *folder = ::getcwd(nullptr, 0);
    const QString absolute = DecodeFileName(folder ? folder : "") + u'/' + path;
    std::free(folder);
    return QDir::cleanPath(absolute);
}

bool PathExists(const QString &path)
{
    struct stat status = {};
    return ::stat(EncodeFileName(path).constData(), &status) == 0;
}

bool IsRegularFile(const QString &path)
{
    struct stat status = {};
    return ::stat(EncodeFileName(path).constData(), &status) == 0 && S_ISREG(status.st_mode);
}

bool OpenForReading(QFile &file, const QString &path, FileError *error)
{
    const QByteArray native = EncodeFileName(path);
    struct stat status = {};
    if (::stat(native.constData(), &status) != 0) {
        Report(error, MakeError(ProblemOf(errno, false), path, errno));
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        Report(error, MakeError(FileProblem::NotRegularFile, path));
        return false;
    }
    // Non-blocking, in case a pipe took the file's place since; the check is
    // then made again on what was opened.
    const int handle = OpenNative(native, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (handle < 0) {
        Report(error, MakeError(ProblemOf(errno, false), path, errno));
        return false;
    }
    if (::fstat(handle, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(handle);
        Report(error, MakeError(FileProblem::NotRegularFile, path));
        return false;
    }
    ::fcntl(handle, F_SETFL, ::fcntl(handle, F_GETFL) & ~O_NONBLOCK);
    if (!file.open(handle, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(handle);
        Report(error, MakeError(FileProblem::Other, path, EIO));
        return false;
    }
    return true;
}

bool WholeFileWriter::Open()
{
    Discard();
    m_error = FileError();
    m_written = 0;
    m_target = EncodeFileName(m_path);
    struct stat status = {};
    // A link is followed, so that it keeps pointing at the new file.
    if (::lstat(m_target.constData(), &status) == 0 && S_ISLNK(status.st_mode)) {
        if (char *resolved = ::realpath(m_target.constData(), nullptr)) {
            m_target = resolved;
            std::free(resolved);
        }
    }
    const bool exists = ::stat(m_target.constData(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode))
        return Fail(FileProblem::NotRegularFile);

    const QByteArray folder = FolderOf(m_target);
    const QByteArray name = m_target.mid(m_target.lastIndexOf('/') + 1).left(200);
    for (int attempt = 0; attempt < 100 && m_handle < 0; ++attempt) {
        m_partial = folder + "/." + name + '.'
                    + QByteArray::number(QRandomGenerator::global()->generate(), 16).rightJustified(8, '0');
        m_handle = OpenNative(m_partial, O_WRONLY | O_CREAT | O_EXCL | O_NOCTTY, 0666);
        if (m_handle < 0 && errno != EEXIST) {
            m_partial.clear();
            return Fail(ProblemOf(errno, true), errno);
        }
    }
    if (m_handle < 0) {
        m_partial.clear();
        return Fail(FileProblem::Other, EEXIST);
    }
    if (exists)
        (void)::fchmod(m_handle, status.st_mode & 07777);
    return true;
}

bool WholeFileWriter::Write(QByteArrayView bytes)
{
    if (m_handle < 0)
        return false;
    const char *data = bytes.data();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t done = ::write(m_handle, data, static_cast<size_t>(left));
        if (done < 0) {
            if (errno == EINTR)
                continue;
            return Fail(ProblemOf(errno, true), errno);
        }
        data += done;
        left -= done;
        m_written += done;
    }
    return true;
}

bool WholeFileWriter::Commit()
{
    if (m_handle < 0)
        return false;
    // A file system that took the bytes without storing them all (or that
    // reports a full disk only now) must not put a cut file in place.
    struct stat status = {};
    if (::fstat(m_handle, &status) != 0 || status.st_size != m_written)
        return Fail(FileProblem::DiskFull);
    if (::fsync(m_handle) != 0 && errno != EINVAL && errno != EROFS)
        return Fail(ProblemOf(errno, true), errno);
    const int handle = m_handle;
    m_handle = -1;
    if (::close(handle) != 0)
        return Fail(ProblemOf(errno, true), errno);
    if (::rename(m_partial.constData(), m_target.constData()) != 0)
        return Fail(ProblemOf(errno, true), errno);
    m_partial.clear();
    return true;
}

void WholeFileWriter::Discard()
{
    if (m_handle >= 0) {
        ::close(m_handle);
        m_handle = -1;
    }
    if (!m_partial.isEmpty()) {
        ::unlink(m_partial.constData());
        m_partial.clear();
    }
}

bool MakeFolders(const QString &folder, FileError *error)
{
    const QByteArray native = EncodeFileName(folder);
    for (qsizetype end = native.startsWith('/') ? 1 : 0; end <= native.size(); ++end) {
        if (end < native.size() && native[end] != '/')
            continue;
        const QByteArray level = native.left(end);
        if (level.isEmpty() || level.endsWith('/'))
            continue;
        if (::mkdir(level.constData(), 0777) == 0 || errno == EEXIST)
            continue;
        Report(error, MakeError(ProblemOf(errno, true), folder, errno));
        return false;
    }
    struct stat status = {};
    if (!native.isEmpty() && (::stat(native.constData(), &status) != 0 || !S_ISDIR(status.st_mode))) {
        Report(error, MakeError(FileProblem::FolderMissing, folder));
        return false;
    }
    return true;
}

bool RemoveFile(const QString &path)
{
    return ::unlink(EncodeFileName(path).constData()) == 0;
}

FileError FolderWriteProblem(const QString &folder)
{
    const QByteArray native = EncodeFileName(folder);
    struct stat status = {};
    if (::stat(native.constData(), &status) != 0)
        return MakeError(ProblemOf(errno, true), folder, errno);
    if (!S_ISDIR(status.st_mode))
        return MakeError(FileProblem::FolderMissing, folder);
    if (::access(native.constData(), W_OK | X_OK) != 0)
        return MakeError(ProblemOf(errno, true), folder, errno);
    return {};
}

#else // names are UTF-16 already; Qt's own file access serves

QString DecodeFileName(QByteArrayView name)
{
    return QFile::decodeName(name.toByteArray());
}

QByteArray EncodeFileName(QStringView name)
{
    return QFile::encodeName(name.toString());
}

QString AbsoluteFilePath(const QString &path)
{
    return QFileInfo(path).absoluteFilePath();
}

bool PathExists(const QString &path)
{
    return QFileInfo::exists(path);
}

bool IsRegularFile(const QString &path)
{
    return QFileInfo(path).isFile();
}

bool OpenForReading(QFile &file, const QString &path, FileError *error)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        Report(error, MakeError(FileProblem::Missing, path));
        return false;
    }
    if (!info.isFile()) {
        Report(error, MakeError(FileProblem::NotRegularFile, path));
        return false;
    }
    file.setFileName(path);
    if (!file.open(QIODevice::ReadOnly)) {
        Report(error, MakeError(file.error() == QFileDevice::PermissionsError ? FileProblem::NoPermission
                                                                              : FileProblem::Other,
                                path, EIO));
        return false;
    }
    return true;
}

bool WholeFileWriter::Open()
{
    Discard();
    m_error = FileError();
    m_written = 0;
    const QFileInfo info(m_path);
    if (info.exists() && !info.isFile())
        return Fail(FileProblem::NotRegularFile);
    if (!info.absoluteDir().exists())
        return Fail(FileProblem::FolderMissing);
    m_file = std::make_unique<QSaveFile>(m_path);
    if (!m_file->open(QIODevice::WriteOnly))
        return Fail(FileProblem::NoPermission);
    return true;
}

bool WholeFileWriter::Write(QByteArrayView bytes)
{
    if (!m_file)
        return false;
    if (m_file->write(bytes.data(), bytes.size()) != bytes.size())
        return Fail(FileProblem::DiskFull);
    m_written += bytes.size();
    return true;
}

bool WholeFileWriter::Commit()
{
    if (!m_file)
        return false;
    if (!m_file->flush() || m_file->size() != m_written || !m_file->commit())
        return Fail(FileProblem::DiskFull);
    m_file.reset();
    return true;
}

void WholeFileWriter::Discard()
{
    if (m_file)
        m_file->cancelWriting();
    m_file.reset();
}

bool MakeFolders(const QString &folder, FileError *error)
{
    if (folder.isEmpty() || QDir().mkpath(folder))
        return true;
    Report(error, MakeError(FileProblem::NoPermission, folder));
    return false;
}

bool RemoveFile(const QString &path)
{
    return QFile::remove(path);
}

FileError FolderWriteProblem(const QString &folder)
{
    const QFileInfo info(folder);
    if (!info.isDir())
        return MakeError(FileProblem::FolderMissing, folder);
    if (!info.isWritable())
        return MakeError(FileProblem::NoPermission, folder);
    return {};
}

#endif

WholeFileWriter::WholeFileWriter(const QString &path) : m_path(path)
{
}

WholeFileWriter::~WholeFileWriter()
{
    Discard();
}

bool WholeFileWriter::Fail(FileProblem problem, int systemError)
{
    m_error = MakeError(problem, m_path, systemError);
    Discard();
    return false;
}

QStringList DecodeArguments(int argc, const char *const *argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << DecodeFileName(argv[i]);
    return arguments;
}

QString LocalFileFromUrl(const QUrl &url)
{
    if (!url.isLocalFile())
        return {};
#ifdef Q_OS_UNIX
    // toLocalFile() decodes the bytes as UTF-8 and replaces what is not.
    return DecodeFileName(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()));
#else
    return url.toLocalFile();
#endif
}

bool WriteWholeFile(const QString &path, QByteArrayView bytes, FileError *error)
{
    WholeFileWriter writer(path);
    if (writer.Open() && writer.Write(bytes) && writer.Commit())
        return true;
    Report(error, writer.Error());
    return false;
}

bool CopyWholeFile(const QString &source, const QString &target, FileError *error)
{
    QFile in;
    if (!OpenForReading(in, source, error))
        return false;
    WholeFileWriter writer(target);
    if (!writer.Open()) {
        Report(error, writer.Error());
        return false;
    }
    for (;;) {
        const QByteArray piece = in.read(CopyPieceSize);
        if (piece.isEmpty()) {
            if (!in.atEnd()) {
                Report(error, MakeError(FileProblem::Other, source, EIO));
                return false;
            }
            break;
        }
        if (!writer.Write(piece)) {
            Report(error, writer.Error());
            return false;
        }
    }
    if (!writer.Commit()) {
        Report(error, writer.Error());
        return false;
    }
    return true;
}
