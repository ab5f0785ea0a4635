// SPDX-License-Identifier: GPL-3.0-or-later
#include "tempfiles.h"

#include <QDir>
#include <QFile>
#include <QMutex>
#include <QMutexLocker>
#include <QRandomGenerator>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// The paths as native strings, for a signal handler that may only unlink. A
// slot is set once per file and cleared when the file is deleted.
constexpr std::size_t SignalSlotCount = 4096;
std::array<std::atomic<char *>, SignalSlotCount> g_signalSlots{};
std::atomic<std::size_t> g_signalSlotsUsed{0};

struct TempFileList
{
    QMutex mutex;
    QStringList paths;
};

TempFileList &List()
{
    static TempFileList list;
    return list;
}

constexpr int CreateAttempts = 100;

void RegisterForSignals(const QString &path)
{
    const std::size_t slot = g_signalSlotsUsed.fetch_add(1);
    if (slot >= SignalSlotCount)
        return; // beyond this many files only the normal clean-up deletes them
    g_signalSlots[slot].store(strdup(QFile::encodeName(path).constData()));
}

void ForgetForSignals()
{
    const std::size_t used = std::min(g_signalSlotsUsed.exchange(0), SignalSlotCount);
    for (std::size_t i = 0; i < used; ++i)
        std::free(g_signalSlots[i].exchange(nullptr));
}

extern "C" void DeleteTempFilesAndEnd(int signalNumber)
{
    DeleteTempFilesFromSignalHandler();
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

} // namespace

QString NewTempFile(const QString &prefix)
{
    const QString folder = QDir::tempPath();
    for (int attempt = 0; attempt < CreateAttempts; ++attempt) {
        const QString name = prefix + QString::number(QRandomGenerator::global()->bounded(0x1000000u), 16)
                                          .toUpper()
                                          .rightJustified(6, u'0')
                             + ".tmp"_L1;
        const QString path = QDir(folder).filePath(name);
        QFile file(path);
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly,
                      QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
            file.close();
            TempFileList &list = List();
            const QMutexLocker lock(&list.mutex);
            list.paths << path;
            RegisterForSignals(path);
            return path;
        }
        if (!QFile::exists(path))
            return {}; // the folder itself refuses new files
    }
    return {};
}

QStringList TempFiles()
{
    TempFileList &list = List();
    const QMutexLocker lock(&list.mutex);
    return list.paths;
}

void DeleteTempFiles()
{
    TempFileList &list = List();
    const QMutexLocker lock(&list.mutex);
    for (const QString &path : std::as_const(list.paths))
        QFile::remove(path);
    list.paths.clear();
    ForgetForSignals();
}

void DeleteTempFilesOnTermination()
{
    for (const int signalNumber : {SIGINT, SIGTERM
#ifdef SIGHUP
                                   ,
                                   SIGHUP
#endif
         })
        std::signal(signalNumber, DeleteTempFilesAndEnd);
}

void DeleteTempFilesFromSignalHandler()
{
    const std::size_t used = std::min(g_signalSlotsUsed.load(), SignalSlotCount);
    for (std::size_t i = 0; i < used; ++i) {
        if (const char *path = g_signalSlots[i].load()) {
#ifdef Q_OS_UNIX
            ::unlink(path);
#else
            std::remove(path);
#endif
        }
    }
}
