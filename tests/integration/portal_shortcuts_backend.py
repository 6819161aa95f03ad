'''A desktop's GlobalShortcuts portal backend, for tests of the portal's clients.

It grants every shortcut except those listed in the "refuse" parameter, and describes each
trigger it binds as "Desktop: " followed by the preferred trigger it was given. Press(id), on the
mock interface, sends Activated for the newest session.
'''

import dbus
from dbusmock import MOCK_IFACE

BUS_NAME = 'org.freedesktop.impl.portal.desktop.vantletest'
MAIN_OBJ = '/org/freedesktop/portal/desktop'
MAIN_IFACE = 'org.freedesktop.impl.portal.GlobalShortcuts'
SYSTEM_BUS = False


def load(mock, parameters):
    mock.refuse = set(parameters.get('refuse', []))
    mock.sessions = []
    mock.AddProperty(MAIN_IFACE, 'version', dbus.UInt32(1))


@dbus.service.method(MAIN_IFACE, in_signature='oosa{sv}', out_signature='ua{sv}')
def CreateSession(self, handle, session_handle, app_id, options):
    self.sessions.append(str(session_handle))
    self.AddObject(session_handle, 'org.freedesktop.impl.portal.Session', {},
                   [('Close', '', '', '')])
    # A new session has nothing bound yet; real desktops say so, and the frontend expects it.
    return (dbus.UInt32(0),
            dbus.Dictionary({'shortcuts': dbus.Array([], signature='(sa{sv})')}, signature='sv'))


@dbus.service.method(MAIN_IFACE, in_signature='ooa(sa{sv})sa{sv}', out_signature='ua{sv}')
def BindShortcuts(self, handle, session_handle, shortcuts, parent_window, options):
    bound = []
    for shortcut_id, properties in shortcuts:
        if str(shortcut_id) in self.refuse:
            continue
        described = dbus.Dictionary({
            'description': properties.get('description', ''),
            'trigger_description': 'Desktop: ' + properties.get('preferred_trigger', ''),
        }, signature='sv')
        bound.append(dbus.Struct((shortcut_id, described), signature='sa{sv}'))
    return (dbus.UInt32(0),
            dbus.Dictionary({'shortcuts': dbus.Array(bound, signature='(sa{sv})')},
                            signature='sv'))


@dbus.service.method(MOCK_IFACE, in_signature='s', out_signature='')
def Press(self, shortcut_id):
    self.EmitSignal(MAIN_IFACE, 'Activated', 'osta{sv}',
                    [dbus.ObjectPath(self.sessions[-1]), shortcut_id, dbus.UInt64(0),
                     dbus.Dictionary({}, signature='sv')])


@dbus.service.method(MOCK_IFACE, in_signature='ss', out_signature='')
def Rebind(self, shortcut_id, trigger):
    '''The user gave the shortcut other keys in the desktop's settings.'''
    described = dbus.Dictionary({'trigger_description': trigger}, signature='sv')
    self.EmitSignal(MAIN_IFACE, 'ShortcutsChanged', 'oa(sa{sv})',
                    [dbus.ObjectPath(self.sessions[-1]),
                     dbus.Array([dbus.Struct((shortcut_id, described), signature='sa{sv}')],
                                signature='(sa{sv})')])
