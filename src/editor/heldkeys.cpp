// SPDX-License-Identifier: GPL-3.0-or-later
#include "heldkeys.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QWidget>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <utility>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif
#if defined(PADMAPPER_HAS_XCB) && QT_CONFIG(xcb)
#include <xcb/xcb.h>
#endif

using namespace Qt::StringLiterals;

namespace {

namespace Vk {
constexpr int Back = 8, Tab = 9, Clear = 12, Return = 13, Pause = 19, Capital = 20, Escape = 27, Space = 32;
constexpr int Prior = 33, Next = 34, End = 35, Home = 36, Left = 37, Up = 38, Right = 39, Down = 40;
constexpr int Snapshot = 44, Insert = 45, Delete = 46, Digit0 = 48, LetterA = 65, Apps = 93;
constexpr int Numpad0 = 96, Multiply = 106, Add = 107, Subtract = 109, Decimal = 110, Divide = 111;
constexpr int F1 = 112, NumLock = 144, ScrollLock = 145;
#ifdef Q_OS_WIN
constexpr int Shift = 16, Control = 17, Menu = 18;
#endif
} // namespace Vk

// X11 key symbols of the sided modifiers (nativeVirtualKey on X11 and Wayland).
constexpr std::array<std::pair<quint32, int>, 10> ModifierKeysyms = {{
    {0xffe1, ModifierKeys::LeftShift},
    {0xffe2, ModifierKeys::RightShift},
    {0xffe3, ModifierKeys::LeftCtrl},
    {0xffe4, ModifierKeys::RightCtrl},
    {0xffe9, ModifierKeys::LeftAlt},
    {0xffea, ModifierKeys::RightAlt},
    {0xfe03, ModifierKeys::RightAlt}, // AltGr
    {0xffeb, ModifierKeys::LeftWin},
    {0xffec, ModifierKeys::RightWin},
    {0xffe7, ModifierKeys::LeftWin}, // Meta_L
}};

// The sided keys of each modifier, left first.
struct SidedModifier
{
    Qt::KeyboardModifier Modifier;
    int Left;
    int Right;
};
constexpr std::array<SidedModifier, 4> SidedModifiers = {{
    {Qt::ShiftModifier, ModifierKeys::LeftShift, ModifierKeys::RightShift},
    {Qt::ControlModifier, ModifierKeys::LeftCtrl, ModifierKeys::RightCtrl},
    {Qt::AltModifier, ModifierKeys::LeftAlt, ModifierKeys::RightAlt},
    {Qt::MetaModifier, ModifierKeys::LeftWin, ModifierKeys::RightWin},
}};

// X key codes (evdev codes + 8) of the digit row and the punctuation keys, and
// the virtual keys a German keyboard gives them, whatever Shift makes of them.
constexpr std::array<std::pair<quint32, int>, 22> PositionKeys = {{
    {10, 49},  {11, 50}, {12, 51}, {13, 52}, {14, 53},  {15, 54},
    {16, 55},  {17, 56}, {18, 57}, {19, 48}, {20, 219}, // ß
    {21, 221}, // ´
    {34, 186}, // Ü
    {35, 187}, // +
    {47, 192}, // Ö
    {48, 222}, // Ä
    {49, 220}, // ^
    {51, 191}, // #
    {59, 188}, // ,
    {60, 190}, // .
    {61, 189}, // -
    {94, 226}, // <
}};

bool UsesXKeyCodes()
{
    const QString platform = QGuiApplication::platformName();
    return platform == "xcb"_L1 || platform.startsWith("wayland"_L1);
}

int ByQtKey(int key, bool keypad)
{
    if (keypad) {
        if (key >= Qt::Key_0 && key <= Qt::Key_9)
            return Vk::Numpad0 + (key - Qt::Key_0);
        switch (key) {
        case Qt::Key_Asterisk:
            return Vk::Multiply;
        case Qt::Key_Plus:
            return Vk::Add;
        case Qt::Key_Minus:
            return Vk::Subtract;
        case Qt::Key_Period:
        case Qt::Key_Comma:
            return Vk::Decimal;
        case Qt::Key_Slash:
            return Vk::Divide;
        case Qt::Key_Clear:
            return Vk::Clear;
        default:
            break;
        }
    }
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return Vk::LetterA + (key - Qt::Key_A);
    if (key >= Qt::Key_0 && key <= Qt::Key_9)
        return Vk::Digit0 + (key - Qt::Key_0);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return Vk::F1 + (key - Qt::Key_F1);
    switch (key) {
    case Qt::Key_Backspace:
        return Vk::Back;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return Vk::Tab;
    case Qt::Key_Clear:
        return Vk::Clear;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return Vk::Return;
    case Qt::Key_Pause:
        return Vk::Pause;
    case Qt::Key_CapsLock:
        return Vk::Capital;
    case Qt::Key_Escape:
        return Vk::Escape;
    case Qt::Key_Space:
        return Vk::Space;
    case Qt::Key_PageUp:
        return Vk::Prior;
    case Qt::Key_PageDown:
        return Vk::Next;
    case Qt::Key_End:
        return Vk::End;
    case Qt::Key_Home:
        return Vk::Home;
    case Qt::Key_Left:
        return Vk::Left;
    case Qt::Key_Up:
        return Vk::Up;
    case Qt::Key_Right:
        return Vk::Right;
    case Qt::Key_Down:
        return Vk::Down;
    case Qt::Key_Print:
        return Vk::Snapshot;
    case Qt::Key_Insert:
        return Vk::Insert;
    case Qt::Key_Delete:
        return Vk::Delete;
    case Qt::Key_Menu:
        return Vk::Apps;
    case Qt::Key_NumLock:
        return Vk::NumLock;
    case Qt::Key_ScrollLock:
        return Vk::ScrollLock;
    // Without a native code the side is unknown: take the left key.
    case Qt::Key_Shift:
        return ModifierKeys::LeftShift;
    case Qt::Key_Control:
        return ModifierKeys::LeftCtrl;
    case Qt::Key_Alt:
        return ModifierKeys::LeftAlt;
    case Qt::Key_AltGr:
        return ModifierKeys::RightAlt;
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
        return ModifierKeys::LeftWin;
    case Qt::Key_Super_R:
        return ModifierKeys::RightWin;
    // The punctuation of a German keyboard.
    case Qt::Key_Udiaeresis:
        return 186;
    case Qt::Key_Plus:
        return 187;
    case Qt::Key_Comma:
        return 188;
    case Qt::Key_Minus:
        return 189;
    case Qt::Key_Period:
        return 190;
    case Qt::Key_NumberSign:
        return 191;
    case Qt::Key_Odiaeresis:
        return 192;
    case Qt::Key_ssharp:
        return 219;
    case Qt::Key_AsciiCircum:
    case Qt::Key_Dead_Circumflex:
        return 220;
    case Qt::Key_acute:
    case Qt::Key_Dead_Acute:
        return 221;
    case Qt::Key_Adiaeresis:
        return 222;
    case Qt::Key_Less:
    case Qt::Key_Greater:
    case Qt::Key_Bar:
        return 226;
    default:
        return 0;
    }
}

#ifdef Q_OS_WIN
constexpr quint32 ExtendedKeyFlag = 0x100;
constexpr quint32 RightShiftScanCode = 0x36;

int WindowsVirtualKey(const QKeyEvent &event)
{
    const int vk = static_cast<int>(event.nativeVirtualKey());
    const quint32 scan = event.nativeScanCode();
    switch (vk) {
    case Vk::Shift:
        return (scan & 0xFF) == RightShiftScanCode ? ModifierKeys::RightShift : ModifierKeys::LeftShift;
    case Vk::Control:
        return (scan & ExtendedKeyFlag) ? ModifierKeys::RightCtrl : ModifierKeys::LeftCtrl;
    case Vk::Menu:
        return (scan & ExtendedKeyFlag) ? ModifierKeys::RightAlt : ModifierKeys::LeftAlt;
    default:
        return vk;
    }
}
#endif

// The code by which the platform names a key when asked which keys are down:
// the X key code (the scan code of a key event under X11 and Wayland), and
// under Windows the virtual-key code itself.
quint32 PlatformKeyCode(const QKeyEvent &event, int virtualKey)
{
#ifdef Q_OS_WIN
    Q_UNUSED(event);
    return static_cast<quint32>(virtualKey);
#else
    Q_UNUSED(virtualKey);
    return event.nativeScanCode();
#endif
}

#ifdef Q_OS_WIN
// Windows keeps the state of every key for the program's thread, whichever of
// its windows had the keyboard.
std::optional<QSet<quint32>> QueryWindowsHeldKeys()
{
    std::array<BYTE, 256> state{};
    if (!GetKeyboardState(state.data()))
        return std::nullopt;
    QSet<quint32> down;
    for (quint32 vk = 0; vk < state.size(); ++vk) {
        if (state[vk] & 0x80)
            down.insert(vk);
    }
    return down;
}
#endif

#if defined(PADMAPPER_HAS_XCB) && QT_CONFIG(xcb)
// The X server's bitmap of the key codes held down, whichever window has the
// keyboard.
std::optional<QSet<quint32>> QueryX11HeldKeys()
{
    const auto *x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    xcb_connection_t *connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return std::nullopt;
    const std::unique_ptr<xcb_query_keymap_reply_t, decltype(&std::free)> reply(
        xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr), &std::free);
    if (!reply)
        return std::nullopt;
    QSet<quint32> down;
    for (quint32 code = 0; code < 8 * sizeof reply->keys; ++code) {
        if (reply->keys[code / 8] & (1u << (code % 8)))
            down.insert(code);
    }
    return down;
}
#endif

} // namespace

