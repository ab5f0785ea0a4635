// SPDX-License-Identifier: GPL-3.0-or-later
// Reads and writes large keymap texts and reports MB/s. The read is timed at
// several sizes, so that its cost per megabyte shows whether it grows linearly.
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "keymap/keymapwriter.h"
#include "support/ansitext.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QStringList>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MegaByte = 1000 * 1000;

// Mixed lines: key tags, valid actions of every kind, faulty values, comments,
// markup the reader skips and short junk.
QString MixedKeymapText(qsizetype bytes)
{
    const QStringList lines = {
        u"    <KEY_1>"_s,
        u"      <ACTION>"_s,
        u"        <KEYBOARD MODIFIERS = \"05\" USAGEID = \"04\" />  <!-- Ctrl+Shift A  -->"_s,
        u"        <MOUSE MOVEMENT = \"UpLeft\" />"_s,
        u"        <MOUSE BUTTONS = \"Right\" />  <!-- click  -->"_s,
        u"      </ACTION>"_s,
        u"    </KEY_1>"_s,
        u"    <KEY_VOL_DOWN>"_s,
        u"        <KEYBOARD MODIFIERS = \"xx\" USAGEID = \"ZZ\" />"_s,
        u"        <MOUSE MOVEMENT = \"Sideways\" />"_s,
        u"  <KEYMAP>"_s,
        u"x"_s,
        u"        <KEYBOARD MODIFIERS = \"255\" USAGEID = \"2A\" />"_s,
    };
    QString text;
    text.reserve(bytes + 200);
    QRandomGenerator random(1);
    while (text.size() < bytes)
        text += lines[random.bounded(int(lines.size()))] + "\r\n"_L1;
    return text;
}

double BestSeconds(int repeats, const auto &work)
{
    double best = 1e9;
    for (int i = 0; i < repeats; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
    return best;
}

} // namespace

int main()
{
    std::printf("keymap reader (best of 3, mixed lines with errors):\n");
    for (const qsizetype size : {1 * MegaByte, 2 * MegaByte, 5 * MegaByte, 10 * MegaByte}) {
        const QString text = MixedKeymapText(size);
        Keymap keymap;
        const double seconds = BestSeconds(3, [&] {
            KeymapReadErrors errors;
            (void)ReadKeymapText(keymap, text, true, &errors);
        });
        const double mb = static_cast<double>(text.size()) / MegaByte;
        std::printf("  %6.1f MB  %8.3f s  %7.1f MB/s  %6.1f ms/MB\n", mb, seconds, mb / seconds, seconds * 1000 / mb);
    }

    // The writer's text of 22 keys with long comments, about 10 MB in all.
    Keymap keymap;
    for (PhoneKey key = 0; key < PhoneKeys::Count; ++key)
        keymap[key] = KeyAction{false, 0, 5, 65, QString(10 * MegaByte / PhoneKeys::Count, u'c')};
    qsizetype written = 0;
    const double writeSeconds = BestSeconds(3, [&] { written = ToAnsi(WriteKeymapText(keymap)).size(); });
    const double writtenMb = static_cast<double>(written) / MegaByte;
    std::printf("keymap writer (best of 3):\n  %6.1f MB  %8.3f s  %7.1f MB/s\n", writtenMb, writeSeconds,
                writtenMb / writeSeconds);
    return 0;
}
