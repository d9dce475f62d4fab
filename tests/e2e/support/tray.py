"""The other end of the status item: a status-notifier watcher with a host, and what it sees of an
item and its menu."""

import re

import dbus
import dbus.bus
import dbus.service

from .waiting import wait_until

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"


class TrayHost(dbus.service.Object):
    """A watcher that is its own host, from the beginning or later. Items that register are kept
    in order."""

    def __init__(self, bus, hosted=True):
        self._hosted = hosted
        self._session = bus.connect()
        self._session.request_name(WATCHER, dbus.bus.NAME_FLAG_DO_NOT_QUEUE)
        super().__init__(self._session, "/StatusNotifierWatcher")
        self.items = []

    @dbus.service.method(WATCHER, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        # Either a bus name, or an object path on the sender's connection.
        if service.startswith("/"):
            self.items.append(Item(self._session, sender, service))
        else:
            self.items.append(Item(self._session, service, "/StatusNotifierItem"))
        self.StatusNotifierItemRegistered(service)

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierHost(self, service):
        self.StatusNotifierHostRegistered()

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemRegistered(self, service):
        pass

    @dbus.service.signal(WATCHER, signature="")
    def StatusNotifierHostRegistered(self):
        pass

    @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return self.GetAll(interface)[name]

    @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {
            "IsStatusNotifierHostRegistered": dbus.Boolean(self._hosted),
            "ProtocolVersion": dbus.Int32(0),
            "RegisteredStatusNotifierItems":
                dbus.Array([item.service for item in self.items], signature="s"),
        }

    # Qt believes only in properties that the introspection names.
    @dbus.service.method("org.freedesktop.DBus.Introspectable", out_signature="s",
                         path_keyword="path", connection_keyword="connection")
    def Introspect(self, path, connection):
        xml = dbus.service.Object.Introspect(self, path, connection)
        head = f'<interface name="{WATCHER}">'
        return xml.replace(head, head + '''
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <property name="RegisteredStatusNotifierItems" type="as" access="read"/>''')

    def wait_for_item(self, seconds=20.0):
        """The item that registered last, once there is one."""
        return wait_until(lambda: self.items and self.items[-1], "a status item", seconds)

    def begin_hosting(self):
        self._hosted = True
        self.StatusNotifierHostRegistered()

    def close(self):
        """Leaves the bus, as a panel does that crashes; harmless when called twice."""
        if not self._session:
            return
        self.remove_from_connection()
        self._session.close()
        self._session = None


class Item:
    """A status item as a bar sees it."""

    def __init__(self, connection, service, path):
        self.service = service
        self.connection = connection
        self._object = connection.get_object(service, path, introspect=False)

    def property(self, name):
        return self._object.Get(ITEM, name, dbus_interface=PROPERTIES, timeout=10)

    def pixmaps(self):
        """Width, height and ARGB bytes of each size of the icon."""
        return [(int(width), int(height), bytes(data))
                for width, height, data in self.property("IconPixmap")]

    def activate(self):
        """A primary click."""
        self._object.Activate(10, 10, dbus_interface=ITEM, timeout=10)

    def hand_over(self, token):
        """The compositor's leave to raise a window, which comes before a click."""
        self._object.ProvideXdgActivationToken(token, dbus_interface=ITEM, timeout=10)

    def menu(self):
        return Menu(self.connection, self.service, self.property("Menu"))

    def signals(self):
        """The signals of the item and its menu from now on."""
        return SignalRecorder(self.connection, self.service, (ITEM, MENU))


def _told_by_watcher(connection, name):
    watcher = connection.get_object(WATCHER, "/StatusNotifierWatcher", introspect=False)
    return watcher.Get(WATCHER, name, dbus_interface=PROPERTIES)


def has_host(connection):
    """Whether some panel on the bus shows status items."""
    return (connection.name_has_owner(WATCHER) and
            _told_by_watcher(connection, "IsStatusNotifierHostRegistered"))


def items_of_panel(connection):
    """Where the status items are of whatever panel is on the bus."""
    return _told_by_watcher(connection, "RegisteredStatusNotifierItems")


def item_of_panel(connection):
    """The first of them, once it is there."""
    wait_until(lambda: connection.name_has_owner(WATCHER), "the panel's tray")
    names = wait_until(lambda: items_of_panel(connection), "an item in the panel")
    service, _, path = str(names[0]).partition("/")
    return Item(connection, service, "/" + path)


class SignalRecorder:
    """Signals of a service in the order of their coming, as pairs of a name and its arguments."""

    def __init__(self, connection, service, interfaces):
        self.seen = []
        self._matches = [
            connection.add_signal_receiver(self._on_signal, dbus_interface=interface,
                                           bus_name=service, member_keyword="member")
            for interface in interfaces]

    def _on_signal(self, *arguments, member=None):
        self.seen.append((member, arguments))

    def count(self, name):
        return sum(member == name for member, _ in self.seen)

    def clear(self):
        self.seen.clear()

    def close(self):
        for match in self._matches:
            match.remove()


def shown_label(label):
    """What a bar shows: two underscores stand for one, a single one marks the next letter."""
    return re.sub("_(_?)", r"\1", label)


class Menu:
    """The item's menu, read afresh by each call."""

    def __init__(self, connection, service, path):
        self._object = connection.get_object(service, path, introspect=False)

    def entries(self):
        """The entries as dictionaries with id, label, enabled, visible, type and shortcut."""
        _, layout = self._object.GetLayout(0, -1, dbus.Array([], signature="s"),
                                           dbus_interface=MENU, timeout=10)
        return [self._entry(child) for child in layout[2]]

    @staticmethod
    def _entry(child):
        number, properties, _ = child
        shortcut = properties.get("shortcut")
        return {
            "id": int(number),
            "label": shown_label(str(properties.get("label", ""))),
            "enabled": bool(properties.get("enabled", True)),
            "visible": bool(properties.get("visible", True)),
            "type": str(properties.get("type", "standard")),
            "shortcut": [str(key) for key in shortcut[0]] if shortcut else None,
        }

    def labels(self):
        """The visible labels, "---" for a separator."""
        return ["---" if entry["type"] == "separator" else entry["label"]
                for entry in self.entries() if entry["visible"]]

    def choose(self, label):
        """Clicks the entry of that label."""
        for entry in self.entries():
            if entry["label"] == label:
                self._object.Event(entry["id"], "clicked", dbus.String("", variant_level=1),
                                   dbus.UInt32(0), dbus_interface=MENU, timeout=10)
                return
        raise AssertionError(f"no menu entry {label!r} in {self.labels()}")
