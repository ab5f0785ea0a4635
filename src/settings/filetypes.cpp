// SPDX-License-Identifier: GPL-3.0-or-later
#include "filetypes.h"

#include "support/nativefile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

constexpr auto DesktopId = "io.github.padmapper.Padmapper.desktop"_L1;
constexpr auto ProfileMime = "application/x-padmapper-profile"_L1;
constexpr auto KeymapMime = "application/x-padmapper-keymap"_L1;
constexpr auto DefaultsSection = "[Default Applications]"_L1;

bool WriteText(const QString &path, const QString &text)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    return WriteWholeFile(path, text.toUtf8());
}

QString ReadText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// Runs a cache tool if the system has it; the types work without, only later.
void RunIfPresent(const QString &tool, const QStringList &arguments)
{
    const QString program = QStandardPaths::findExecutable(tool);
    if (program.isEmpty())
        return;
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(10000);
}

// The arguments of an Exec line: the path quoted as desktop entries want it.
QString DesktopExecQuoted(const QString &path)
{
    QString quoted = path;
    for (const QChar special : {u'\\', u'"', u'`', u'$'})
        quoted.replace(special, u'\\' + QString(special));
    return u'"' + quoted + u'"';
}

#ifdef Q_OS_WIN
constexpr auto ClassesKey = "HKEY_CURRENT_USER\\Software\\Classes"_L1;
#endif

} // namespace

FileTypes::FileTypes(const QString &programPath, const QString &dataHome, const QString &configHome)
    : m_programPath(programPath),
      m_dataHome(dataHome.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
                                    : dataHome),
      m_configHome(configHome.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                                        : configHome)
{
}

QString FileTypes::OwnClass(FileType type) const
{
#ifdef Q_OS_WIN
    return type == FileType::Profile ? u"PMX_hidfile"_s : u"PMX_kcffile"_s;
#else
    Q_UNUSED(type);
    return DesktopId;
#endif
}

QString FileTypes::MimeType(FileType type) const
{
    return type == FileType::Profile ? QString(ProfileMime) : QString(KeymapMime);
}

QString FileTypes::DesktopEntryPath() const
{
    return m_dataHome + "/applications/"_L1 + DesktopId;
}

QString FileTypes::MimePackagePath() const
{
    return m_dataHome + "/mime/packages/padmapper.xml"_L1;
}

QString FileTypes::MimeAppsListPath() const
{
    return m_configHome + "/mimeapps.list"_L1;
}

#ifdef Q_OS_WIN

void FileTypes::RegisterFileTypes()
{
    QSettings classes(QString(ClassesKey), QSettings::NativeFormat);
    const QString program = QDir::toNativeSeparators(m_programPath);
    const QString command = program + " \"%1\""_L1;
    classes.setValue(u"PMX_hidfile/shell/open/command/."_s, command);
    classes.setValue(u"PMX_kcffile/shell/open/command/."_s, command);
    classes.setValue(u"PMX_hidfile/DefaultIcon/."_s, program + ",1"_L1);
    classes.setValue(u"PMX_kcffile/DefaultIcon/."_s, program + ",2"_L1);
    classes.sync();
}

QString FileTypes::BoundClass(FileType type) const
{
    const QSettings classes(QString(ClassesKey), QSettings::NativeFormat);
    return classes.value(type == FileType::Profile ? u".hid/."_s : u".kcf/."_s).toString();
}

void FileTypes::Bind(FileType type, const QString &className)
{
    QSettings classes(QString(ClassesKey), QSettings::NativeFormat);
    classes.setValue(type == FileType::Profile ? u".hid/."_s : u".kcf/."_s, className);
    classes.sync();
}

#else

void FileTypes::RegisterFileTypes()
{
    const QString entry = u"[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Padmapper\n"
                          "GenericName=Phone Remote Profile Editor\n"
                          "Comment=Edit the remote-control profiles of Sony Ericsson phones\n"
                          "Icon=padmapper\n"
                          "Exec=%1 %f\n"
                          "MimeType=%2;%3;\n"
                          "Categories=Utility;\n"
                          "Terminal=false\n"_s.arg(DesktopExecQuoted(m_programPath), ProfileMime, KeymapMime);
    WriteText(DesktopEntryPath(), entry);

    const QString mime = u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
                         "  <mime-type type=\"%1\">\n"
                         "    <comment>Phone remote-control profile</comment>\n"
                         "    <sub-class-of type=\"application/x-tar\"/>\n"
                         "    <glob pattern=\"*.hid\"/>\n"
                         "  </mime-type>\n"
                         "  <mime-type type=\"%2\">\n"
                         "    <comment>Phone remote-control keymap</comment>\n"
                         "    <sub-class-of type=\"text/plain\"/>\n"
                         "    <glob pattern=\"*.kcf\"/>\n"
                         "  </mime-type>\n"
                         "</mime-info>\n"_s.arg(ProfileMime, KeymapMime);
    WriteText(MimePackagePath(), mime);

    RunIfPresent(u"update-mime-database"_s, {m_dataHome + "/mime"_L1});
    RunIfPresent(u"update-desktop-database"_s, {m_dataHome + "/applications"_L1});
}

QString FileTypes::BoundClass(FileType type) const
{
    const QStringList lines = ReadText(MimeAppsListPath()).split(u'\n');
    bool inDefaults = false;
    const QString key = MimeType(type) + u'=';
    for (const QString &raw : lines) {
        const QString line = raw.trimmed();
        if (line.startsWith(u'[')) {
            inDefaults = line == DefaultsSection;
            continue;
        }
        if (inDefaults && line.startsWith(key)) {
            // The first application listed is the default.
            return line.mid(key.size()).section(u';', 0, 0).trimmed();
        }
    }
    return {};
}

void FileTypes::Bind(FileType type, const QString &className)
{
    const QString path = MimeAppsListPath();
    QStringList lines = ReadText(path).split(u'\n');
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    const QString key = MimeType(type) + u'=';
    const QString newLine = key + className + u';';

    qsizetype section = -1;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines[i].trimmed() == DefaultsSection) {
            section = i;
            break;
        }
    }
    if (section < 0) {
        if (className.isEmpty())
            return;
        if (!lines.isEmpty() && !lines.last().trimmed().isEmpty())
            lines << QString();
        lines << DefaultsSection << newLine;
    } else {
        qsizetype end = section + 1;
        while (end < lines.size() && !lines[end].trimmed().startsWith(u'['))
            ++end;
        qsizetype found = -1;
        for (qsizetype i = section + 1; i < end; ++i) {
            if (lines[i].trimmed().startsWith(key)) {
                found = i;
                break;
            }
        }
        if (found >= 0 && className.isEmpty())
            lines.removeAt(found);
        else if (found >= 0)
            lines[found] = newLine;
        else if (!className.isEmpty())
            lines.insert(section + 1, newLine);
    }
    WriteText(path, lines.join(u'\n') + u'\n');
}

#endif
