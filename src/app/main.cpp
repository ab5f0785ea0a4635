// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/editordialogs.h"
#include "editor/mainwindow.h"
#include "phone/uploadsignalguard.h"
#include "profile/tempfiles.h"
#include "settings/settingsstore.h"
#include "support/nativefile.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Padmapper"));
    QApplication::setApplicationVersion(QStringLiteral(PADMAPPER_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("io.github.padmapper.Padmapper"));
    // Every window of the program, the settings and upload windows too.
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/padmapper.svg")));
    DeleteTempFilesOnTermination();
    DeleteStaleTempFiles(); // those of earlier runs that were killed

    StandardEditorDialogs dialogs;
    SettingsStore store;
    MainWindow window(dialogs, store);
    // From argv, which QApplication has rid of its own options: a file name that
    // is not UTF-8 must reach the file system byte for byte.
    window.Startup(DecodeArguments(argc, argv));
    const int status = QApplication::exec();
    DeleteTempFiles();
    // A termination signal ended an upload as Abort does; the program now ends
    // as that signal ends it, with the port closed and nothing left behind.
    if (window.EndingSignal() != 0)
        UploadSignalGuard::EndAsSignalled(window.EndingSignal());
    return status;
}
