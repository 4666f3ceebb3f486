"""The lists that people decide: which folder may include which, and what no test mirrors."""

# A folder with sources, and the folders right below it: it may include these and all that these
# may include. A folder below a listed one belongs to it, unless it is listed itself.
MAY_INCLUDE = {
    "interface": (),
    "sdk": ("interface",),
    # The supervisor, from the bottom to the top.
    "src/cpp_utils": (),
    "src/encoding": ("src/cpp_utils",),
    "src/system": ("src/encoding", "src/cpp_utils"),
    "src/log": ("src/system",),
    "src/host": ("src/log",),
    "src/daemon_mgr": ("src/host", "interface"),
    "src/app": ("src/daemon_mgr",),
    # The operator's client, from the bottom to the top.
    "daemonctl/text": ("src/system",),
    "daemonctl/output": ("daemonctl/text",),
    "daemonctl/log_reader": ("daemonctl/text", "src/system"),
    "daemonctl/history": ("daemonctl/log_reader",),
    "daemonctl/process": ("daemonctl/text", "src/system"),
    "daemonctl/daemons": ("daemonctl/history", "daemonctl/process"),
    "daemonctl/report": ("daemonctl/history",),
    "daemonctl/doctor": ("daemonctl/output", "daemonctl/process", "sdk"),
    "daemonctl/commands": ("daemonctl/daemons", "daemonctl/doctor", "daemonctl/report",
                           "daemonctl/output", "sdk"),
    "daemonctl": ("daemonctl/commands",),
}

# Test files without a source of their name, and folders of sources without a folder of tests:
# each with the reason.
NOT_MIRRORED = {
    "daemonctl": "holds only the main functions; the integration tests run the programs",
    "tests/unit/sdk/ComApartmentTest.cpp": "tests a header of sdk, which lies beside src",
}
