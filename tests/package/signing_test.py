"""Signed packages, with a key that the test makes."""
import pathlib
import subprocess
import tempfile
import unittest
import zipfile

import windows_machine as machine
from packages import NAME, OUTPUT, pack

SIGNER = machine.SOURCE / "packaging/sign.py"


class Signing(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.key = self.folder / "key.pem"
        self.certificate = self.folder / "certificate.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
                        "-subj", "/CN=Test of the packages", "-addext", "extendedKeyUsage=codeSigning",
                        "-keyout", self.key, "-out", self.certificate], check=True,
                       stderr=subprocess.DEVNULL)

    def is_signed(self, program):
        result = subprocess.run(["osslsigncode", "verify", "-CAfile", self.certificate, "-in", program],
                                capture_output=True, text=True, check=False)
        return result.returncode == 0

    def checksums_are_signed(self, sums):
        return subprocess.run(["openssl", "cms", "-verify", "-binary", "-inform", "DER",
                               "-in", f"{sums}.p7s", "-content", sums, "-CAfile", self.certificate,
                               "-purpose", "any", "-out", "/dev/null"],
                              capture_output=True, check=False).returncode == 0

    def test_without_a_command_nothing_is_signed(self):
        self.assertFalse(self.is_signed(OUTPUT / f"{NAME}-setup.exe"))
        self.assertEqual(list(OUTPUT.glob("*.p7s")), [])

    def test_programs_installer_uninstaller_and_checksums_are_signed_and_install(self):
        output = pack(self.folder / "packages",
                      f"{SIGNER} --certificate {self.certificate} --key {self.key}")
        with zipfile.ZipFile(output / f"{NAME}.zip") as archive:
            for name in ("DaemonManager.exe", "daemonctl.exe", "DaemonMgrPS.dll"):
                program = pathlib.Path(archive.extract(f"{NAME}/{name}", self.folder))
                self.assertTrue(self.is_signed(program), name)
        setup = output / f"{NAME}-setup.exe"
        self.assertTrue(self.is_signed(setup))
        self.assertTrue(self.checksums_are_signed(output / "SHA256SUMS"))
        # The installer finds its files before its signature, and the uninstaller is signed as well.
        code, said = machine.call(str(setup), "/S", r"/ROOT=C:\signed")
        self.assertEqual(code, 0, said)
        uninstaller = r"C:\Program Files\DaemonManager\Uninstall.exe"
        signed = self.is_signed(machine.host_path(uninstaller))
        self.assertEqual(machine.call(uninstaller, "/S")[0], 0)
        self.assertTrue(signed)

    def test_a_changed_file_is_noticed(self):
        output = pack(self.folder / "packages",
                      f"{SIGNER} --certificate {self.certificate} --key {self.key}")
        sums = output / "SHA256SUMS"
        sums.write_text(sums.read_text().replace("a", "b"))
        self.assertFalse(self.checksums_are_signed(sums))
        setup = output / f"{NAME}-setup.exe"
        content = bytearray(setup.read_bytes())
        content[len(content) // 2] ^= 1
        setup.write_bytes(content)
        self.assertFalse(self.is_signed(setup))
        # The program itself notices it, too.
        code, said = machine.call(str(setup), "/S", r"/ROOT=C:\signed")
        self.assertEqual((code, said), (
            2, "This installer is damaged. Copy it again and compare its checksum.\n"))
