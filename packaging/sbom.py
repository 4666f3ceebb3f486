"""Writes the bill of materials (CycloneDX 1.5): the packages, each file in them, and the libraries that
are linked into the programs."""
import json
import platform
import subprocess
import time
import urllib.parse
import uuid

PROGRAMS = {
    "DaemonManager.exe": "The supervisor",
    "DaemonGuard.exe": "Keeps the supervisor running",
    "daemonctl.exe": "The operator's command line",
    "DaemonMgrPS.dll": "Carries calls of the supervisor's object between processes",
    "Uninstall.exe": "The uninstaller; the installer is this program with files behind it",
}
SDK = "sdk/"
ALL_CPP = ["DaemonManager.exe", "DaemonGuard.exe", "daemonctl.exe", "Uninstall.exe"]

# Name in the bill, Debian package with the library, licence of the library, programs that contain it.
LIBRARIES = [
    ("CLI11", "libcli11-dev", "BSD-3-Clause", ["daemonctl.exe"]),
    ("nlohmann-json", "nlohmann-json3-dev", "MIT", ["daemonctl.exe", "DaemonGuard.exe"]),
    ("libstdc++", "g++-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1", ALL_CPP),
    ("libgcc", "gcc-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1",
     [*ALL_CPP, "DaemonMgrPS.dll"]),
    ("libssp", "gcc-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1",
     [*ALL_CPP, "DaemonMgrPS.dll"]),
    ("winpthreads", "mingw-w64-x86-64-dev", "MIT AND BSD-3-Clause", ALL_CPP),
    ("mingw-w64-runtime", "mingw-w64-x86-64-dev", "ZPL-2.1", [*ALL_CPP, "DaemonMgrPS.dll"]),
]


def _debian_field(package, field):
    return subprocess.run(["dpkg-query", "-W", "-f", f"${{{field}}}", package],
                          capture_output=True, text=True, check=True).stdout


def _upstream(debian_version):
    """Example: 12.2.0-14+deb12u1 -> 12.2.0, 2.1.2+ds-1 -> 2.1.2"""
    return debian_version.split(":")[-1].split("-")[0].split("+")[0]


def _library(name, package, licence):
    version = _debian_field(package, "Version")
    release = platform.freedesktop_os_release()
    qualifiers = urllib.parse.urlencode({
        "arch": _debian_field(package, "Architecture"),
        "distro": f"{release['ID']}-{release.get('VERSION_ID', 'unstable')}",
        "upstream": _debian_field(package, "source:Package"),
    })
    return {
        "type": "library",
        "bom-ref": name,
        "name": name,
        "version": _upstream(version),
        "licenses": [{"expression": licence}],
        "purl": f"pkg:deb/debian/{urllib.parse.quote(package, safe='')}"
                f"@{urllib.parse.quote(version, safe='')}?{qualifiers}",
    }


def _own(name, kind, version, digest, description=None):
    component = {
        "type": kind,
        "bom-ref": name,
        "name": name,
        "version": version,
        "hashes": [{"alg": "SHA-256", "content": digest}],
    }
    return component if description is None else {**component, "description": description}


def _kind(name):
    return "application" if name.endswith(".exe") else "library" if name.endswith(".dll") else "file"


def write_sbom(target, version, when, files, packages):
    """@param files     SHA-256 of each installed file, by its name
    @param packages  SHA-256 of the installer and of the ZIP, by their names"""
    own = [_own(name, _kind(name), version, digest, PROGRAMS.get(name))
           for name, digest in sorted(files.items())]
    sdk = {"type": "library", "bom-ref": "sdk", "name": "DaemonManagerSdk", "version": version,
           "description": "The client library, as source"}
    contains = {name: [] for name in files}
    for name, _, _, users in LIBRARIES:
        for user in users:
            contains[user].append(name)
    contains["sdk"] = sorted(name for name in files if name.startswith(SDK))
    for name in packages:
        installed = set(files) - (set() if name.endswith(".exe") else {"Uninstall.exe"})
        contains[name] = ["sdk", *sorted(file for file in installed if not file.startswith(SDK))]
    document = {
        "bomFormat": "CycloneDX",
        "specVersion": "1.5",
        "version": 1,
        "metadata": {
            "timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(when)),
            "component": {"type": "application", "bom-ref": "DaemonManager",
                          "name": "DaemonManager", "version": version},
        },
        "components": [_own(name, "application" if name.endswith(".exe") else "file", version, digest)
                       for name, digest in packages.items()] + own + [sdk] +
                      [_library(name, package, licence) for name, package, licence, _ in LIBRARIES],
        "dependencies": [{"ref": "DaemonManager", "dependsOn": list(packages)}] +
                        [{"ref": user, "dependsOn": used} for user, used in contains.items()],
    }
    # Equal content gets an equal serial number.
    identity = json.dumps(document, sort_keys=True)
    document["serialNumber"] = f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, identity)}"
    target.write_text(json.dumps(document, indent=2) + "\n")
