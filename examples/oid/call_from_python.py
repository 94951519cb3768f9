# Calls the library from Python, by the names that C++ gives its functions.
import ctypes as c
import sys

library = c.CDLL("libkorvan.so.1")
platform = c.CDLL("libkorvan_platform.so.1")


class OidInfo(c.Structure):
    """The part of COidData that is CryptoAPI's, as far as it is needed."""
    _fields_ = [("cbSize", c.c_uint), ("pszOID", c.c_char_p),
                ("pwszName", c.c_wchar_p), ("dwGroupId", c.c_uint),
                ("Algid", c.c_uint)]


find = library["_ZN6korvan11FindOIDInfoEjPvj"]
find.argtypes = [c.c_uint, c.c_void_p, c.c_uint]
find.restype = c.POINTER(OidInfo)
load = library["_Z17LoadString_korvanPvjPci"]
load.argtypes = [c.c_void_p, c.c_uint, c.c_char_p, c.c_int]
platform.GetLastError.restype = c.c_uint

found = find(1, b"1.2.643.2.2.19", 3)
if not found:
    sys.exit("not found")
record = found.contents
print(f"{record.pszOID.decode()} is {record.pwszName}, "
      f"ALG_ID 0x{record.Algid:X}")

text = c.create_string_buffer(256)
length = load(None, 8048, text, 255)
print(f"text 8048 is {text.raw[:length].decode()}")
if load(None, 4, text, 255) == 0:
    print(f"there is no text 4: last error {platform.GetLastError()}")
# It prints:
# 1.2.643.2.2.19 is GOST R 34.10-2001, ALG_ID 0x2E23
# text 8048 is Common Name
# there is no text 4: last error 87
