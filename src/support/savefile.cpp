// SPDX-License-Identifier: GPL-3.0-or-later
#include "savefile.h"

#include <QSaveFile>

bool CommitWhole(QSaveFile &file)
{
    const qint64 written = file.pos();
    if (!file.flush() || file.size() != written) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
