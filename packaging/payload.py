"""Puts the files of an installation behind the setup program (setup/plan/Payload.h has the layout)."""
import hashlib
import struct

DIGEST_PLACE = b"DMPAYLOAD-SHA256:"
NO_DIGEST = b"0" * 64


def end_of_program(program):
    """Returns the offset of the first byte after the sections of a program."""
    headers, = struct.unpack_from("<I", program, 0x3C)
    sections, = struct.unpack_from("<H", program, headers + 6)
    optional, = struct.unpack_from("<H", program, headers + 20)
    ends = []
    for index in range(sections):
        size, offset = struct.unpack_from("<II", program, headers + 24 + optional + 40 * index + 16)
        ends.append(offset + size if size else 0)
    return max(ends)


def make_installer(program, files):
    """Returns the bytes of the installer. The digest of the files is written into the program, so that
    the program takes no other files.
    @param program  bytes of the setup program
    @param files    (name below the folder of the programs, bytes), in the order of the installation"""
    if end_of_program(program) != len(program):
        raise ValueError("something follows the setup program: is it stripped, and not signed?")
    if program.count(DIGEST_PLACE + NO_DIGEST) != 1:
        raise ValueError("the setup program has no place for a digest")
    body = struct.pack("<I", len(files))
    for name, content in files:
        encoded = name.replace("/", "\\").encode()
        body += struct.pack("<I", len(encoded)) + encoded + struct.pack("<Q", len(content))
    body += b"".join(content for _, content in files)
    digest = hashlib.sha256(body).hexdigest().encode()
    return (program.replace(DIGEST_PLACE + NO_DIGEST, DIGEST_PLACE + digest) + b"DMSETUP1" +
            struct.pack("<Q", len(body)) + body)
