// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QSaveFile;

// Commits a save file only when it holds every byte written to it, and
// otherwise discards it (the previous file stays). A disk that fills up can
// make buffered writes fall short without any write reporting it.
[[nodiscard]] bool CommitWhole(QSaveFile &file);
