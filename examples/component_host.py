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
runtime.SysStringByteLen.argtypes = [c.c_void_p]
IN_PROCESS, IUNKNOWN_SLOTS, IDISPATCH_SLOTS = 1, 3, 4
RELEASE, GET_DESCRIPTION = 2, IUNKNOWN_SLOTS + 2


class Guid(c.Structure):
    _fields_ = [("data1", c.c_uint32), ("data2", c.c_uint16), ("data3", c.c_uint16), ("data4", c.c_uint8 * 8)]


def utf16(text):
    return (text + "\0").encode("utf-16-le")


def string(text):
    """An automation string; runtime.SysFreeString frees it."""
    return c.c_void_p(runtime.SysAllocStringLen(utf16(text), len(utf16(text)) // 2 - 1))


def method(instance, slot, *types):
    """A method by its place in the object's virtual table."""
    table = c.cast(instance, c.POINTER(c.POINTER(c.c_void_p))).contents
    return lambda *arguments: c.CFUNCTYPE(c.c_int32, c.c_void_p, *types)(table[slot])(instance, *arguments)


def description():
    """What the failed call says about its error."""
    information, text = c.c_void_p(), c.c_void_p()
    if runtime.GetErrorInfo(0, c.byref(information)) != 0:
        return "no description"
    method(information, GET_DESCRIPTION, c.c_void_p)(c.byref(text))
    method(information, RELEASE)()
    described = c.string_at(text, runtime.SysStringByteLen(text)).decode("utf-16-le", "replace")
    runtime.SysFreeString(text)
    return described


def check(result, what):
    if result < 0:
        sys.exit(f"{what}: result {result & 0xFFFFFFFF:08x}, {description()}")


def call(module, slot, what, *arguments):
    """Calls one of the component's methods; numbers and the status travel by reference."""
    by_reference = [a if isinstance(a, c.c_void_p) else c.addressof(a) for a in arguments]
    check(method(module, IUNKNOWN_SLOTS + IDISPATCH_SLOTS + slot, *[c.c_void_p] * len(arguments))(*by_reference), what)


identifier, interface, module = Guid(), Guid(), c.c_void_p()
check(runtime.CLSIDFromProgID(utf16("OPaneCommDLL.clsOPaneCommDLL"), c.byref(identifier)), "looking up the component")
check(runtime.CLSIDFromString(utf16("{52dffd97-c6cc-4ba8-9c5f-99a7209c7705}"), c.byref(interface)), "the interface")
check(runtime.CoCreateInstance(c.byref(identifier), None, IN_PROCESS, c.byref(interface), c.byref(module)), "creating it")

text, generator, status = string(sys.argv[2]), string(sys.argv[3]), c.c_int16(1)
call(module, 1, "Synchronize", c.c_int16(1), c.c_int32(9600), c.c_int16(3), status)
if status.value != 0:
    print("the module did not answer")
else:
    call(module, 0, "DisplayString", text, c.c_int16(2), c.c_int16(3), c.c_int16(0), c.c_int16(0), generator, status)
    print("shown" if status.value == 0 else "not shown: the text does not fit, a character is not in the generator, "
          "or the module refused or fell silent")

method(module, RELEASE)()
for each in (text, generator):
    runtime.SysFreeString(each)
sys.exit(status.value)
