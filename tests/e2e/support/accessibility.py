"""What a screen reader learns of the windows of a program: roles, names, states and texts, read
over the accessibility bus (AT-SPI)."""

import dbus
import dbus.bus

from .waiting import TimedOut, pump, wait_until

LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
REGISTRY = "org.a11y.atspi.Registry"
REGISTRY_PATH = "/org/a11y/atspi/registry"
ROOT = "/org/a11y/atspi/accessible/root"
ACCESSIBLE = "org.a11y.atspi.Accessible"
OBJECT_EVENT = "org.a11y.atspi.Event.Object"
PROPERTIES = "org.freedesktop.DBus.Properties"

# Positions in the set of states, from the protocol.
_STATES = {1: "active", 4: "checked", 8: "enabled", 11: "focusable", 12: "focused", 7: "editable",
           17: "multi-line", 23: "selected", 24: "sensitive", 25: "showing", 30: "visible",
           43: "read-only"}
_LABELLED_BY = 2
_ON_SCREEN = dbus.UInt32(0)

# Programs that ask for accessibility while the bus is coming up stay without it.
VARIABLES = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}


class Accessibility:
    """The accessibility bus of a desktop; programs started with VARIABLES are on it."""

    def __init__(self, desktop):
        # The desktop's settings are nobody's business here.
        self._desktop = desktop
        self._launcher = desktop.start("env", "GSETTINGS_BACKEND=memory", LAUNCHER,
                                       "--launch-immediately")
        self._session = desktop.bus.connect()
        self._bus = dbus.bus.BusConnection(wait_until(self._address, "the accessibility bus"))
        self._bus.set_exit_on_disconnect(False)

    def _address(self):
        if not self._session.name_has_owner("org.a11y.Bus"):
            return None
        bus = self._session.get_object("org.a11y.Bus", "/org/a11y/bus", introspect=False)
        return str(bus.GetAddress(dbus_interface="org.a11y.Bus", timeout=10))

    def windows(self):
        """The visible windows of all programs."""
        registry = Accessible(self._bus, REGISTRY, ROOT)
        return [window for program in registry.children() for window in program.children()
                if "showing" in window.states()]

    def windows_like(self, title, content=None):
        """The visible windows of that title, with something of that role and name in them."""
        return [window for window in self.windows()
                if window.name() == title and (not content or window.find_all(*content))]

    def listen(self):
        """From now on; the listener is to be closed."""
        return Listener(self._bus)

    def close(self):
        self._bus.close()
        self._desktop.end(self._launcher)


class Listener:
    """Hears what a screen reader says without being asked to: notifications that appear."""

    def __init__(self, bus):
        self._bus = bus
        self.said = []
        # Programs say nothing of what nobody wants to know.
        registry = bus.get_object(REGISTRY, REGISTRY_PATH, introspect=False)
        registry.get_dbus_method("RegisterEvent", REGISTRY)("object:state-changed:showing")
        self._match = bus.add_signal_receiver(
            self._on_state_changed, "StateChanged", OBJECT_EVENT, sender_keyword="sender",
            path_keyword="path")

    def _on_state_changed(self, state, is_on, *_, sender=None, path=None):
        if state != "showing" or not is_on:
            return
        thing = Accessible(self._bus, sender, path)
        try:
            if thing.role() == "notification":
                self.said.append(thing.name())
        except dbus.DBusException:
            pass  # gone again

    def wait_for(self, text, seconds=20.0):
        """Until exactly that has been said, apart from other things."""
        wait_until(lambda: text in self.said, f"{text!r} in {self.said}", seconds)

    def take(self):
        """What has been said since the last time."""
        pump()
        said, self.said = self.said, []
        return said

    def close(self):
        self._match.remove()


class Accessible:
    """One thing in a window, asked afresh by each call."""

    def __init__(self, bus, service, path):
        self._bus, self._service, self._path = bus, service, path
        self._object = bus.get_object(service, path, introspect=False)

    def __eq__(self, other):
        return isinstance(other, Accessible) and self._key() == other._key()

    def __hash__(self):
        return hash(self._key())

    def _key(self):
        return self._service, self._path

    def _property(self, interface, name):
        return self._object.Get(interface, name, dbus_interface=PROPERTIES, timeout=10)

    def _call(self, method, *arguments, interface=ACCESSIBLE):
        return self._object.get_dbus_method(method, interface)(*arguments, timeout=10)

    def name(self):
        return str(self._property(ACCESSIBLE, "Name"))

    def description(self):
        return str(self._property(ACCESSIBLE, "Description"))

    def labels(self):
        """The names of the things that say what this is for."""
        return [Accessible(self._bus, str(service), str(path)).name()
                for relation, targets in self._call("GetRelationSet")
                if relation == _LABELLED_BY for service, path in targets]

    def role(self):
        return str(self._call("GetRoleName"))

    def states(self):
        low, high = self._call("GetState")
        bits = int(high) << 32 | int(low)
        return {name for bit, name in _STATES.items() if bits >> bit & 1}

    def children(self):
        return [Accessible(self._bus, str(service), str(path))
                for service, path in self._call("GetChildren")]

    def text(self):
        """What stands in a field or a text."""
        return str(self._call("GetText", 0, -1, interface="org.a11y.atspi.Text"))

    def length(self):
        """Of the text in it; all that a password field tells."""
        return int(self._property("org.a11y.atspi.Text", "CharacterCount"))

    def value(self):
        """Of something that has a range, such as a scroll bar."""
        return float(self._property("org.a11y.atspi.Value", "CurrentValue"))

    def maximum(self):
        return float(self._property("org.a11y.atspi.Value", "MaximumValue"))

    def extents(self):
        """Left, top, width and height on the screen."""
        return tuple(int(number) for number in self._call(
            "GetExtents", _ON_SCREEN, interface="org.a11y.atspi.Component"))

    def centre(self):
        left, top, width, height = self.extents()
        return left + width // 2, top + height // 2

    def everything(self):
        """This and all that is shown in it, from top to bottom of the tree."""
        yield self
        for child in self.children():
            if "showing" in child.states():
                yield from child.everything()

    def told(self):
        """Every text of this and of all that is in it, whether it is shown or not."""
        yield from (self.name(), self.description())
        if "org.a11y.atspi.Text" in self._call("GetInterfaces"):
            yield self.text()
        for child in self.children():
            yield from child.told()

    def find_all(self, role, name=None):
        """All of that role and name that are shown now. What goes away meanwhile is not there."""
        try:
            return [thing for thing in self.everything()
                    if thing.role() == role and name in (None, thing.name())]
        except dbus.DBusException:
            return []

    def find(self, role, name=None):
        """The first of that role and name, once it is there."""
        try:
            return wait_until(lambda: self.find_all(role, name), f"{role} {name!r}")[0]
        except TimedOut as missing:
            raise AssertionError(f"{missing}; there are: {self.described()}") from None

    def names(self, *roles):
        """Of all that have one of these roles, in the order of reading on the screen."""
        things = [thing for role in roles for thing in self.find_all(role)]
        return [thing.name() for thing in sorted(things, key=Accessible.place)]

    def place(self):
        """The height of the middle, and the left edge."""
        left, top, _, height = self.extents()
        return top + height // 2, left

    def described(self):
        """Role and name of everything that is shown."""
        return [(thing.role(), thing.name()) for thing in self.everything()]
