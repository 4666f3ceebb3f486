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
    "src/system/ring_format": (),
    "src/system/end_process": ("src/system",),
    "src/system/installation": ("src/system",),
    "src/system/wmi": ("src/system",),
    "src/log": (),
    "src/log/log_perf/time": ("src/system",),
    "src/log/log_perf/sink": ("src/log/log_perf/time", "src/log", "src/system"),
    "src/log/log_perf/queue": ("src/log/log_perf/sink",),
    "src/log/log_perf/ring": ("src/log/log_perf/sink", "src/system/ring_format"),
    "src/log/log_perf/performance": ("src/log/log_perf/sink",),
    "src/log/log_perf": ("src/log/log_perf/queue", "src/log/log_perf/ring",
                         "src/log/log_perf/performance"),
    "src/host": ("src/log", "src/system"),
    "src/daemon_mgr": ("src/daemon_mgr/wmi", "src/host", "src/log/log_perf",
                       "src/system/end_process", "interface"),
    "src/daemon_mgr/wmi": ("src/system/wmi", "src/log"),
    "src/app": ("src/daemon_mgr", "src/system/installation", "src/system/ring_format"),
    # The operator's client, from the bottom to the top.
    "daemonctl/text": ("src/system",),
    "daemonctl/output": ("daemonctl/text",),
    "daemonctl/log_reader": ("daemonctl/text", "src/system/ring_format", "src/system"),
    "daemonctl/history": ("daemonctl/log_reader",),
    "daemonctl/report": ("daemonctl/history",),
    "daemonctl/process": ("daemonctl/text", "src/system"),
    "daemonctl/daemons": ("daemonctl/history", "daemonctl/process", "src/system/installation"),
    "daemonctl/doctor": ("daemonctl/process", "daemonctl/output", "sdk", "src/system/installation",
                         "src/system/ring_format", "src/system/wmi"),
    "daemonctl/control": ("daemonctl/daemons", "sdk", "src/system/end_process"),
    "daemonctl/commands": ("daemonctl/control", "daemonctl/daemons", "daemonctl/doctor",
                           "daemonctl/report", "daemonctl/output", "sdk"),
    "daemonctl": ("daemonctl/commands",),
}

# Test files without a source of their name, and folders of sources without a folder of tests:
# each with the reason.
NOT_MIRRORED = {
    "daemonctl": "holds only the main functions; the integration tests run the programs",
    "tests/unit/sdk/ArgumentRulesTest.cpp": "tests a source of sdk, which lies beside src",
    "tests/unit/sdk/ComApartmentTest.cpp": "tests a header of sdk, which lies beside src",
    "tests/unit/sdk/SupervisorClientTest.cpp": "tests a source of sdk, which lies beside src",
    "tests/unit/sdk/SupervisorIdentityTest.cpp": "tests a source of sdk, which lies beside src",
}

# Texts in the sources that no operator ever sees.
NO_MESSAGES = {
    "src/daemon_mgr/AttachInspection.cpp": ("SELECT * FROM Win32_Process WHERE ProcessId=",),
    "src/log/log_perf/ring/LogHistory.cpp": ("History is empty",),
}

