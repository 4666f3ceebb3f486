"""Reads the headers of a Windows x64 program or library, and lists what its protection lacks."""
import struct

# Flags of IMAGE_OPTIONAL_HEADER64.DllCharacteristics (winnt.h)
PROTECTIONS = {"HIGH_ENTROPY_VA": 0x0020, "DYNAMIC_BASE": 0x0040, "NX_COMPAT": 0x0100}
RELOCS_STRIPPED = 0x0001  # flag of IMAGE_FILE_HEADER.Characteristics

IMPORT_DIRECTORY = 1  # indexes of the data directories
RESOURCE_DIRECTORY = 2
RELOCATION_DIRECTORY = 5

RT_MANIFEST = 24  # type of a resource (winuser.h)

# The run-time library writes this text if a function finds its stack damaged. The text is part of a
# program only if the program contains a protected function.
STACK_PROTECTOR_TEXT = b"*** stack smashing detected ***"


class ProgramFile:
    """@param content  bytes of the file; raises ValueError if they are no x64 program"""

    def __init__(self, content):
        self._content = content
        header, = struct.unpack_from("<I", content, 0x3C)
        machine, sections = struct.unpack_from("<HH", content, header + 4)
        optional_size, self._characteristics = struct.unpack_from("<HH", content, header + 20)
        optional = header + 24
        if content[header:header + 4] != b"PE\0\0" or machine != 0x8664:
            raise ValueError("not a program for Windows x64")
        self._dll_characteristics, = struct.unpack_from("<H", content, optional + 70)
        count, = struct.unpack_from("<I", content, optional + 108)
        self._directories = [struct.unpack_from("<II", content, optional + 112 + 8 * index)
                             for index in range(count)]
        self._sections = []
        for index in range(sections):
            at = optional + optional_size + 40 * index
            size, address, raw_size, raw = struct.unpack_from("<IIII", content, at + 8)
            self._sections.append((address, max(size, raw_size), raw))

    def _offset(self, address):
        """Returns the place in the file of an address relative to the image base."""
        for start, size, raw in self._sections:
            if start <= address < start + size:
                return raw + address - start
        raise ValueError(f"no section holds the address {address:#x}")

    def _text(self, address):
        start = self._offset(address)
        return self._content[start:self._content.index(b"\0", start)].decode()

    def _import_descriptors(self):
        """Returns the addresses of the list of functions and of the library's name, for each library."""
        descriptors = []
        at = self._offset(self._directories[IMPORT_DIRECTORY][0])
        while True:
            functions, _, _, name = struct.unpack_from("<IIII", self._content, at)
            if name == 0:
                return descriptors
            descriptors.append((functions, name))
            at += 20

    def imported_libraries(self):
        """Returns the names of the libraries in lower case, sorted."""
        return sorted(self._text(name).lower() for _, name in self._import_descriptors())

    def imported_functions(self):
        """Returns the names of the functions of all libraries."""
        names = set()
        for functions, _ in self._import_descriptors():
            at = self._offset(functions)
            while (entry := struct.unpack_from("<Q", self._content, at)[0]) != 0:
                names.add(self._text(entry + 2))  # behind a hint of two bytes
                at += 8
        return names

    def has_manifest(self):
        """Returns whether the program has a manifest among its resources."""
        address, size = self._directories[RESOURCE_DIRECTORY]
        if size == 0:
            return False
        root = self._offset(address)
        named, numbered = struct.unpack_from("<HH", self._content, root + 12)
        types = [struct.unpack_from("<I", self._content, root + 16 + 8 * index)[0]
                 for index in range(named, named + numbered)]
        return RT_MANIFEST in types

    def missing_protections(self):
        """Returns the names of the protections that the headers do not ask for."""
        missing = [name for name, flag in PROTECTIONS.items()
                   if not self._dll_characteristics & flag]
        _, size = self._directories[RELOCATION_DIRECTORY]
        if size == 0 or self._characteristics & RELOCS_STRIPPED:
            missing.append("relocations")
        return missing

    def has_stack_protector(self):
        return STACK_PROTECTOR_TEXT in self._content
