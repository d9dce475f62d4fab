"""A session manager of the X11 kind (XSMP), as small as a logout needs it: libSM's own half of the
protocol, answered while this process waits for something."""

import ctypes
from ctypes import CFUNCTYPE, POINTER, Structure, byref, c_char_p, c_int, c_ulong, c_void_p

from gi.repository import GLib

_SM = ctypes.CDLL("libSM.so.6")
_ICE = ctypes.CDLL("libICE.so.6")
_LIBC = ctypes.CDLL(None)

# Numbers of the protocol.
SAVE_LOCAL, SAVE_BOTH = 1, 2
INTERACT_ANY = 2
RESTART_NEVER = 3
_ALL_REQUESTS = (1 << 10) - 1
_ACCEPTED = 0


class _Value(Structure):
    _fields_ = [("length", c_int), ("value", c_void_p)]


class _Property(Structure):
    _fields_ = [("name", c_char_p), ("type", c_char_p), ("count", c_int),
                ("values", POINTER(_Value))]


_PROTOTYPES = {
    "register_client": CFUNCTYPE(c_int, c_void_p, c_void_p, c_void_p),
    "interact_request": CFUNCTYPE(None, c_void_p, c_void_p, c_int),
    "interact_done": CFUNCTYPE(None, c_void_p, c_void_p, c_int),
    "save_yourself_request": CFUNCTYPE(None, c_void_p, c_void_p, *[c_int] * 5),
    "phase_two_request": CFUNCTYPE(None, c_void_p, c_void_p),
    "save_yourself_done": CFUNCTYPE(None, c_void_p, c_void_p, c_int),
    "close_connection": CFUNCTYPE(None, c_void_p, c_void_p, c_int, c_void_p),
    "set_properties": CFUNCTYPE(None, c_void_p, c_void_p, c_int, POINTER(POINTER(_Property))),
    "delete_properties": CFUNCTYPE(None, c_void_p, c_void_p, c_int, POINTER(c_char_p)),
    "get_properties": CFUNCTYPE(None, c_void_p, c_void_p),
}


class _Callbacks(Structure):
    _fields_ = [field for name, prototype in _PROTOTYPES.items()
                for field in ((name, prototype), (name + "_data", c_void_p))]


_NEW_CLIENT = CFUNCTYPE(c_int, c_void_p, c_void_p, POINTER(c_ulong), POINTER(_Callbacks), c_void_p)
_MAY_COME = CFUNCTYPE(c_int, c_char_p)
_CONNECTION_LOST = CFUNCTYPE(None, c_void_p)

for _function, _result, _arguments in (
        (_SM.SmsInitialize, c_int, (c_char_p, c_char_p, _NEW_CLIENT, c_void_p, _MAY_COME, c_int,
                                    c_char_p)),
        (_SM.SmsGenerateClientID, c_void_p, (c_void_p,)),
        (_SM.SmsRegisterClientReply, c_int, (c_void_p, c_void_p)),
        (_SM.SmsSaveYourself, None, (c_void_p, c_int, c_int, c_int, c_int)),
        (_SM.SmsSaveComplete, None, (c_void_p,)),
        (_SM.SmsSaveYourselfPhase2, None, (c_void_p,)),
        (_SM.SmsInteract, None, (c_void_p,)),
        (_SM.SmsDie, None, (c_void_p,)),
        (_SM.SmsShutdownCancelled, None, (c_void_p,)),
        (_SM.SmsCleanUp, None, (c_void_p,)),
        (_SM.SmsGetIceConnection, c_void_p, (c_void_p,)),
        (_SM.SmFreeProperty, None, (c_void_p,)),
        (_ICE._IceTransNoListen, c_int, (c_char_p,)),
        (_ICE.IceListenForConnections, c_int, (POINTER(c_int), POINTER(POINTER(c_void_p)), c_int,
                                               c_char_p)),
        (_ICE.IceGetListenConnectionNumber, c_int, (c_void_p,)),
        (_ICE.IceGetListenConnectionString, c_void_p, (c_void_p,)),
        (_ICE.IceSetHostBasedAuthProc, None, (c_void_p, _MAY_COME)),
        (_ICE.IceFreeListenObjs, None, (c_int, POINTER(c_void_p))),
        (_ICE.IceAcceptConnection, c_void_p, (c_void_p, POINTER(c_int))),
        (_ICE.IceConnectionNumber, c_int, (c_void_p,)),
        (_ICE.IceProcessMessages, c_int, (c_void_p, c_void_p, c_void_p)),
        (_ICE.IceSetShutdownNegotiation, None, (c_void_p, c_int)),
        (_ICE.IceCloseConnection, c_int, (c_void_p,)),
        (_ICE.IceSetIOErrorHandler, c_void_p, (_CONNECTION_LOST,)),
        (_LIBC.free, None, (c_void_p,))):
    _function.restype, _function.argtypes = _result, _arguments

_anybody = _MAY_COME(lambda host: 1)
# The library's own would end this process.
_shrug = _CONNECTION_LOST(lambda connection: None)


