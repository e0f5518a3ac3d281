"""Reads the resources of a 32-bit Windows program."""
import struct

ICON, RCDATA, GROUP_ICON, VERSION, MANIFEST = 3, 10, 14, 16, 24


def read(data):
    """The bytes of each resource by type and number."""
    header = struct.unpack_from("<I", data, 0x3C)[0]
    sections, optional = struct.unpack_from("<H12xH", data, header + 6)
    for at in range(header + 24 + optional, header + 24 + optional + 40 * sections, 40):
        name, virtual, start = struct.unpack_from("<8s4xI4xI", data, at)
        if name.rstrip(b"\0") == b".rsrc":
            return dict(_walk(data, start, start, virtual, ()))
    return {}


def _walk(data, base, table, virtual, path):
    named, numbered = struct.unpack_from("<12xHH", data, table)
    for i in range(named + numbered):
        number, offset = struct.unpack_from("<II", data, table + 16 + 8 * i)
        if offset & 0x80000000:
            yield from _walk(data, base, base + (offset & 0x7FFFFFFF), virtual, (*path, number))
        else:
            place, size = struct.unpack_from("<II", data, base + offset)
            start = base + place - virtual
            yield path[:2], data[start:start + size]


def icon_sizes(group):
    """Widths of the pictures of an icon, 0 read as 256."""
    count = struct.unpack_from("<4xH", group)[0]
    return sorted(group[6 + 14 * i] or 256 for i in range(count))
