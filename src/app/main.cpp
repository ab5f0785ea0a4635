// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/editordialogs.h"
#include "editor/mainwindow.h"
#include "profile/tempfiles.h"
#include "settings/settingsstore.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Padmapper"));
    QApplication::setApplicationVersion(QStringLiteral(PADMAPPER_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("padmapper"));
    DeleteTempFilesOnTermination();
    DeleteStaleTempFiles(); // those of earlier runs that were killed

    StandardEditorDialogs dialogs;
    SettingsStore store;
    MainWindow window(dialogs, store);
    window.Startup(QApplication::arguments().mid(1));
    const int status = QApplication::exec();
    DeleteTempFiles();
    return status;
}
