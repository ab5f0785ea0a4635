// SPDX-License-Identifier: GPL-3.0-or-later
#include "programpaths.h"

#include "nativefile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

constexpr auto DataSubfolder = "padmapper"_L1;

} // namespace

QStringList ProgramDataFolders()
{
    QStringList folders;
    const QString exeFolder = QCoreApplication::applicationDirPath();
    if (!exeFolder.isEmpty()) {
        folders << exeFolder;
        // A relocatable install: <prefix>/bin/padmapper and <prefix>/share/padmapper.
        folders << QDir::cleanPath(exeFolder + "/../share/"_L1 + DataSubfolder);
    }
    for (const QString &dir : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        folders << dir + u'/' + DataSubfolder;
    folders.removeDuplicates();
    return folders;
}

QString FindProgramFile(const QString &name)
{
    for (const QString &folder : ProgramDataFolders()) {
        const QFileInfo candidate(folder + u'/' + name);
        if (candidate.isFile())
            return candidate.absoluteFilePath();
    }
    return {};
}

QString WritableDataFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (folder.isEmpty())
        return {};
    const QString ours = folder + u'/' + DataSubfolder;
    return QDir().mkpath(ours) ? ours : QString();
}

QString WriteProgramFile(const QString &name, const QByteArray &bytes)
{
    const QString exeFolder = QCoreApplication::applicationDirPath();
    if (!exeFolder.isEmpty() && QFileInfo(exeFolder).isWritable()) {
        const QString path = exeFolder + u'/' + name;
        if (WriteWholeFile(path, bytes))
            return path;
    }
    const QString fallback = WritableDataFolder();
    if (!fallback.isEmpty()) {
        const QString path = fallback + u'/' + name;
        if (WriteWholeFile(path, bytes))
            return path;
    }
    return {};
}