class Client:
    """A program in the session. `log` has what it said, in order."""

    def __init__(self, connection):
        self._connection = connection
        self.log = []
        self.properties = {}

    def save_yourself(self, shutdown):
        """Asks whether all is saved, as a session does that ends, or one that just begins."""
        kind = SAVE_BOTH if shutdown else SAVE_LOCAL
        _SM.SmsSaveYourself(self._connection, kind, shutdown, INTERACT_ANY if shutdown else 0, 0)

    def die(self):
        _SM.SmsDie(self._connection)

    def cancel(self):
        """The session goes on after all."""
        _SM.SmsShutdownCancelled(self._connection)

    def restart_style(self):
        """What is to be done with it in the next session; nothing as long as it has not said."""
        return self.properties.get("RestartStyleHint", [b""])[0][:1]


class SessionManager:
    """`address` is what programs find it by; `clients` are in the order of their coming."""

    _registry = None  # libSM knows one manager for the life of the process

    def __init__(self):
        self.clients = []
        self._watches = {}
        self._callbacks = {name: prototype(getattr(self, "_" + name))
                           for name, prototype in _PROTOTYPES.items()}
        self._by_connection = {}
        self._initialize()
        self._listen()

    def _initialize(self):
        SessionManager._current = self
        if SessionManager._registry:
            return
        SessionManager._registry = _NEW_CLIENT(
            lambda *arguments: SessionManager._current._new_client(*arguments))
        _ICE.IceSetIOErrorHandler(_shrug)
        if not _SM.SmsInitialize(b"valdorn-test", b"1", SessionManager._registry, None, _anybody, 0,
                                 None):
            raise RuntimeError("libSM does not start")

    def _listen(self):
        _ICE._IceTransNoListen(b"tcp")
        count, listeners = c_int(), POINTER(c_void_p)()
        if not _ICE.IceListenForConnections(byref(count), byref(listeners), 0, None):
            raise RuntimeError("libICE does not listen")
        self._listeners = count, listeners
        for index in range(count.value):
            text = _ICE.IceGetListenConnectionString(listeners[index])
            address = ctypes.string_at(text).decode()
            _LIBC.free(text)
            if not address.startswith("local/"):
                continue
            self.address = address
            _ICE.IceSetHostBasedAuthProc(listeners[index], _anybody)
            self._watch(_ICE.IceGetListenConnectionNumber(listeners[index]), self._accept,
                        listeners[index])

    def _watch(self, descriptor, function, argument):
        self._watches[descriptor] = GLib.io_add_watch(
            descriptor, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP,
            lambda *_: function(descriptor, argument))

    def _accept(self, _, listener):
        status = c_int()
        connection = _ICE.IceAcceptConnection(listener, byref(status))
        if status.value == _ACCEPTED:
            self._watch(_ICE.IceConnectionNumber(connection), self._process, connection)
        return True

    def _process(self, descriptor, connection):
        # 0 is success; otherwise the connection is closed or of no more use.
        if _ICE.IceProcessMessages(connection, None, None) == 0:
            return True
        self._watches.pop(descriptor, None)
        return False

    def _new_client(self, connection, _data, mask, callbacks, _reasons):
        client = Client(connection)
        self.clients.append(client)
        self._by_connection[connection] = client
        mask[0] = _ALL_REQUESTS
        for name, callback in self._callbacks.items():
            setattr(callbacks[0], name, callback)
        return 1

    def _register_client(self, connection, _data, previous):
        _LIBC.free(previous)
        name = _SM.SmsGenerateClientID(connection)
        _SM.SmsRegisterClientReply(connection, name)
        _LIBC.free(name)
        self._by_connection[connection].log.append("registered")
        if not previous:
            # The protocol wants a newcomer to tell about itself.
            self._by_connection[connection].save_yourself(shutdown=False)
        return 1

    def _interact_request(self, connection, _data, _kind):
        self._by_connection[connection].log.append("wants to ask the user")
        _SM.SmsInteract(connection)

    def _interact_done(self, connection, _data, cancel):
        self._by_connection[connection].log.append("cancels" if cancel else "has asked the user")

    def _save_yourself_request(self, connection, *_):
        self._by_connection[connection].log.append("wants to save")

    def _phase_two_request(self, connection, _data):
        _SM.SmsSaveYourselfPhase2(connection)

    def _save_yourself_done(self, connection, _data, success):
        self._by_connection[connection].log.append("saved" if success else "not saved")
        _SM.SmsSaveComplete(connection)

    def _close_connection(self, connection, _data, _count, _reasons):
        self._by_connection.pop(connection).log.append("closed")
        ice = _SM.SmsGetIceConnection(connection)
        GLib.source_remove(self._watches.pop(_ICE.IceConnectionNumber(ice)))
        _SM.SmsCleanUp(connection)
        _ICE.IceSetShutdownNegotiation(ice, 0)
        _ICE.IceCloseConnection(ice)

    def _set_properties(self, connection, _data, count, properties):
        for index in range(count):
            told = properties[index].contents
            self._by_connection[connection].properties[told.name.decode()] = [
                ctypes.string_at(told.values[at].value, told.values[at].length)
                for at in range(told.count)]
            _SM.SmFreeProperty(properties[index])
        _LIBC.free(properties)

    def _delete_properties(self, connection, _data, count, names):
        for index in range(count):
            self._by_connection[connection].properties.pop(names[index].decode(), None)

    def _get_properties(self, connection, _data):
        pass

    def close(self):
        for watch in self._watches.values():
            GLib.source_remove(watch)
        _ICE.IceFreeListenObjs(*self._listeners)
