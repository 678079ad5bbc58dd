#!/bin/sh
# Tests zelsensors-register with stand-ins for the object managers' tools, which record their arguments.
#
# usage: register-test.sh SOURCE-FOLDER
set -eu
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Laid out as installed, in a folder of an arbitrary name.
place=$work/placed
mkdir -p "$place/sbin" "$place/share/zelsensors/schema" "$place/share/zelsensors/sfcb" "$place/share/zelsensors/pegasus"
cp "$source/packaging/zelsensors-register" "$place/sbin/"
cp "$source"/schema/*.mof "$place/share/zelsensors/schema/"
cp "$source/schema/sfcb/tqs.reg" "$place/share/zelsensors/sfcb/"
cp "$source/schema/pegasus/tqs-registration.mof" "$place/share/zelsensors/pegasus/"
data=$place/share/zelsensors

# The system's tools that the script needs, and nothing else: a real manager's tools must not be met.
mkdir "$work/system"
for tool in sh awk cat readlink; do
    ln -s "$(command -v $tool)" "$work/system/$tool"
done

# A stand-in records its name and arguments, prints what the file <tool>.output holds, and fails where <tool>.status
# holds a status and the arguments match the pattern in <tool>.when (any, if there is no such file).
install_tools() {
    rm -rf "$work/tools"
    mkdir "$work/tools"
    : >"$work/calls"
    for tool; do
        cat >"$work/tools/$tool" <<TEXT
#!/bin/sh
echo "$tool \$*" >>"$work/calls"
[ ! -f "$work/tools/$tool.output" ] || cat "$work/tools/$tool.output"
[ -f "$work/tools/$tool.status" ] || exit 0
if [ -f "$work/tools/$tool.when" ]; then
    read -r pattern <"$work/tools/$tool.when"
    case "\$*" in \$pattern) ;; *) exit 0 ;; esac
fi
read -r status <"$work/tools/$tool.status"
exit "\$status"
TEXT
        chmod +x "$work/tools/$tool"
    done
}

sfcb_tools="sfcbstage sfcbunstage sfcbrepos"
pegasus_tools="cimmof cimprovider cimcli"

register() {
    status=0
    PATH=$work/tools:$work/system "$place/sbin/zelsensors-register" "$@" >"$work/output" 2>"$work/error" || status=$?
}

failures=0
wrong() {
    printf 'FAILED: %s: %s\n' "$case" "$1"
    sed 's/^/    /' "$work/calls" "$work/output" "$work/error"
    failures=$((failures + 1))
}

expect_status() { [ "$status" = "$1" ] || wrong "status $status instead of $1"; }
expect_calls() {
    printf '%s' "$1" >"$work/expected"
    cmp -s "$work/expected" "$work/calls" || wrong "other calls than expected: $(cat "$work/expected")"
}
expect_output() { grep -qF -- "$1" "$work/output" || wrong "output lacks '$1'"; }
expect_error() { grep -qF -- "$1" "$work/error" || wrong "standard error lacks '$1'"; }
expect_no_output() { ! grep -qF -- "$1" "$work/output" || wrong "output has '$1'"; }

sfcb_added="sfcbstage -n root/cimv2 -r $data/sfcb/tqs.reg $data/schema/tqs.mof
sfcbrepos -f
"
pegasus_added="cimmof -uc -n root/cimv2 $data/schema/tqs.mof
cimmof -n root/PG_Interop $data/pegasus/tqs-registration.mof
"
asked="cimprovider -l -s
"
module_removed="cimprovider -d -m zelsensorsModule
cimprovider -r -m zelsensorsModule
"
registered() {
    printf 'MODULE                  STATUS\nOtherModule             OK\nzelsensorsModule        %s\n' "$1" \
        >"$work/tools/cimprovider.output"
}

# The stand-ins' lists are lists of words.
# shellcheck disable=SC2086
{
    case="sfcb: add stages schema and registration, then rebuilds the repository"
    install_tools $sfcb_tools
    register add
    expect_status 0
    expect_calls "$sfcb_added"
    expect_output "sfcb: schema and provider are registered; restart its daemon"
    expect_output "+ sfcbrepos -f"

    case="sfcb: add works the same again"
    install_tools $sfcb_tools
    register add
    register add
    expect_status 0
    expect_calls "$sfcb_added$sfcb_added"

    case="sfcb: the qualifiers are staged before the classes"
    install_tools $sfcb_tools
    register add --qualifiers
    expect_calls "sfcbstage -n root/cimv2 -r $data/sfcb/tqs.reg $data/schema/qualifiers.mof $data/schema/tqs.mof
sfcbrepos -f
"

    case="sfcb: remove unstages by name"
    install_tools $sfcb_tools
    register remove
    expect_status 0
    expect_calls "sfcbunstage -n root/cimv2 -r tqs.reg tqs.mof
sfcbrepos -f
"
    expect_output "sfcb: schema and provider are taken away; restart its daemon"

    case="sfcb: remove takes the qualifiers too"
    install_tools $sfcb_tools
    register remove --qualifiers
    expect_calls "sfcbunstage -n root/cimv2 -r tqs.reg qualifiers.mof tqs.mof
sfcbrepos -f
"

    case="sfcb: remove without sfcbunstage would change nothing, so it fails"
    install_tools sfcbstage sfcbrepos
    register remove
    expect_status 1
    expect_calls ""
    expect_error "sfcbunstage is not in PATH"

    case="sfcb: a failing tool ends it"
    install_tools $sfcb_tools
    echo 3 >"$work/tools/sfcbstage.status"
    register add
    expect_status 1
    expect_calls "sfcbstage -n root/cimv2 -r $data/sfcb/tqs.reg $data/schema/tqs.mof
"
    expect_error "'sfcbstage -n root/cimv2 -r $data/sfcb/tqs.reg $data/schema/tqs.mof' failed with status 3"

    case="sfcb: a failing repository build is no success"
    install_tools $sfcb_tools
    echo 1 >"$work/tools/sfcbrepos.status"
    register add
    expect_status 1
    expect_error "'sfcbrepos -f' failed with status 1"
    expect_no_output "are registered"

    case="pegasus: the first add compiles schema and registration"
    install_tools $pegasus_tools
    register add
    expect_status 0
    expect_calls "$asked$pegasus_added"
    expect_output "pegasus: schema and provider are registered; nothing has to be restarted"

    case="pegasus: add removes the module that is registered first"
    install_tools $pegasus_tools
    registered OK
    register add
    expect_status 0
    expect_calls "$asked$module_removed$pegasus_added"

    case="pegasus: a module that is disabled already is not disabled again"
    install_tools $pegasus_tools
    registered Stopped
    register add
    expect_calls "${asked}cimprovider -r -m zelsensorsModule
$pegasus_added"

    case="pegasus: a module whose name only begins alike is not ours"
    install_tools $pegasus_tools
    echo 'zelsensorsModule2 OK' >"$work/tools/cimprovider.output"
    register add
    expect_calls "$asked$pegasus_added"

    case="pegasus: the qualifiers are compiled before the classes"
    install_tools $pegasus_tools
    register add --qualifiers
    expect_calls "${asked}cimmof -uc -n root/cimv2 $data/schema/qualifiers.mof
$pegasus_added"

    case="pegasus: remove takes module and classes away"
    install_tools $pegasus_tools
    registered OK
    register remove
    expect_status 0
    expect_calls "$asked${module_removed}cimcli gc TQS_NumericSensor -n root/cimv2
cimcli dc TQS_NumericSensor -n root/cimv2
cimcli gc TQS_SystemEventLog -n root/cimv2
cimcli dc TQS_SystemEventLog -n root/cimv2
"
    expect_output "pegasus: schema and provider are taken away"

    case="pegasus: remove of what is not there is no failure"
    install_tools $pegasus_tools
    echo 1 >"$work/tools/cimcli.status"
    register remove
    expect_status 0
    expect_calls "${asked}cimcli gc TQS_NumericSensor -n root/cimv2
cimcli gc TQS_SystemEventLog -n root/cimv2
"

    case="pegasus: remove without cimcli says that the classes stay"
    install_tools cimmof cimprovider
    registered OK
    register remove
    expect_status 0
    expect_calls "$asked$module_removed"
    expect_output "the classes (TQS_NumericSensor TQS_SystemEventLog) stay"

    case="pegasus: a server that does not answer is named as a possible cause"
    install_tools $pegasus_tools
    echo 1 >"$work/tools/cimprovider.status"
    register add
    expect_status 1
    expect_calls "$asked"
    expect_error "'cimprovider -l -s' failed with status 1; is the CIM server running?"

    case="pegasus: the registration is not compiled when the schema failed"
    install_tools $pegasus_tools
    echo 2 >"$work/tools/cimmof.status"
    register add
    expect_status 1
    expect_error "'cimmof -uc -n root/cimv2 $data/schema/tqs.mof' failed with status 2"
    expect_calls "${asked}cimmof -uc -n root/cimv2 $data/schema/tqs.mof
"

    case="pegasus: a refused registration is no success"
    install_tools $pegasus_tools
    echo 4 >"$work/tools/cimmof.status"
    echo '*PG_Interop*' >"$work/tools/cimmof.when"
    register add
    expect_status 1
    expect_error "tqs-registration.mof' failed with status 4"
    expect_no_output "are registered"

    case="both managers are served"
    install_tools $sfcb_tools $pegasus_tools
    register add
    expect_status 0
    expect_calls "$sfcb_added$asked$pegasus_added"

    case="--manager leaves the other one alone"
    install_tools $sfcb_tools $pegasus_tools
    register add --manager pegasus
    expect_calls "$asked$pegasus_added"
    install_tools $sfcb_tools $pegasus_tools
    register --manager=sfcb add
    expect_calls "$sfcb_added"

    case="a dry run shows the commands and changes nothing"
    install_tools $sfcb_tools $pegasus_tools
    registered OK
    register add --dry-run
    expect_status 0
    expect_calls "$asked"
    printf '%s' "$sfcb_added$module_removed$pegasus_added" >"$work/expected"
    grep '^+ ' "$work/output" | sed 's/^+ //' | cmp -s - "$work/expected" || wrong "other commands shown"
    expect_output "a dry run; nothing has been changed"
    expect_no_output "are registered"

    case="no manager"
    install_tools sfcbrepos cimmof
    register add
    expect_status 1
    expect_calls ""
    expect_error "no object manager found"

    case="a manager that is asked for but not there"
    install_tools $sfcb_tools
    register add --manager pegasus
    expect_status 1
    expect_calls ""
    expect_error "cimmof is not in PATH"
}

install_tools sfcbstage sfcbunstage sfcbrepos
for arguments in "" "--dry-run" "insert" "add add" "add remove" "add --manager" "add --manager cimom" "add --manager=" \
    "add --force"; do
    case="wrong usage '$arguments'"
    # shellcheck disable=SC2086 # a list of words
    register $arguments
    expect_status 2
    expect_calls ""
    expect_error "usage: zelsensors-register"
done

case="--help"
register --help
expect_status 0
expect_calls ""
expect_output "usage: zelsensors-register"

case="the script finds its data through a link to it"
install_tools sfcbstage sfcbunstage sfcbrepos
ln -s "$place/sbin/zelsensors-register" "$work/link"
PATH=$work/tools:$work/system "$work/link" add >"$work/output" 2>"$work/error" || wrong "it failed"
expect_calls "$sfcb_added"

case="the script without its data"
install_tools sfcbstage sfcbunstage sfcbrepos
mkdir -p "$work/elsewhere/sbin"
cp "$place/sbin/zelsensors-register" "$work/elsewhere/sbin/"
status=0
PATH=$work/tools:$work/system "$work/elsewhere/sbin/zelsensors-register" add >"$work/output" 2>"$work/error" || status=$?
expect_status 1
expect_calls ""
expect_error "no folder $work/elsewhere/share/zelsensors/schema"

[ "$failures" = 0 ] || exit 1
echo "zelsensors-register: all cases passed"
