#!/bin/sh
# json-schema-test.sh ZELHOST SCHEMA SCENARIOS: what `zelhost sensors --format json` writes is as its JSON Schema says, and
# the schema refuses what is not.
set -eu
zelhost=$1
schema=$2
scenarios=$3
if ! python3 -c 'import jsonschema' 2>/dev/null; then
    echo "SKIPPED: there is no python3 with jsonschema (Debian package python3-jsonschema)"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# An open switch, a number beyond all units, and a reading that is none.
cat >"$work/odd.toml" <<'TOML'
[[sensor]]
handle = 0x50
name = "Cover"
sensor-type = "switch"
upper-threshold-critical = 1
reading = 1
[[sensor]]
handle = 0x51
name = "Large"
sensor-type = 40000
base-units = "volts"
unit-modifier = 25
reading = -5
[[sensor]]
handle = 0x52
name = "None \u00e9"
reading = -2147483648
TOML

for scenario in healthy overheating dying-sensor grebel-drives; do
    "$zelhost" sensors --format json --scenario "$scenarios/$scenario.toml" >"$work/$scenario.json"
done
"$zelhost" sensors --format json --scenario "$work/odd.toml" >"$work/odd.json"
"$zelhost" sensors --format json --scenario "$scenarios/no-driver.toml" >"$work/failed.json" 2>/dev/null && exit 1
"$zelhost" watch --count 1 --format json --scenario "$scenarios/healthy.toml" >"$work/watch.json"

python3 - "$schema" "$work" <<'PYTHON'
import copy
import json
import os
import sys

import jsonschema

schema = json.load(open(sys.argv[1]))
jsonschema.Draft7Validator.check_schema(schema)
validator = jsonschema.Draft7Validator(schema)
documents = {}
for name in ("healthy", "overheating", "dying-sensor", "grebel-drives", "odd", "failed", "watch"):
    documents[name] = json.load(open(os.path.join(sys.argv[2], name + ".json")))
    validator.validate(documents[name])

healthy = documents["healthy"]
assert len(healthy["sensors"]) == 14, healthy
assert [s["severity"] for s in documents["odd"]["sensors"]] == ["critical", "ok", None], documents["odd"]
assert documents["odd"]["sensors"][2]["reason"], documents["odd"]
assert documents["watch"]["command"] == "watch", documents["watch"]
assert documents["failed"]["status"]["rc"] == 16 and documents["failed"]["sensors"] == [], documents["failed"]


def refused(change):
    broken = copy.deepcopy(healthy)
    change(broken)
    return not validator.is_valid(broken)


sensor = lambda document: document["sensors"][0]
for place in ([], ["chip"], ["status"], ["sensors", 0], ["sensors", 0, "limits"]):
    def inside(document):
        for step in place:
            document = document[step]
        return document
    assert refused(lambda d: inside(d).update(more=1)), place
    for key in inside(healthy):
        assert refused(lambda d: inside(d).pop(key)), (place, key)
assert refused(lambda d: d.update(format=2))
assert refused(lambda d: sensor(d).update(value="52"))
assert refused(lambda d: sensor(d).update(value=None))
assert refused(lambda d: sensor(d).update(severity="high"))
assert refused(lambda d: sensor(d).update(severity="critical"))  # without a side
assert refused(lambda d: sensor(d).update(kind="tachometer"))
PYTHON
