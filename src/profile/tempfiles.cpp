// SPDX-License-Identifier: GPL-3.0-or-later
#include "tempfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QMutex>
#include <QMutexLocker>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

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
// The private folder and its lock file, for the same handler: once the files
// are gone it removes the lock, then the (then empty) folder.
std::atomic<char *> g_signalFolder{nullptr};
std::atomic<char *> g_signalOwnerLock{nullptr};

// The private folder: this prefix and six random letters or digits. It holds
// the lock file and the temporary files, nothing else.
constexpr auto FolderPrefix = "padmapper-files-"_L1;
constexpr auto OwnerLockName = "owner.lock"_L1;
// File names carry a number from 1 to FFFF, as the system's own temporary
// names do; they also become entry names inside an uploaded profile.
constexpr quint32 NameNumbers = 0xFFFF;

struct TempFileList;
void ReleaseFolder(TempFileList &list);

struct TempFileList
{
    QMutex mutex;
    QStringList paths;
    QString folder; // "" until the first file
    std::unique_ptr<QLockFile> owner;

    // A normal end of the program without DeleteTempFiles() leaves nothing
    // either: the lock alone would go, and a folder without lock is never
    // taken for a stale one.
    ~TempFileList() { ReleaseFolder(*this); }
};

TempFileList &List()
{
    static TempFileList list;
    return list;
}

// Unlocks first: the lock file is to go by the lock's own hand.
void ReleaseFolder(TempFileList &list)
{
    std::free(g_signalFolder.exchange(nullptr));
    std::free(g_signalOwnerLock.exchange(nullptr));
    list.owner.reset();
    if (!list.folder.isEmpty())
        QDir(list.folder).removeRecursively();
    list.folder.clear();
}

// The private folder, made (for the user alone) and locked when there is none
// yet or it has vanished (a cleaner of the temporary folder); "" when it
// cannot be made.
QString OwnFolder(TempFileList &list)
{
    if (!list.folder.isEmpty() && QFileInfo(list.folder).isDir())
        return list.folder;
    ReleaseFolder(list);
    // A temporary folder that does not exist comes back as "": never the
    // current folder instead.
    const QString system = QDir::tempPath();
    if (system.isEmpty())
        return {};
    QTemporaryDir folder(QDir(system).filePath(FolderPrefix + "XXXXXX"_L1));
    if (!folder.isValid())
        return {};
    auto owner = std::make_unique<QLockFile>(folder.filePath(OwnerLockName));
    if (!owner->tryLock(0))
        return {};
    folder.setAutoRemove(false);
    list.folder = folder.path();
    list.owner = std::move(owner);
    g_signalOwnerLock.store(strdup(QFile::encodeName(folder.filePath(OwnerLockName)).constData()));
    g_signalFolder.store(strdup(QFile::encodeName(list.folder).constData()));
    return list.folder;
}

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
    TempFileList &list = List();
    const QMutexLocker lock(&list.mutex);
    const QString folderPath = OwnFolder(list);
    if (folderPath.isEmpty())
        return {};
    const QDir folder(folderPath);
    // Only this program's own files can hold a name in its folder: counting on
    // from a random start finds a free one quickly.
    const quint32 start = QRandomGenerator::global()->bounded(NameNumbers);
    for (quint32 i = 0; i < NameNumbers; ++i) {
        const quint32 number = (start + i) % NameNumbers + 1;
        const QString path = folder.filePath(prefix + QString::number(number, 16).toUpper() + ".tmp"_L1);
        QFile file(path);
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
            file.close();
            list.paths << path;
            RegisterForSignals(path);
            return path;
        }
        if (!QFile::exists(path))
            return {}; // the folder itself refuses new files
    }
    return {};
}

QString NewTempFileNamed(const QString &name)
{
    if (name.isEmpty() || name == "."_L1 || name == ".."_L1 || name.contains(u'/') || name.contains(u'\\'))
        return {};
    TempFileList &list = List();
    const QMutexLocker lock(&list.mutex);
    const QString folderPath = OwnFolder(list);
    if (folderPath.isEmpty())
        return {};
    QTemporaryDir folder(QDir(folderPath).filePath("named-XXXXXX"_L1));
    if (!folder.isValid())
        return {};
    const QString path = folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return {};
    file.close();
    folder.setAutoRemove(false);
    list.paths << path;
    RegisterForSignals(path);
    RegisterForSignals(folder.path());
    return path;
}

void DeleteStaleTempFiles()
{
    const QString system = QDir::tempPath();
    if (system.isEmpty())
        return;
    const QFileInfoList folders = QDir(system).entryInfoList({FolderPrefix + u'*'},
                                                             QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot
                                                                 | QDir::Hidden | QDir::CaseSensitive);
    for (const QFileInfo &folder : folders) {
#ifdef Q_OS_UNIX
        if (folder.ownerId() != ::geteuid())
            continue;
#endif
        // A folder being made has no lock yet: only a lock whose owner is
        // gone (not running, or running since before the last boot) is stale.
        const QString lockPath = QDir(folder.absoluteFilePath()).filePath(OwnerLockName);
        if (!QFileInfo::exists(lockPath))
            continue;
        QLockFile lock(lockPath);
        // Never by age: an editor may run for days. (The owner's lock on the
        // file also keeps it, where the file system supports such locks.)
        lock.setStaleLockTime(0);
        if (lock.tryLock(0)) {
            lock.unlock();
            QDir(folder.absoluteFilePath()).removeRecursively();
        }
    }
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
    ReleaseFolder(list);
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
            // A slot may also hold the folder of a named file, listed after
            // the file: only one of the two calls succeeds.
            if (::unlink(path) != 0)
                ::rmdir(path);
#else
            std::remove(path);
#endif
        }
    }
#ifdef Q_OS_UNIX
    // Then the lock, which leaves the folder empty, and the folder.
    if (const char *lock = g_signalOwnerLock.load())
        ::unlink(lock);
    if (const char *folder = g_signalFolder.load())
        ::rmdir(folder);
#endif
}