int VirtualKeyOf(const QKeyEvent &event)
{
#ifdef Q_OS_WIN
    if (event.nativeVirtualKey() != 0)
        return WindowsVirtualKey(event);
#endif
    const quint32 keysym = event.nativeVirtualKey();
    for (const auto &[sym, vk] : ModifierKeysyms) {
        if (keysym == sym)
            return vk;
    }
    const bool keypad = event.modifiers().testFlag(Qt::KeypadModifier);
    if (!keypad && event.nativeScanCode() != 0 && UsesXKeyCodes()) {
        for (const auto &[code, vk] : PositionKeys) {
            if (event.nativeScanCode() == code)
                return vk;
        }
    }
    return ByQtKey(event.key(), keypad);
}

bool IsUndoOrRedoChord(const KeyAction &action)
{
    if (action.IsMouse)
        return false;
    int modifiers = action.Modifiers;
    const ModifierFlags flags = ModifierToFlags(modifiers);
    QList<QKeySequence> chords = QKeySequence::keyBindings(QKeySequence::Undo);
    chords << QKeySequence::keyBindings(QKeySequence::Redo);
    return std::any_of(chords.cbegin(), chords.cend(), [&](const QKeySequence &chord) {
        const QKeyCombination combination = chord[0];
        const Qt::KeyboardModifiers held = combination.keyboardModifiers();
        const int key = ByQtKey(combination.key(), false);
        return key != 0 && key == action.KeyCode
               && held.testFlag(Qt::ControlModifier) == bool(flags.LeftCtrl || flags.RightCtrl)
               && held.testFlag(Qt::ShiftModifier) == bool(flags.LeftShift || flags.RightShift)
               && held.testFlag(Qt::AltModifier) == bool(flags.LeftAlt || flags.RightAlt)
               && held.testFlag(Qt::MetaModifier) == bool(flags.LeftWin || flags.RightWin);
    });
}

