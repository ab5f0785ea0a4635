// SPDX-License-Identifier: GPL-3.0-or-later
// Test helper: makes temporary files, prints their paths and waits to be
// ended by a signal.
#include "profile/tempfiles.h"

#include <QCoreApplication>
#include <QThread>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    DeleteTempFilesOnTermination();
    for (int i = 0; i < 2; ++i)
        std::printf("%s\n", qPrintable(NewTempFile(QStringLiteral("PMX"))));
    std::printf("%s\n", qPrintable(NewTempFileNamed(QStringLiteral("Game.hid")))); // in a folder of its own
    std::fflush(stdout);
    QThread::sleep(60);
    DeleteTempFiles();
    return 0;
}
