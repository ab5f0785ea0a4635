#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
'''Checks what run-with-mock-buses provides: the paired phone on the system
bus, and sessions and transfers through the obexd stand-in. Run with
--real-obexd under "run-with-mock-buses --real-obexd", it checks that the
installed obexd, which has no radio here, refuses the way the stand-in does.'''

import os
import sys
import time
from pathlib import Path
from xml.etree import ElementTree

import dbus
import dbus.mainloop.glib
from gi.repository import GLib

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
BUS, SYSTEM = dbus.SessionBus(), dbus.SystemBus()
OBEX = 'org.bluez.obex'
FAILED, INVALID = OBEX + '.Error.Failed', OBEX + '.Error.InvalidArguments'
PHONE = '00:11:22:33:44:55'
REAL = '--real-obexd' in sys.argv
PLAIN = {'Session': 'accept', 'ConnectDelay': 0, 'Transfer': 'complete', 'ChunkSize': 4096}


def proxy(path, name, bus=BUS, service=OBEX):
    return dbus.Interface(bus.get_object(service, path), name)


client = proxy('/org/bluez/obex', OBEX + '.Client1')


def use(settings):
    if not REAL:
        proxy('/org/bluez/obex', OBEX + '.Mock').SetMode(dict(PLAIN, **settings))


def paired_phones():
    objects = proxy('/', 'org.freedesktop.DBus.ObjectManager', SYSTEM, 'org.bluez').GetManagedObjects()
    devices = [o['org.bluez.Device1'] for o in objects.values() if 'org.bluez.Device1' in o]
    return [(d['Alias'], d['Address']) for d in devices if d['Paired']]


def client_signatures():
    '''Client1's methods as {name: (in signature, out signature)}.'''
    xml = proxy('/org/bluez/obex', 'org.freedesktop.DBus.Introspectable').Introspect()
    methods = ElementTree.fromstring(xml).findall(f"interface[@name='{OBEX}.Client1']/method")
    return {m.get('name'): tuple(''.join(a.get('type') for a in m.findall(f"arg[@direction='{d}']"))
                                 for d in ('in', 'out')) for m in methods}


def failure(call, *args):
    '''The error name and message a call fails with, and the seconds it took.'''
    start = time.monotonic()
    try:
        call(*args, timeout=30)
    except dbus.DBusException as e:
        return e.get_dbus_name(), e.get_dbus_message(), time.monotonic() - start
    raise AssertionError(f'{call.__name__}{args} succeeded')


def send(target, source, cancel):
    '''Sends a file in a new session, cancelling at the first progress if asked;
    returns the Transfer1 changes seen until the transfer went away.'''
    session = client.CreateSession(PHONE, {'Target': target})
    changes, loop = [], GLib.MainLoop()

    def changed(_interface, props, _invalidated, path):
        if path == transfer:
            changes.append(props)
            if cancel and len(changes) == 1:
                proxy(path, OBEX + '.Transfer1').Cancel()

    def removed(path, _interfaces):
        if path == transfer:
            loop.quit()
    BUS.add_signal_receiver(changed, 'PropertiesChanged', dbus.PROPERTIES_IFACE, OBEX, path_keyword='path')
    BUS.add_signal_receiver(removed, 'InterfacesRemoved', 'org.freedesktop.DBus.ObjectManager', OBEX)
    if target == 'opp':
        transfer, props = proxy(session, OBEX + '.ObjectPush1').SendFile(str(source))
    else:
        transfer, props = proxy(session, OBEX + '.FileTransfer1').PutFile(str(source), 'on phone.hid')
    assert (props['Status'], props['Size']) == ('queued', source.stat().st_size), props
    GLib.timeout_add_seconds(60, loop.quit)
    loop.run()
    BUS.remove_signal_receiver(changed, 'PropertiesChanged')
    BUS.remove_signal_receiver(removed, 'InterfacesRemoved')
    client.RemoveSession(session)
    assert proxy('/', 'org.freedesktop.DBus.ObjectManager').GetManagedObjects() == {}
    return changes


def check_transfers():
    received = Path(os.environ['OBEX_MOCK_RECEIVED'])
    data = os.urandom(50_000)
    source = Path(received.parent, 'profile.hid')
    source.write_bytes(data)
    # target, stand-in settings, Status changes, name the phone stores it by
    for target, settings, statuses, stored in [
            ('opp', {}, ['active', 'complete'], 'profile.hid'),
            ('ftp', {}, ['active', 'complete'], 'on phone.hid'),
            ('opp', {'Transfer': 'reject', 'RejectAfter': 1}, ['active', 'error'], None),
            ('ftp', {'ChunkSize': 100}, ['active'], None)]:
        use(settings)
        changes = send(target, source, cancel=statuses == ['active'])
        counts = [c['Transferred'] for c in changes if 'Transferred' in c]
        assert [c['Status'] for c in changes if 'Status' in c] == statuses, changes
        assert counts == sorted(set(counts)) and all(0 < n < len(data) for n in counts), counts
        assert [p.name for p in received.iterdir()] == ([stored] if stored else []), list(received.iterdir())
        if stored:
            assert Path(received, stored).read_bytes() == data
            Path(received, stored).unlink()
        print(f'ok: {target} transfer, Status {statuses} after {len(counts)} progress reports')


def main():
    assert paired_phones() == [('Test Phone', PHONE)], paired_phones()
    assert client_signatures() == {'CreateSession': ('sa{sv}', 'o'), 'RemoveSession': ('o', '')}
    # stand-in settings (ignored by the real obexd), CreateSession args, answer
    for settings, args, name in [
            ({'Session': 'refuse'}, {'Target': 'opp'}, FAILED),
            ({'Session': 'refuse', 'ConnectDelay': 300}, {'Target': 'ftp'}, FAILED),
            ({}, {'Target': 'fax'}, FAILED),
            ({}, {}, INVALID)]:
        use(settings)
        answer = failure(client.CreateSession, PHONE, dbus.Dictionary(args, signature='sv'))
        assert answer[:2] == (name, ''), answer
        assert REAL or answer[2] >= settings.get('ConnectDelay', 0) / 1000, answer
        print(f'ok: CreateSession{args} fails with {name} after {answer[2]:.3f} s')
    assert failure(client.RemoveSession, '/org/bluez/obex/client/session9')[:2] == (INVALID, '')
    if not REAL:
        check_transfers()


main()
