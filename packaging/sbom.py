"""Writes the bill of materials (CycloneDX 1.5): the programs and the libraries linked into them."""
import json
import subprocess
import time
import uuid

# Name in the bill, Debian package with the library, licence of the library, files that contain it.
LIBRARIES = [
    ("CLI11", "libcli11-dev", "BSD-3-Clause", ["daemonctl.exe"]),
    ("nlohmann-json", "nlohmann-json3-dev", "MIT", ["daemonctl.exe"]),
    ("libstdc++", "g++-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1",
     ["DaemonManager.exe", "daemonctl.exe"]),
    ("libgcc", "gcc-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1",
     ["DaemonManager.exe", "daemonctl.exe", "DaemonMgrPS.dll"]),
    ("libssp", "gcc-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1",
     ["DaemonManager.exe", "daemonctl.exe"]),
    ("winpthreads", "mingw-w64-x86-64-dev", "MIT AND BSD-3-Clause",
     ["DaemonManager.exe", "daemonctl.exe"]),
    ("mingw-w64-runtime", "mingw-w64-x86-64-dev", "ZPL-2.1",
     ["DaemonManager.exe", "daemonctl.exe", "DaemonMgrPS.dll"]),
    ("nsis", "nsis", "Zlib AND CPL-1.0", ["installer"]),
]
DESCRIPTIONS = {
    "DaemonManager.exe": "The supervisor",
    "daemonctl.exe": "The operator's command line",
    "DaemonMgrPS.dll": "Carries calls of the supervisor's object between processes",
    "sdk/src/SupervisorClient.cpp": "The client library, as source",
}


def _debian_version(package):
    return subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package],
                          capture_output=True, text=True, check=True).stdout


def _upstream(debian_version):
    """Example: 12.2.0-14+deb12u1 -> 12.2.0, 2.1.2+ds-1 -> 2.1.2"""
    return debian_version.split(":")[-1].split("-")[0].split("+")[0]


def _library(name, package, licence):
    version = _debian_version(package)
    return {
        "type": "library",
        "bom-ref": name,
        "name": name,
        "version": _upstream(version),
        "licenses": [{"expression": licence}],
        "purl": f"pkg:deb/debian/{package}@{version.replace('+', '%2B')}",
    }


def write_sbom(target, version, when, hashes):
    """@param hashes  SHA-256 of each file of the packages, by the name of the file"""
    own = [{
        "type": "application" if name.endswith(".exe") else "library",
        "bom-ref": name,
        "name": name,
        "version": version,
        "description": description,
        "hashes": [{"alg": "SHA-256", "content": hashes[name]}],
    } for name, description in DESCRIPTIONS.items()]
    contains = {"installer": [], **{name: [] for name in DESCRIPTIONS}}
    for name, _, _, users in LIBRARIES:
        for user in users:
            contains[user].append(name)
    document = {
        "bomFormat": "CycloneDX",
        "specVersion": "1.5",
        "version": 1,
        "metadata": {
            "timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(when)),
            "component": {"type": "application", "bom-ref": "DaemonManager",
                          "name": "DaemonManager", "version": version},
        },
        "components": own + [{"type": "application", "bom-ref": "installer", "name": "installer",
                              "version": version}] +
                      [_library(name, package, licence) for name, package, licence, _ in LIBRARIES],
        "dependencies": [{"ref": "DaemonManager", "dependsOn": [*DESCRIPTIONS, "installer"]}] +
                        [{"ref": user, "dependsOn": used} for user, used in contains.items()],
    }
    # Equal content gets an equal serial number.
    identity = json.dumps(document, sort_keys=True)
    document["serialNumber"] = f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, identity)}"
    target.write_text(json.dumps(document, indent=2) + "\n")
