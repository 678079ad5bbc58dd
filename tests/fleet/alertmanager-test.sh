#!/bin/sh
# Checks the example for Alertmanager with amtool, and which alert takes which way through it.
#
# usage: alertmanager-test.sh SOURCE-DIRECTORY
set -eu
source=$1
amtool=$source/build/programs/usr/bin/amtool
configuration=$source/fleet/alertmanager/alertmanager.yml
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $*"
    exit 1
}

[ -x "$amtool" ] || { echo "SKIPPED: no $amtool; ./check --all unpacks it"; exit 77; }
"$amtool" check-config "$configuration" >"$work/log" 2>&1 || { cat "$work/log"; fail "alertmanager.yml"; }

goes_to() {
    receiver=$1
    shift
    taken=$("$amtool" config routes test --config.file="$configuration" "$@")
    [ "$taken" = "$receiver" ] || fail "$* goes to '$taken' instead of '$receiver'"
}
sed -n 's/.*- alert: //p' "$source/fleet/prometheus/zelsensors-alerting.yml" >"$work/alerts"
[ -s "$work/alerts" ] || fail "no alerts"
while read -r alert; do goes_to shops alertname="$alert" severity=warning shop=1; done <"$work/alerts"
goes_to shops alertname=TerminalLogNewLines severity=info
goes_to nobody alertname=DiskFull severity=critical

awk '/matchers:.*TerminalGone/ { inside = 1; next } /matchers:/ { inside = 0 } inside && /opening-hours\]/ { seen = 1 }
    END { exit !seen }' "$configuration" || fail "terminals that are off at night call somebody"
[ "$(grep -c 'active_time_intervals' "$configuration")" = 1 ] ||
    fail "more than TerminalGone and ShopGone have opening hours"
echo "Alertmanager: all steps passed"
