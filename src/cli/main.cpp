// SPDX-License-Identifier: GPL-3.0-or-later
#include "clioutput.h"
#include "devicescommand.h"
#include "keymap/keytable.h"
#include "overviewcommand.h"
#include "portscommand.h"
#include "profile/tempfiles.h"
#include "profilecommands.h"
#include "settings/languagetext.h"
#include "showcommand.h"
#include "support/nativefile.h"
#include "support/programpaths.h"
#include "uploadcommand.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString UsageText = uR"(Usage: padmapper-cli [--language FILE.lng] COMMAND ...

Commands:
  show FILE      Read a keymap (.kcf, or the keymap of a .hid or .tar profile)
                 and write it to standard output exactly as exporting it writes
                 it. When the reader finds errors, their summary goes to
                 standard error, LastReadingError.txt is written and the exit
                 status is 1. Notes about a profile without picture or keymap,
                 or one that is cut short, go to standard error without failing.
  list ARCHIVE   List a tar archive: number, size and name of each entry.
  extract ARCHIVE N DEST
                 Write entry N (counted from 1) of an archive to the file DEST;
                 an entry that the archive holds only in part is not written.
  pack PICTURE KEYMAP.kcf OUT
                 Write a profile of a picture and a keymap as the editor saves
                 it (".hid" is appended to OUT when it has another extension).
                 When the keymap has errors, their summary goes to standard
                 error as with show, and OUT is not written.
  upload PROFILE --port PORT [--speed BPS] [--name NAME]
                 Send a profile to the phone through a serial port (a device
                 such as /dev/rfcomm0; COM3 or 3 on Windows) at BPS bit/s
                 (default 115200), under NAME on the phone (default: the
                 profile's name with ".hid"). Status lines go to standard
                 output, the error message to standard error. Ctrl-C,
                 SIGTERM and SIGHUP abort the upload, closing the port, and
                 then end the tool as the signal does.
  upload PROFILE --bluetooth ADDRESS [--method push|ftp] [--name NAME]
                 Send a profile to a paired phone over Bluetooth through
                 BlueZ's OBEX service (obexd, package bluez-obexd), by Object
                 Push (default) or as an OBEX file transfer into the phone's
                 current folder. Status lines, messages and Ctrl-C as above.
  overview PROFILE OUT
                 Draw the overview of a profile (or of a bare keymap) as the
                 editor prints it: the phone with the profile's picture and
                 beside each key what it does, with its comment, in the
                 language of --language. OUT ends in .pdf (one A4 page, its
                 texts kept as text) or .png (A4 at 192 dpi). Needs no display.
                 When the keymap has errors, their summary goes to standard
                 error as with show, and OUT is not written.
  ports          List the serial ports the settings offer, one per line.
  devices        List the Bluetooth devices paired with this computer, one per
                 line: the address, a tab, the name.

Options:
  --language FILE.lng  Take the texts from this language file (default: English).
  -h, --help           Show this help.
  -v, --version        Show the version.

Exit status: 0 success, 1 failure, 2 usage error.)"_s;

// Qt's messages as Qt writes them, but for the note that the session has no
// runtime folder: the offscreen platform asks for one that drawing into a file
// never uses, and the note would only puzzle.
void QuietAboutRuntimeFolder(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!message.startsWith("QStandardPaths: XDG_RUNTIME_DIR"_L1))
        std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
}

int UsageError(const QString &message)
{
    Complain(message);
    WriteStderr(u"Try 'padmapper-cli --help'."_s);
    return ExitStatus::Usage;
}

} // namespace

int main(int argc, char *argv[])
{
    // The overview needs fonts, which come with a QGuiApplication. On the
    // offscreen platform that needs no display, so the tool runs the same on a
    // desktop, over ssh and in a build job.
    const bool draws = std::any_of(argv + 1, argv + argc,
                                   [](const char *arg) { return std::strcmp(arg, "overview") == 0; });
    std::unique_ptr<QCoreApplication> app;
    if (draws) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(QuietAboutRuntimeFolder);
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication::setApplicationName(u"padmapper-cli"_s);
    QCoreApplication::setApplicationVersion(QString::fromLatin1(PADMAPPER_VERSION));

    // Taken from argv as the system passed them: a file name that is not
    // UTF-8 must reach the file system byte for byte.
    const QStringList args = DecodeArguments(argc, argv);
    QString language;
    QStringList positional;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (arg == "-h"_L1 || arg == "--help"_L1) {
            WriteStdout((UsageText + u'\n').toLocal8Bit());
            return ExitStatus::Success;
        }
        if (arg == "-v"_L1 || arg == "--version"_L1) {
            WriteStdout(("padmapper-cli "_L1 + QCoreApplication::applicationVersion() + u'\n').toLocal8Bit());
            return ExitStatus::Success;
        }
        if (arg == "--language"_L1 || arg.startsWith("--language="_L1)) {
            if (arg.contains(u'=')) {
                language = arg.section(u'=', 1);
            } else if (i + 1 < args.size()) {
                language = args[++i];
            } else {
                return UsageError(u"--language needs a file"_s);
            }
            if (!IsRegularFile(language))
                return UsageError(u"no language file %1"_s.arg(language));
            continue;
        }
        if (arg == "--"_L1) {
            positional += args.mid(i + 1);
            break;
        }
        if (IsUploadOption(arg)) {
            positional << arg;
            if (!arg.contains(u'=') && i + 1 < args.size())
                positional << args[++i];
            continue;
        }
        if (arg.startsWith(u'-') && arg.size() > 1)
            return UsageError(u"unknown option %1"_s.arg(arg));
        positional << arg;
    }

    DeleteTempFilesOnTermination();
    DeleteStaleTempFiles(); // those of earlier runs that were killed
    // Without a choice, the English file beside the program: the built-in
    // texts name no mouse action, the file does.
    if (language.isEmpty())
        language = FindProgramFile(u"English.lng"_s);
    if (!language.isEmpty())
        SetLanguage(QFileInfo(language).absoluteFilePath());
    ApplyKeyNameLanguage();

    if (positional.isEmpty())
        return UsageError(u"no command given"_s);
    const QString command = positional.takeFirst();
    int status = ExitStatus::Usage;
    if (command == "show"_L1) {
        if (positional.size() != 1)
            return UsageError(u"show takes one file"_s);
        status = RunShow(positional.first());
    } else if (command == "list"_L1) {
        if (positional.size() != 1)
            return UsageError(u"list takes one archive"_s);
        status = RunList(positional.first());
    } else if (command == "extract"_L1) {
        if (positional.size() != 3)
            return UsageError(u"extract takes an archive, an entry number and a destination"_s);
        status = RunExtract(positional[0], positional[1], positional[2]);
    } else if (command == "upload"_L1) {
        status = RunUpload(positional);
    } else if (command == "ports"_L1) {
        if (!positional.isEmpty())
            return UsageError(u"ports takes no arguments"_s);
        status = RunPorts();
    } else if (command == "devices"_L1) {
        if (!positional.isEmpty())
            return UsageError(u"devices takes no arguments"_s);
        status = RunDevices();
    } else if (command == "pack"_L1) {
        if (positional.size() != 3)
            return UsageError(u"pack takes a picture, a keymap and the profile to write"_s);
        status = RunPack(positional[0], positional[1], positional[2]);
    } else if (command == "overview"_L1) {
        if (positional.size() != 2)
            return UsageError(u"overview takes a profile and the file to write"_s);
        status = RunOverview(positional[0], positional[1]);
    } else {
        return UsageError(u"unknown command %1"_s.arg(command));
    }
    DeleteTempFiles();
    return status;
}
