"""Tests the packages that a customer gets.

Makes the packages from the programs of the build, looks into them, and installs, uses and removes
them on a Windows machine (windows_machine.py). Arguments are those of unittest, for example
"Programs" to run one class.
"""
import sys
import unittest

import packages
import windows_machine as machine
from failure_test import Failure  # noqa: F401
from guard_test import Guarding  # noqa: F401
from installation_test import Installation  # noqa: F401
from materials_test import Materials  # noqa: F401
from packages_test import Packages  # noqa: F401
from programs_test import Programs, UnprotectedProgram  # noqa: F401
from replacement_test import Replacement  # noqa: F401
from rights_test import Rights  # noqa: F401
from signing_test import Signing  # noqa: F401
from stranger_test import Stranger  # noqa: F401


def main():
    packages.pack(packages.OUTPUT)
    machine.start()
    try:
        return 0 if unittest.main(verbosity=2, exit=False).result.wasSuccessful() else 1
    finally:
        machine.stop()


if __name__ == "__main__":
    sys.exit(main())
