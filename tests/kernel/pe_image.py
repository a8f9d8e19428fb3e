"""Reads a 64-bit Windows image: sections, imports, exports, relocations, unwind data, checksum."""

import struct

EXECUTE, READ, WRITE = 0x20000000, 0x40000000, 0x80000000


class Section:
    def __init__(self, data, at):
        self.name = data[at:at + 8].rstrip(b"\0").decode()
        self.size, self.start, self.raw_size, self.raw = struct.unpack_from("<IIII", data, at + 8)
        self.flags = struct.unpack_from("<I", data, at + 36)[0]
        self.end = self.start + self.size


class Image:
    """All addresses are relative to the image base."""

    def __init__(self, path):
        self.path = path
        self.data = data = open(path, "rb").read()
        pe = self.u32(0x3c)
        if data[:2] != b"MZ" or data[pe:pe + 4] != b"PE\0\0":
            raise ValueError(f"{path} is no Windows image")
        self.machine, count, self.time, _, self.symbols, optional_size, self.flags = \
            struct.unpack_from("<HHIIIHH", data, pe + 4)
        opt = self.optional = pe + 24
        self.magic = struct.unpack_from("<H", data, opt)[0]
        self.entry = self.u32(opt + 16)
        self.base, self.section_alignment, self.file_alignment = struct.unpack_from("<QII", data, opt + 24)
        self.size, self.header_size, self.checksum = struct.unpack_from("<III", data, opt + 56)
        self.subsystem, self.dll_flags = struct.unpack_from("<HH", data, opt + 68)
        self.directories = [struct.unpack_from("<II", data, opt + 112 + 8 * i) for i in range(16)]
        self.sections = [Section(data, opt + optional_size + 40 * i) for i in range(count)]

    def u32(self, at):
        return struct.unpack_from("<I", self.data, at)[0]

    def section(self, address):
        for s in self.sections:
            if s.start <= address < max(s.end, s.start + s.raw_size):
                return s
        return None

    def offset(self, address):
        s = self.section(address)
        if s is None:
            raise ValueError(f"address {address:#x} lies in no section")
        return s.raw + address - s.start

    def text(self, address):
        at = self.offset(address)
        return self.data[at:self.data.index(b"\0", at)].decode()

    def is_code(self, address):
        s = self.section(address)
        return s is not None and bool(s.flags & EXECUTE)

    def computed_checksum(self):
        data = bytearray(self.data)
        data[self.optional + 64:self.optional + 68] = bytes(4)
        if len(data) % 2:
            data.append(0)
        total = sum(struct.unpack(f"<{len(data) // 2}H", data))
        while total > 0xffff:
            total = (total & 0xffff) + (total >> 16)
        return total + len(self.data)

    def imports(self):
        """The set of "module:name"."""
        found = set()
        start, size = self.directories[1]
        if not size:
            return found
        at = self.offset(start)
        while True:
            lookup, _, _, name, table = struct.unpack_from("<IIIII", self.data, at)
            at += 20
            if not name:
                return found
            entry = self.offset(lookup or table)
            while True:
                value = struct.unpack_from("<Q", self.data, entry)[0]
                entry += 8
                if not value:
                    break
                what = f"#{value & 0xffff}" if value >> 63 else self.text(value + 2)
                found.add(f"{self.text(name)}:{what}")

    def exports(self):
        """The module's name, the names in table order as (name, address), and the addresses without a name."""
        start, size = self.directories[0]
        if not size:
            return "", [], []
        at = self.offset(start)
        module, _, functions, names, f, n, o = struct.unpack_from("<IIIIIII", self.data, at + 12)
        table = struct.unpack_from(f"<{functions}I", self.data, self.offset(f))
        name_at = struct.unpack_from(f"<{names}I", self.data, self.offset(n))
        index = struct.unpack_from(f"<{names}H", self.data, self.offset(o))
        named = [(self.text(a), table[i]) for a, i in zip(name_at, index)]
        nameless = [a for i, a in enumerate(table) if a and i not in index]
        return self.text(module), named, nameless

    def relocations(self):
        """Addresses of the 64-bit words that hold an absolute address."""
        found = []
        start, size = self.directories[5]
        at = self.offset(start) if size else 0
        end = at + size
        while at < end:
            page, length = struct.unpack_from("<II", self.data, at)
            if not length:
                break
            for (word,) in struct.iter_unpack("<H", self.data[at + 8:at + length]):
                if word >> 12 == 10:
                    found.append(page + (word & 0xfff))
                elif word >> 12:
                    raise ValueError(f"relocation type {word >> 12}")
            at += length
        return found

    def pointer(self, address):
        """The image-relative target of a relocated word."""
        return struct.unpack_from("<Q", self.data, self.offset(address))[0] - self.base

    def unwind_ranges(self):
        """(first, end, stack bytes that the function's own code takes) in table order."""
        start, size = self.directories[3]
        entries = struct.iter_unpack("<III", self.data[self.offset(start):][:size]) if size else []
        return [(first, end, self.frame_size(info)) for first, end, info in entries]

    def frame_size(self, info):
        at = self.offset(info)
        version_flags, _, codes, _ = self.data[at:at + 4]
        if version_flags & 7 not in (1, 2):
            raise ValueError(f"unwind data version {version_flags & 7}")
        words = struct.unpack_from(f"<{codes}H", self.data, at + 4)
        total, i = 0, 0
        while i < codes:
            operation, value = words[i] >> 8 & 15, words[i] >> 12
            if operation == 0:  # push
                total, i = total + 8, i + 1
            elif operation == 1 and value == 0:  # allocation, 16-bit count of 8
                total, i = total + 8 * words[i + 1], i + 2
            elif operation == 1:
                total, i = total + words[i + 1] + (words[i + 2] << 16), i + 3
            elif operation == 2:  # small allocation
                total, i = total + 8 * value + 8, i + 1
            elif operation == 3:  # frame register
                i += 1
            elif operation in (4, 8):  # saved register
                i += 2
            elif operation in (5, 9):
                i += 3
            else:
                raise ValueError(f"unwind operation {operation}")
        if version_flags >> 3 & 4:  # the rest stands with another function
            total += self.frame_size(self.u32(at + 4 + 2 * (codes + codes % 2) + 8))
        return total