# Sources that have no test file of their own name: the test file with the cases that fail when the
# source is wrong.
TESTED_BY = {
    "daemonctl/commands/ApplyCommand.cpp": "tests/integration/FleetTest.cpp",
    "daemonctl/commands/CheckCommand.cpp": "tests/integration/OperatorTest.cpp",
    "daemonctl/commands/CompletionCommand.cpp": "tests/unit/daemonctl/commands/CompletionTest.cpp",
    "daemonctl/commands/ConsoleReporter.cpp": "tests/integration/StopTest.cpp",
    "daemonctl/commands/ControlCommands.cpp": "tests/integration/DaemonctlTest.cpp",
    "daemonctl/commands/DoctorCommand.cpp": "tests/integration/DoctorTest.cpp",
    "daemonctl/commands/ExitCommand.cpp": "tests/integration/DaemonctlTest.cpp",
    "daemonctl/commands/Interrupt.cpp": "tests/operator/watch_test.sh",
    "daemonctl/commands/LaunchedDaemon.cpp": "tests/integration/DaemonctlTest.cpp",
    "daemonctl/commands/LogOptions.cpp": "tests/unit/daemonctl/commands/LogCommandTest.cpp",
    "daemonctl/commands/MetricsCommand.cpp": "tests/integration/OperatorTest.cpp",
    "daemonctl/commands/PsCommand.cpp": "tests/integration/OperatorTest.cpp",
    "daemonctl/commands/PsWatch.cpp": "tests/operator/watch_test.sh",
    "daemonctl/commands/ReattachCommand.cpp": "tests/integration/UpgradeTest.cpp",
    "daemonctl/commands/StopCommand.cpp": "tests/integration/StopTest.cpp",
    "daemonctl/commands/Unwatched.cpp": "tests/integration/HandOverTest.cpp",
    "daemonctl/commands/WaitCommand.cpp": "tests/integration/OperatorTest.cpp",
    "daemonctl/commands/WatchDaemon.cpp": "tests/integration/OperatorTest.cpp",
    "daemonctl/commands/WithSupervisor.cpp": "tests/integration/DaemonctlTest.cpp",
    "daemonctl/control/ApplyFleet.cpp": "tests/integration/FleetTest.cpp",
    "daemonctl/control/HandOver.cpp": "tests/integration/HandOverTest.cpp",
    "daemonctl/control/RestartDaemon.cpp": "tests/integration/StopTest.cpp",
    "daemonctl/control/StopDaemon.cpp": "tests/integration/StopTest.cpp",
    "daemonctl/control/WaitForLog.cpp": "tests/integration/StopTest.cpp",
    "daemonctl/daemons/InstalledPaths.cpp": "tests/integration/OperatorTest.cpp",
    "daemonctl/daemons/MetricsWriter.cpp": "tests/unit/daemonctl/daemons/MetricsTextTest.cpp",
    "daemonctl/daemons/ThisMachine.cpp": "tests/integration/OperatorTest.cpp",
    "daemonctl/doctor/ConnectionChecksWindows.cpp": "tests/integration/DoctorTest.cpp",
    "daemonctl/doctor/CrashDialogChecksWindows.cpp": "tests/integration/DoctorTest.cpp",
    "daemonctl/doctor/ErrorText.cpp": "tests/unit/daemonctl/doctor/FirewallChecksTest.cpp",
    "daemonctl/log_reader/InputFilePosix.cpp": "tests/unit/daemonctl/log_reader/SnapshotTest.cpp",
    "daemonctl/log_reader/InputFileWindows.cpp": "tests/unit/daemonctl/log_reader/SnapshotTest.cpp",
    "daemonctl/log_reader/OlderRecords.cpp": "tests/unit/daemonctl/log_reader/RingScanTest.cpp",
    "daemonctl/log_reader/RecordNeighbours.cpp": "tests/unit/daemonctl/log_reader/RingScanTest.cpp",
    "daemonctl/output/LineOutputPosix.cpp": "tests/unit/daemonctl/commands/LogCommandTest.cpp",
    "daemonctl/output/LineOutputWindows.cpp": "tests/integration/DaemonctlTest.cpp",
    "daemonctl/output/LiveScreenWindows.cpp": "tests/operator/watch_test.sh",
    "daemonctl/output/PrintText.cpp": "tests/unit/daemonctl/output/FinishOutputTest.cpp",
    "daemonctl/report/ReportLanes.cpp": "tests/unit/daemonctl/report/ReportHtmlTest.cpp",
    "daemonctl/report/ReportScript.cpp": "tests/browser/report_test.py",
    "daemonctl/report/ReportStyle.cpp": "tests/browser/report_test.py",
    "daemonctl/report/ReportTable.cpp": "tests/unit/daemonctl/report/ReportHtmlTest.cpp",
    "daemonctl/text/TextFile.cpp": "tests/integration/UpgradeTest.cpp",
    "daemonctl/text/Utf8.cpp": "tests/unit/daemonctl/text/TextEncodingTest.cpp",
    "src/app/main.cpp": "tests/integration/StartUpTest.cpp",
    "src/cpp_utils/exception_utils/ResultCodes.cpp":
        "tests/unit/cpp_utils/exception_utils/ErrorRegistryTest.cpp",
    "src/cpp_utils/system_library/LibrarySearch.cpp": "tests/integration/PlantedLibraryTest.cpp",
    "src/encoding/utf/TextEmitter.cpp": "tests/unit/encoding/utf/TranscodeTest.cpp",
    "src/encoding/utf/TextParserUTF16LE.cpp": "tests/unit/encoding/utf/TextParserTest.cpp",
    "src/encoding/utf/TextParserUTF8.cpp": "tests/unit/encoding/utf/TextParserTest.cpp",
    "src/encoding/utf/WideToUtf8.cpp": "tests/unit/encoding/utf/TranscodeTest.cpp",
    "src/log/log_perf/ring/NoticesOfDamage.cpp":
        "tests/unit/log/log_perf/ring/LogFileSinkDamageTest.cpp",
    "src/log/log_perf/ring/RingStream.cpp": "tests/unit/log/log_perf/ring/LogFileSinkTest.cpp",
    "src/system/end_process/EndProcess.cpp": "tests/unit/daemon_mgr/StopProcessTest.cpp",
    "src/system/file/FileAttributes.cpp": "tests/unit/system/file/FileOperationsTest.cpp",
    "src/system/file/PathComponents.cpp": "tests/unit/system/file/FileOperationsTest.cpp",
    "src/system/sync_ptr/LockImpl.cpp": "tests/unit/system/sync_ptr/SyncPtrTest.cpp",
}
