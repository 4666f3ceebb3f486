#!/usr/bin/env python3
"""Signs one file. make_packages.py calls it for each file that is signed, if DM_SIGN names it:

  cmake --preset windows -DDM_SIGN="$PWD/packaging/sign.py --certificate CHAIN.pem --key KEY.pem"

A program gets its signature inside (osslsigncode). Any other file gets a detached signature beside it,
FILE.p7s (openssl cms). The key may be a name of a hardware token, see --help of both tools.
"""
import argparse
import os
import subprocess
import sys


def sign_program(arguments):
    signed = arguments.file + ".signed"
    command = ["osslsigncode", "sign", "-certs", arguments.certificate, "-key", arguments.key,
               "-h", "sha256", "-n", "DaemonManager"]
    if arguments.timestamp:
        command += ["-ts", arguments.timestamp]
    subprocess.run([*command, "-in", arguments.file, "-out", signed], check=True,
                   stdout=subprocess.DEVNULL)
    os.replace(signed, arguments.file)


def sign_detached(arguments):
    subprocess.run(["openssl", "cms", "-sign", "-binary", "-md", "sha256", "-outform", "DER",
                    "-signer", arguments.certificate, "-inkey", arguments.key,
                    "-in", arguments.file, "-out", arguments.file + ".p7s"], check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--certificate", required=True, help="certificates, PEM, the signer's first")
    parser.add_argument("--key", required=True, help="private key, PEM")
    parser.add_argument("--timestamp", help="address of a time stamping service (RFC 3161)")
    parser.add_argument("file")
    arguments = parser.parse_args()
    if arguments.file.endswith((".exe", ".dll")):
        sign_program(arguments)
    else:
        sign_detached(arguments)


if __name__ == "__main__":
    sys.exit(main())
