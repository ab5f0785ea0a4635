// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Small file helpers shared by the tests.

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>

#ifdef QT_GUI_LIB
#include <QImage>
#endif

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#endif

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

// What a program run to its end gave; Status is -1 when it did not end
// normally within a minute.
struct ProgramRun
{
    int Status = -1;
    QByteArray Out;
    QByteArray Err;
};

inline ProgramRun RunProgram(const QString &program, const QStringList &arguments, const QString &folder = {},
                             const QProcessEnvironment &environment = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    if (!environment.isEmpty())
        process.setProcessEnvironment(environment);
    process.start(program, arguments);
    ProgramRun run;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit)
        run = {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    return run;
}

#ifdef QT_GUI_LIB
// A picture with enough detail that it does not compress to nothing, saved in
// the format its extension names; "" when it could not be saved.
inline QString MakePicture(const QString &path, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb((x * 7 + y * 13) & 255, (x * y) & 255, (x ^ y) & 255));
    return image.save(path) ? path : QString();
}
#endif

#ifdef Q_OS_UNIX
inline bool MakePipe(const QString &path)
{
    return ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
}

// While it lives, no file of this process may grow beyond the limit: writes
// then fail the way they do on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_previous);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, m_previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_previous{};
    void (*m_handler)(int) = nullptr;
};
#endif
