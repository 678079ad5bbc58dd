#!/bin/sh
# Looks at the services' units: systemd knows every setting, and rates them as little exposed.
#
# usage: units-test.sh SOURCE-DIRECTORY
set -eu
source=$1

command -v systemd-analyze >/dev/null || { echo "SKIPPED: systemd-analyze is not installed"; exit 77; }

fail() {
    echo "FAILED: $*"
    exit 1
}

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for unit in zelsensors-metrics.service zelsensors-event-log.service; do
    # In tenths.
    systemd-analyze security --offline=yes --no-pager --threshold=20 "$source/packaging/systemd/$unit" \
        >"$scratch/security" || { tail -n 1 "$scratch/security"; fail "$unit is exposed by more than 2.0"; }
    tail -n 1 "$scratch/security"
    # The program is not installed here; any other stands for it.
    sed 's|^ExecStart=/usr/bin/zelhost |ExecStart=/bin/true |' "$source/packaging/systemd/$unit" >"$scratch/$unit"
    systemd-analyze verify --man=no "$scratch/$unit" >"$scratch/verify" 2>&1 || { cat "$scratch/verify"; fail "$unit"; }
    if grep -F "$unit" "$scratch/verify"; then fail "systemd has the above to say of $unit"; fi
done

# Both have the same sandbox, and the same words on how to loosen it.
for unit in zelsensors-metrics zelsensors-event-log; do
    sed -n '/^# The sandbox/,$p' "$source/packaging/systemd/$unit.service" >"$scratch/$unit.sandbox"
    [ -s "$scratch/$unit.sandbox" ] || fail "$unit has no sandbox"
done
diff -u "$scratch/zelsensors-metrics.sandbox" "$scratch/zelsensors-event-log.sandbox" || fail "the sandboxes differ"

# The file of settings names the variables that the units use, and gives the intervals that hold without it.
# shellcheck disable=SC2016 # the units' own
for variable in $(grep -ho '\${\?[A-Z_]*}\?' "$source"/packaging/systemd/*.service | tr -d '${}' | sort -u); do
    grep -q "^$variable=" "$source/packaging/default/zelsensors-metrics" || fail "the settings lack $variable"
done
for interval in METRICS_EVERY EVENT_LOG_EVERY; do
    value=$(sed -n "s/^$interval=//p" "$source/packaging/default/zelsensors-metrics")
    grep -q "^Environment=$interval=$value\( \|$\)" "$source"/packaging/systemd/*.service ||
        fail "the units' own $interval is not $value"
done
echo "The units: all steps passed"
