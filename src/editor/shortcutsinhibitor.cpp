// SPDX-License-Identifier: GPL-3.0-or-later
#include "shortcutsinhibitor.h"

#include <QGuiApplication>
#include <QWindow>

#ifdef PADMAPPER_HAS_WAYLAND
#include <qpa/qplatformnativeinterface.h>

#include <keyboard-shortcuts-inhibit-unstable-v1-client-protocol.h>
#include <wayland-client.h>

#include <cstring>
#endif

using namespace Qt::StringLiterals;

#ifdef PADMAPPER_HAS_WAYLAND

namespace {

template<typename T>
wl_proxy *AsProxy(T *object)
{
    return reinterpret_cast<wl_proxy *>(object);
}

// The registry name of the compositor's inhibit manager; 0 when it has none.
struct ManagerGlobal
{
    uint32_t Name = 0;
};

void GlobalAdded(void *data, wl_registry *, uint32_t name, const char *interface, uint32_t)
{
    if (std::strcmp(interface, zwp_keyboard_shortcuts_inhibit_manager_v1_interface.name) == 0)
        static_cast<ManagerGlobal *>(data)->Name = name;
}

void GlobalRemoved(void *, wl_registry *, uint32_t)
{
}

constexpr wl_registry_listener RegistryListener = {GlobalAdded, GlobalRemoved};

// Binds the compositor's inhibit manager. The round trip runs on a queue of its
// own, so that it dispatches none of Qt's events; the manager then moves to
// Qt's queue, whose dispatching on this thread delivers the inhibitors' events.
zwp_keyboard_shortcuts_inhibit_manager_v1 *BindManager(wl_display *display)
{
    wl_event_queue *queue = wl_display_create_queue(display);
    auto *wrapper = static_cast<wl_display *>(wl_proxy_create_wrapper(display));
    if (!queue || !wrapper) {
        if (wrapper)
            wl_proxy_wrapper_destroy(wrapper);
        if (queue)
            wl_event_queue_destroy(queue);
        return nullptr;
    }
    wl_proxy_set_queue(AsProxy(wrapper), queue);
    wl_registry *registry = wl_display_get_registry(wrapper);
    wl_proxy_wrapper_destroy(wrapper);
    ManagerGlobal global;
    wl_registry_add_listener(registry, &RegistryListener, &global);
    zwp_keyboard_shortcuts_inhibit_manager_v1 *manager = nullptr;
    if (wl_display_roundtrip_queue(display, queue) >= 0 && global.Name != 0) {
        manager = static_cast<zwp_keyboard_shortcuts_inhibit_manager_v1 *>(
            wl_registry_bind(registry, global.Name, &zwp_keyboard_shortcuts_inhibit_manager_v1_interface, 1));
        wl_proxy_set_queue(AsProxy(manager), nullptr);
    }
    wl_registry_destroy(registry);
    wl_event_queue_destroy(queue);
    return manager;
}

} // namespace

struct ShortcutsInhibitor::Wayland
{
    wl_display *Display = nullptr;
    zwp_keyboard_shortcuts_inhibit_manager_v1 *Manager = nullptr;
    bool ManagerLookedUp = false;
    zwp_keyboard_shortcuts_inhibitor_v1 *Inhibitor = nullptr;

    ~Wayland()
    {
        if (Manager)
            zwp_keyboard_shortcuts_inhibit_manager_v1_destroy(Manager);
    }
};

#else

struct ShortcutsInhibitor::Wayland
{};

#endif

ShortcutsInhibitor::ShortcutsInhibitor(QObject *parent) : QObject(parent), m_wayland(std::make_unique<Wayland>())
{
}

ShortcutsInhibitor::~ShortcutsInhibitor()
{
    Release();
}

void ShortcutsInhibitor::Inhibit(QWindow *window)
{
#ifdef PADMAPPER_HAS_WAYLAND
    if (m_state != State::Off || !window || !QGuiApplication::platformName().startsWith("wayland"_L1))
        return;
    QPlatformNativeInterface *native = QGuiApplication::platformNativeInterface();
    Wayland &wayland = *m_wayland;
    if (!wayland.ManagerLookedUp) {
        wayland.ManagerLookedUp = true;
        wayland.Display = native ? static_cast<wl_display *>(native->nativeResourceForIntegration("wl_display"))
                                 : nullptr;
        if (wayland.Display)
            wayland.Manager = BindManager(wayland.Display);
    }
    auto *seat = native ? static_cast<wl_seat *>(native->nativeResourceForIntegration("wl_seat")) : nullptr;
    auto *surface = native ? static_cast<wl_surface *>(native->nativeResourceForWindow("surface", window)) : nullptr;
    if (!wayland.Manager || !seat || !surface) {
        SetState(State::Refused);
        return;
    }
    // The compositor sends "active" whenever it passes every key to the
    // surface and "inactive" whenever it keeps its shortcuts again, for
    // instance while another window has the keyboard.
    static constexpr zwp_keyboard_shortcuts_inhibitor_v1_listener Listener = {
        [](void *data, zwp_keyboard_shortcuts_inhibitor_v1 *) {
            static_cast<ShortcutsInhibitor *>(data)->SetState(State::Active);
        },
        [](void *data, zwp_keyboard_shortcuts_inhibitor_v1 *) {
            static_cast<ShortcutsInhibitor *>(data)->SetState(State::Refused);
        },
    };
    wayland.Inhibitor = zwp_keyboard_shortcuts_inhibit_manager_v1_inhibit_shortcuts(wayland.Manager, surface, seat);
    zwp_keyboard_shortcuts_inhibitor_v1_add_listener(wayland.Inhibitor, &Listener, this);
    wl_display_flush(wayland.Display);
    SetState(State::Asked);
#else
    Q_UNUSED(window);
#endif
}

void ShortcutsInhibitor::Release()
{
#ifdef PADMAPPER_HAS_WAYLAND
    if (m_wayland->Inhibitor) {
        zwp_keyboard_shortcuts_inhibitor_v1_destroy(m_wayland->Inhibitor);
        m_wayland->Inhibitor = nullptr;
        wl_display_flush(m_wayland->Display);
    }
#endif
    SetState(State::Off);
}

void ShortcutsInhibitor::SetState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit StateChanged(state);
}
