# SPDX-License-Identifier: GPL-3.0-or-later
'''Stand-in for obexd's client side, as a python-dbusmock template.

Object push ("opp") and file transfer ("ftp") sessions whose transfers advance
on a timer; paths, signatures, errors and signals follow obexd 5.66 (README).
Settings: template parameters (JSON), or org.bluez.obex.Mock.SetMode(a{sv}) on
/org/bluez/obex for sessions and transfers started afterwards.
  Session       "accept", or "refuse": CreateSession fails with Error.Failed
                and RefuseMessage (empty, as obexd when no link comes up)
  ConnectDelay  milliseconds CreateSession takes (radio link + OBEX connect)
  Transfer      "complete", or "reject": the phone declines once RejectAfter
                bytes went out, and the transfer ends with Status "error"
  ChunkSize     bytes sent per tick, every Interval milliseconds
  Received      folder where completed transfers land, named as the phone
                names them: the file's own name (opp), the target name (ftp)
'''

import itertools
import os
from pathlib import Path

import dbus
import dbus.service
from gi.repository import GLib

from dbusmock import OBJECT_MANAGER_IFACE, mockobject

BUS_NAME = 'org.bluez.obex'
MAIN_OBJ = '/'
SYSTEM_BUS = False
IS_OBJECT_MANAGER = True

ERROR = 'org.bluez.obex.Error.'
SESSION_IFACE = 'org.bluez.obex.Session1'
TRANSFER_IFACE = 'org.bluez.obex.Transfer1'
# Target -> the profile's UUID (the session's Target property) and interface.
TARGETS = {
    'opp': ('00001105-0000-1000-8000-00805f9b34fb', 'org.bluez.obex.ObjectPush1'),
    'ftp': ('00001106-0000-1000-8000-00805f9b34fb', 'org.bluez.obex.FileTransfer1'),
}
DEFAULTS = {'Session': 'accept', 'RefuseMessage': '', 'ConnectDelay': 0,
            'Transfer': 'complete', 'RejectAfter': 1, 'ChunkSize': 4096,
            'Interval': 20, 'Received': ''}
settings = dict(DEFAULTS)
# obexd numbers sessions and transfers with counters that never go back.
session_numbers = itertools.count()
transfer_numbers = itertools.count()


def failure(name, message=''):
    return dbus.exceptions.DBusException(message, name=ERROR + name)


def load(mock, parameters):
    Change(parameters or {})
    Client(mock)


def Change(values):
    for key, value in values.items():
        if key not in DEFAULTS:
            raise dbus.exceptions.DBusException(key, name='org.bluez.obex.Mock.UnknownSetting')
        settings[key] = type(DEFAULTS[key])(value)


class Client(dbus.service.Object):
    '''/org/bluez/obex, which answers CreateSession only once "connected".'''
    methods, interface = {}, ''  # none added at run time; dbusmock's dispatch looks here first

    def __init__(self, mock):
        super().__init__(mock.connection, '/org/bluez/obex')
        self.manager = mock

    @dbus.service.method('org.bluez.obex.Client1', in_signature='sa{sv}', out_signature='o',
                         async_callbacks=('reply', 'fail'))
    def CreateSession(self, destination, args, reply, fail):
        if 'Target' not in args:
            return fail(failure('InvalidArguments'))
        target = str(args['Target']).lower()
        if target not in TARGETS:
            return fail(failure('Failed'))
        chosen = dict(settings)

        def answer():
            if chosen['Session'] == 'refuse':
                fail(failure('Failed', chosen['RefuseMessage']))
            else:
                reply(AddSession(self.manager, destination, args, target))
            return False
        GLib.timeout_add(chosen['ConnectDelay'], answer)
        return None

    @dbus.service.method('org.bluez.obex.Client1', in_signature='o', out_signature='')
    def RemoveSession(self, path):
        session = mockobject.objects.get(path)
        if not hasattr(session, 'queue'):
            raise failure('InvalidArguments')
        # Closing a session drops its transfers without a final Status.
        for transfer in list(session.queue):
            Drop(transfer)
        Remove(session)

    @dbus.service.method('org.bluez.obex.Mock', in_signature='a{sv}', out_signature='')
    def SetMode(self, values):
        Change(values)


