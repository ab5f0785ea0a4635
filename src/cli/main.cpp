// SPDX-License-Identifier: GPL-3.0-or-later
#include "clioutput.h"
#include "keymap/keytable.h"
#include "settings/languagetext.h"
#include "showcommand.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

const QString UsageText = uR"(Usage: padmapper-cli [--language FILE.lng] COMMAND ...

Commands:
  show FILE      Read a keymap (.kcf) and write it to standard output exactly as
                 exporting it writes it. When the reader finds errors, their
                 summary goes to standard error, LastReadingError.txt is written
                 and the exit status is 1.

Options:
  --language FILE.lng  Take the texts from this language file (default: English).
  -h, --help           Show this help.
  -v, --version        Show the version.

Exit status: 0 success, 1 failure, 2 usage error.)"_s;

int UsageError(const QString &message)
{
    Complain(message);
    WriteStderr(u"Try 'padmapper-cli --help'."_s);
    return ExitStatus::Usage;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(u"padmapper-cli"_s);
    QCoreApplication::setApplicationVersion(QString::fromLatin1(PADMAPPER_VERSION));

    QStringList args = QCoreApplication::arguments().mid(1);
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
            if (!QFileInfo(language).isFile())
                return UsageError(u"no language file %1"_s.arg(language));
            continue;
        }
        if (arg == "--"_L1) {
            positional += args.mid(i + 1);
            break;
        }
        if (arg.startsWith(u'-') && arg.size() > 1)
            return UsageError(u"unknown option %1"_s.arg(arg));
        positional << arg;
    }

    if (!language.isEmpty())
        SetLanguage(QFileInfo(language).absoluteFilePath());
    ApplyKeyNameLanguage();

    if (positional.isEmpty())
        return UsageError(u"no command given"_s);
    const QString command = positional.takeFirst();
    if (command == "show"_L1) {
        if (positional.size() != 1)
            return UsageError(u"show takes one file"_s);
        return RunShow(positional.first());
    }
    return UsageError(u"unknown command %1"_s.arg(command));
}
