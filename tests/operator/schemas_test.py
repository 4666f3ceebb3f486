#!/usr/bin/env python3
"""Validates the JSON that daemonctl prints against the schemas in docs/schemas.

    schemas_test.py FOLDER_OF_THE_PROGRAMS

A real supervisor has a daemon that runs, one that ends again and again, and one that cannot be started.
Each schema must also refuse an object without one of its required members: a schema that accepts
everything would say nothing.
"""
import json
import sys

import jsonschema

from appliance import SOURCE, Appliance, wait_until

SCHEMAS = SOURCE / "docs/schemas"


def validator(name):
    schema = json.loads((SCHEMAS / f"{name}.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


def check(name, value):
    """Fails if the value does not fit the schema, or if the schema is too weak."""
    errors = [f"{'/'.join(map(str, error.path))}: {error.message}"
              for error in validator(name).iter_errors(value)]
    assert not errors, f"{name}: {errors}"
    for member in value:
        less = {key: value[key] for key in value if key != member}
        optional = name == "log" and member in ("event", "daemon_id", "process_id", "reason", "sure")
        assert optional or list(validator(name).iter_errors(less)), f"{name} does without {member}"
    assert json.dumps(value).isascii()


def main():
    validated = []
    with Appliance(sys.argv[1]) as appliance:
        for program in (("C:\\windows\\system32\\notepad.exe",),
                        ("C:\\windows\\system32\\cmd.exe", "/c", "exit", "3"),
                        ("C:\\missing\\\u00fc.exe",)):
            assert appliance.daemonctl("launch", *program)[0] == 0
        listing = wait_until(
            lambda: (found := json.loads(appliance.daemonctl("ps", "--json")[1]))
            and {"running", "restarting", "cannot_start"} ==
            {daemon["state"] for daemon in found["daemons"]} and found, "all three states")
        check("ps", listing)
        (appliance.root / "list.txt").write_text("notepad.exe\nmissing.exe\n")
        code, output, _ = appliance.daemonctl("check", "--json", "--expect", "C:\\APPLIANCE\\list.txt")
        assert code == 1, output
        check("check", json.loads(output))
        check("doctor", json.loads(appliance.daemonctl("doctor", "--json")[1]))
        code, output, errors = appliance.daemonctl("report", "--output", "C:\\APPLIANCE\\page.html",
                                                   "--json", "C:\\APPLIANCE\\page.json")
        assert code == 0, errors
        check("report", json.loads((appliance.root / "page.json").read_text()))
        # A recorded log tells the same as the log.
        assert appliance.daemonctl("record", "--once", "--output", "C:\\APPLIANCE\\records")[0] == 0
        recorded = json.loads(appliance.daemonctl("ps", "--json", "--log", "C:\\APPLIANCE\\records")[1])
        assert {daemon["command"] for daemon in recorded["daemons"]} == \
            {daemon["command"] for daemon in listing["daemons"]}, recorded
        lines = appliance.daemonctl("log", "--json")[1].splitlines()
        for line in lines:
            check("log", json.loads(line))
        validated = sorted(path.name for path in SCHEMAS.iterdir())
        assert validated == [f"{name}.schema.json" for name in ("check", "doctor", "log", "ps", "report", "watch")]
    check("log", {"event": "records-overwritten", "count": None})
    check("log", {"event": "log-begun-anew"})
    print(f"{len(validated)} schemas, {len(lines)} records of the log: no problems found")


if __name__ == "__main__":
    main()
