// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes read as keymap text: the reader must end without fault, and what it
// made of them must be stable: written, read and written again, the text stays.
#include "keymap/keymap.h"
#include "keymap/keymapreader.h"
#include "keymap/keymapwriter.h"
#include "support/ansitext.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = FromAnsi(QByteArrayView(data, static_cast<qsizetype>(size)));
    Keymap keymap;
    KeymapReadErrors errors;
    if (ReadKeymapText(keymap, text, true, &errors) && errors.List.isEmpty())
        std::abort(); // text never makes an internal error
    if (errors.Any())
        (void)KeymapReadSummary(errors);

    const QString written = WriteKeymapText(keymap);
    Keymap again;
    if (ReadKeymapText(again, written, true))
        std::abort(); // the writer's own text reads without error
    if (WriteKeymapText(again) != written)
        std::abort();
    return 0;
}
