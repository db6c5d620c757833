"""Drives a module through the component, by way of its virtual table.

usage: component_host.py LIBRARY TEXT GENERATOR     LIBRARY: libopane-component.so
"""
import ctypes as c
import sys

if len(sys.argv) != 4:
    sys.exit(__doc__)
runtime = c.CDLL(sys.argv[1])
runtime.SysAllocStringLen.restype = c.c_void_p
runtime.SysFreeString.argtypes = [c.c_void_p]
IN_PROCESS, IUNKNOWN_SLOTS, IDISPATCH_SLOTS = 1, 3, 4


class Guid(c.Structure):
    _fields_ = [("data1", c.c_uint32), ("data2", c.c_uint16), ("data3", c.c_uint16), ("data4", c.c_uint8 * 8)]


def utf16(text):
    return (text + "\0").encode("utf-16-le")


def string(text):
    """An automation string; runtime.SysFreeString frees it."""
    return c.c_void_p(runtime.SysAllocStringLen(utf16(text), len(utf16(text)) // 2 - 1))


def check(result, what):
    if result < 0:
        sys.exit(f"{what}: result {result & 0xFFFFFFFF:08x}")


def call(module, slot, what, *arguments):
    """Calls a method by its place after IUnknown and IDispatch; numbers and the status travel by reference."""
    table = c.cast(module, c.POINTER(c.POINTER(c.c_void_p))).contents
    method = c.CFUNCTYPE(c.c_int32, c.c_void_p, *[c.c_void_p] * len(arguments))(table[slot])
    by_reference = [a if isinstance(a, c.c_void_p) else c.addressof(a) for a in arguments]
    check(method(module, *by_reference), what)


identifier, interface, module = Guid(), Guid(), c.c_void_p()
check(runtime.CLSIDFromProgID(utf16("OPaneCommDLL.clsOPaneCommDLL"), c.byref(identifier)), "looking up the component")
check(runtime.CLSIDFromString(utf16("{52dffd97-c6cc-4ba8-9c5f-99a7209c7705}"), c.byref(interface)), "the interface")
check(runtime.CoCreateInstance(c.byref(identifier), None, IN_PROCESS, c.byref(interface), c.byref(module)), "creating it")

FIRST = IUNKNOWN_SLOTS + IDISPATCH_SLOTS
text, generator, status = string(sys.argv[2]), string(sys.argv[3]), c.c_int16(1)
call(module, FIRST + 1, "Synchronize", c.c_int16(1), c.c_int32(9600), c.c_int16(3), status)
if status.value == 0:
    call(module, FIRST, "DisplayString", text, c.c_int16(2), c.c_int16(3), c.c_int16(0), c.c_int16(0), generator, status)
print("shown" if status.value == 0 else "the module did not answer")

table = c.cast(module, c.POINTER(c.POINTER(c.c_void_p))).contents
c.CFUNCTYPE(c.c_uint32, c.c_void_p)(table[2])(module)  # Release
for each in (text, generator):
    runtime.SysFreeString(each)
sys.exit(status.value)