def AddSession(manager, destination, args, target):
    path = f'/org/bluez/obex/client/session{next(session_numbers)}'
    uuid, interface = TARGETS[target]
    props = {'Destination': dbus.String(destination),
             'Channel': dbus.Byte(args.get('Channel', 0)),
             'Target': dbus.String(uuid)}
    manager.AddObject(path, SESSION_IFACE, props, [('GetCapabilities', '', 's', 'ret = ""')])
    session = mockobject.objects[path]
    if target == 'opp':  # the phone stores the file under its own name
        session.AddMethod(interface, 'SendFile', 's', 'oa{sv}',
                          lambda self, source: Queue(self, source, os.path.basename(source)))
    else:
        session.AddMethod(interface, 'PutFile', 'ss', 'oa{sv}', Queue)
    session.queue, session.timer = [], 0
    manager.EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesAdded', 'oa{sa{sv}}',
                       [dbus.ObjectPath(path), {SESSION_IFACE: props, interface: {}}])
    return dbus.ObjectPath(path)


def Queue(session, source, name):
    '''Starts sending a local file; like obexd, the file is opened right away.'''
    if not source:
        raise failure('Failed', 'Invalid filename given')
    try:
        data = open(source, 'rb')  # pylint: disable=consider-using-with
    except OSError as e:
        raise failure('Failed', 'Unable to open file') from e
    path = f'{session.__dbus_object_path__}/transfer{next(transfer_numbers)}'
    props = {'Status': dbus.String('queued'), 'Name': dbus.String(name),
             'Size': dbus.UInt64(os.fstat(data.fileno()).st_size),
             'Filename': dbus.String(source),
             'Session': dbus.ObjectPath(session.__dbus_object_path__)}
    session.AddObject(path, TRANSFER_IFACE, props, [('Cancel', '', '', lambda self: Drop(self))])
    transfer = mockobject.objects[path]
    transfer.data, transfer.sent, transfer.session = data, bytearray(), session
    mockobject.objects['/'].EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesAdded', 'oa{sa{sv}}',
                                       [dbus.ObjectPath(path), {TRANSFER_IFACE: props}])
    session.queue.append(transfer)
    if not session.timer:
        session.timer = GLib.timeout_add(settings['Interval'], Tick, session)
    return dbus.ObjectPath(path), props


def Tick(session):
    '''Sends the next chunk of the session's first transfer, one at a time.'''
    if not session.queue:
        session.timer = 0
        return False
    transfer = session.queue[0]
    if settings['Transfer'] == 'reject' and len(transfer.sent) >= settings['RejectAfter']:
        End(transfer, 'error')
        return True
    chunk = transfer.data.read(settings['ChunkSize'])
    transfer.sent += chunk
    props = transfer.props[TRANSFER_IFACE]
    # A file cut short while it is sent ends the transfer early, as with obexd.
    if chunk and len(transfer.sent) < props['Size']:
        Update(transfer, {'Status': 'active', 'Transferred': dbus.UInt64(len(transfer.sent))})
        return True
    if settings['Received']:
        Path(settings['Received'], Path(props['Name']).name).write_bytes(transfer.sent)
    # The last Transferred value is never signalled: "complete" means all of it.
    End(transfer, 'complete')
    return True


def Update(transfer, changes):
    '''Sets Transfer1 properties and signals those that changed, in one signal.'''
    props = transfer.props[TRANSFER_IFACE]
    changed = {key: value for key, value in changes.items() if props.get(key) != value}
    props.update(changed)
    if changed:
        transfer.EmitSignal(dbus.PROPERTIES_IFACE, 'PropertiesChanged', 'sa{sv}as',
                            [TRANSFER_IFACE, changed, dbus.Array([], signature='s')])


def End(transfer, status):
    Update(transfer, {'Status': status})
    Drop(transfer)


def Drop(transfer):
    '''Forgets a transfer the way obexd does once it ended or was cancelled.'''
    transfer.data.close()
    transfer.session.queue.remove(transfer)
    Remove(transfer)


def Remove(obj):
    path = obj.__dbus_object_path__
    interfaces = sorted(set(obj.props) | set(obj.methods))
    if getattr(obj, 'timer', 0):
        GLib.source_remove(obj.timer)
    mockobject.objects['/'].RemoveObject(path)
    mockobject.objects['/'].EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesRemoved', 'oas',
                                       [dbus.ObjectPath(path), interfaces])
