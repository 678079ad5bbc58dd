#!/bin/sh
# Checks the rules and the example configuration with promtool, runs the tests of the rules, and holds the alerts
# against fleet.md. With --break it breaks each rule instead, one break after the other, and expects its tests to see it.
#
# usage: rules-test.sh SOURCE-DIRECTORY [--break]
set -eu
source=$1
programs=$source/build/programs/usr/bin
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $*"
    exit 1
}

[ -x "$programs/promtool" ] || { echo "SKIPPED: no $programs/promtool; ./check unpacks it"; exit 77; }

mkdir "$work/rules" "$work/terminals"
cp "$source"/fleet/prometheus/zelsensors-*.yml "$work/rules/"
cp "$source/fleet/prometheus/prometheus.yml" "$work/"
cp "$source"/fleet/prometheus/terminals/*.json "$work/terminals/"
cp "$source/tests/fleet/rules-test.yml" "$work/rules/"
check_rules() {
    "$programs/promtool" check config "$work/prometheus.yml" >"$work/log" 2>&1 ||
        { cat "$work/log"; fail "prometheus.yml"; }
    grep -q '12 rules found' "$work/log" || { cat "$work/log"; fail "prometheus.yml does not load the rules"; }
    "$programs/promtool" check rules "$work"/rules/zelsensors-*.yml >"$work/log" 2>&1 ||
        { cat "$work/log"; fail "the rules"; }
    "$programs/promtool" test rules "$work/rules/rules-test.yml" >"$work/log" 2>&1 ||
        { cat "$work/log"; fail "the rules' tests"; }

    # Each alert has its section, each section its alert, and the annotation names it.
    sed -n 's/.*- alert: //p' "$source/fleet/prometheus/zelsensors-alerting.yml" >"$work/alerts"
    sed -n 's/^### \(\(Terminal\|Shop\)[A-Za-z]*\)$/\1/p' "$source/docs/fleet.md" >"$work/sections"
    sort "$work/alerts" >"$work/alerts.sorted"
    sort "$work/sections" | diff "$work/alerts.sorted" - || fail "the alerts and the sections of docs/fleet.md differ"
    sed -n 's|.*runbook: .*/fleet.md#||p' "$source/fleet/prometheus/zelsensors-alerting.yml" >"$work/runbooks"
    tr '[:upper:]' '[:lower:]' <"$work/alerts" | diff "$work/runbooks" - || fail "an alert points to another's section"
    echo "The rules: all tests passed"
}

if [ "${2:-}" != --break ]; then
    check_rules
    exit 0
fi

# only RULE: of the tests those that ask for this alert or recorded series.
only() {
    awk -v rule="$1" '
        function flush() { if (!seen++ || index(block, rule)) printf "%s", block; block = "" }
        /^  - name:/ { flush() }
        { block = block $0 "\n" }
        END { flush() }' "$source/tests/fleet/rules-test.yml"
}

mkdir "$work/broken"
broken=0
unseen=0
while IFS='	' read -r rule from to; do
    case $rule in '' | '#'*) continue ;; esac
    for file in recording alerting; do
        awk -v rule="$rule" -v from="$from" -v to="$to" '
            $1 == "-" && ($2 == "alert:" || $2 == "record:") { inside = ($3 == rule) }
            inside && !done && (at = index($0, from)) {
                $0 = substr($0, 1, at - 1) to substr($0, at + length(from)); done = 1
            }
            { print }' "$work/rules/zelsensors-$file.yml" >"$work/broken/zelsensors-$file.yml"
    done
    if cmp -s "$work/rules/zelsensors-recording.yml" "$work/broken/zelsensors-recording.yml" &&
        cmp -s "$work/rules/zelsensors-alerting.yml" "$work/broken/zelsensors-alerting.yml"; then
        fail "rules-breaks.tsv: $rule has no '$from'"
    fi
    only "$rule" >"$work/broken/rules-test.yml"
    "$programs/promtool" check rules "$work"/broken/zelsensors-*.yml >"$work/log" 2>&1 ||
        { cat "$work/log"; fail "$rule with '$to' is no rule at all, so it shows nothing"; }
    broken=$((broken + 1))
    if "$programs/promtool" test rules "$work/broken/rules-test.yml" >"$work/log" 2>&1; then
        echo "Not seen: $rule with '$to' instead of '$from'"
        unseen=$((unseen + 1))
    fi
done <"$source/tests/fleet/rules-breaks.tsv"
[ "$unseen" = 0 ] || fail "the tests do not see $unseen of $broken breaks"
sed -n 's/.*- \(alert\|record\): //p' "$source"/fleet/prometheus/zelsensors-*.yml | while read -r rule; do
    grep -q "^$rule	" "$source/tests/fleet/rules-breaks.tsv" || fail "rules-breaks.tsv breaks nothing of $rule"
done
echo "The rules: all $broken breaks seen"
