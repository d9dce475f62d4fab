"""Whatever a program tells a session bus of itself."""

import contextlib
import xml.etree.ElementTree

import dbus

INTROSPECTABLE = "org.freedesktop.DBus.Introspectable"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"


def told_by(bus, pid):
    """Texts: of each object on each of its connections, the description, all properties, and what
    is in it, if it is a menu."""
    for name in connections_of(bus, pid):
        yield from _told_below(bus, name, "/")


def connections_of(bus, pid):
    daemon = bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus", introspect=False)
    for name in daemon.ListNames():
        with contextlib.suppress(dbus.exceptions.DBusException):  # it may just have left
            if name.startswith(":") and daemon.GetConnectionUnixProcessID(name) == pid:
                yield name


def _told_below(bus, name, path):
    thing = bus.get_object(name, path, introspect=False)
    try:
        description = str(thing.Introspect(dbus_interface=INTROSPECTABLE, timeout=10))
    except dbus.exceptions.DBusException:
        return  # a connection that has no objects has not even a root
    yield description
    node = xml.etree.ElementTree.fromstring(description)
    for interface in (found.get("name") for found in node.findall("interface")):
        if interface == MENU:
            yield str(thing.GetLayout(0, -1, dbus.Array([], "s"), dbus_interface=MENU, timeout=10))
        if node.findall(f"interface[@name='{interface}']/property"):
            yield str(thing.GetAll(interface, dbus_interface=PROPERTIES, timeout=10))
    for child in node.findall("node"):
        yield from _told_below(bus, name, path.rstrip("/") + "/" + child.get("name"))