HeldKeys::HeldKeys(QObject *parent) : QObject(parent)
{
#ifdef Q_OS_WIN
    if (QGuiApplication::platformName() == "windows"_L1) {
        m_query = QueryWindowsHeldKeys;
        // Windows names every key by its virtual-key code.
        for (int vk = 1; vk < 256; ++vk)
            m_learnt.insert(static_cast<quint32>(vk), vk);
    }
#elif defined(PADMAPPER_HAS_XCB) && QT_CONFIG(xcb)
    if (QGuiApplication::platformName() == "xcb"_L1)
        m_query = QueryX11HeldKeys;
#endif
}

KeyboardState HeldKeys::Snapshot() const
{
    KeyboardState state{};
    QHash<int, quint32> held = m_held;
    if (const std::optional<QSet<quint32>> down = m_query ? m_query() : std::nullopt) {
        // A key whose release went elsewhere is up by now; a known key pressed
        // while another window had the keyboard is down.
        held.removeIf([&down](const auto &key) { return key.value() != 0 && !down->contains(key.value()); });
        for (const quint32 code : *down) {
            if (const int vk = m_learnt.value(code))
                held.insert(vk, code);
        }
    }
    if (!m_query) {
        // With nobody to ask, a modifier that a held key's press carried is
        // down unless a key of its own is: the left one, as the side is not
        // told. This only ever adds keys (AltGr, for one, is no Alt).
        Qt::KeyboardModifiers carried;
        for (auto key = held.cbegin(); key != held.cend(); ++key)
            carried |= m_pressedWith.value(key.key());
        for (const SidedModifier &sided : SidedModifiers) {
            if (carried.testFlag(sided.Modifier) && !held.contains(sided.Left) && !held.contains(sided.Right))
                held.insert(sided.Left, 0);
        }
    }
    for (auto key = held.cbegin(); key != held.cend(); ++key) {
        if (key.key() > 0 && key.key() < int(state.size()))
            state[static_cast<std::size_t>(key.key())] = KeyDown;
    }
    return state;
}

bool HeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (!key->isAutoRepeat()) {
            const int vk = VirtualKeyOf(*key);
            if (vk != 0) {
                const quint32 code = PlatformKeyCode(*key, vk);
                if (code != 0)
                    m_learnt.insert(code, vk);
                if (event->type() == QEvent::KeyPress) {
                    m_held.insert(vk, code);
                    m_pressedWith.insert(vk, key->modifiers());
                } else {
                    m_held.remove(vk);
                    m_pressedWith.remove(vk);
                }
            }
        }
        if (m_swallow) {
            if (event->type() == QEvent::KeyPress
                && (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)))
                emit TakeBackPressed();
            return true;
        }
        break;
    }
    case QEvent::ApplicationDeactivate:
    case QEvent::WindowDeactivate:
    case QEvent::WindowBlocked:
        // Another program or window has the keyboard, or a modal dialog keeps
        // the key events from this one: releases no longer reach us.
        Clear();
        break;
    case QEvent::Show:
        // An open menu or list takes the keyboard in the same way.
        if (watched->isWidgetType() && static_cast<QWidget *>(watched)->windowType() == Qt::Popup)
            Clear();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
