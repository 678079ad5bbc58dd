#!/bin/sh
# Tests zelsensors-register with stand-ins for the object managers' tools: what it calls, what the managers hold
# afterwards, and what it says.
#
# usage: register-test.sh SOURCE-DIRECTORY
set -eu
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Laid out as installed, in a directory of an arbitrary name.
place=$work/placed
data=$place/share/zelsensors
library=$place/lib/some-triplet/libzelsensors.so.0
lay_out() {
    rm -rf "$place"
    mkdir -p "$place/sbin" "$data/schema" "$data/sfcb" "$data/pegasus" "${library%/*}/cmpi"
    cp "$source/packaging/zelsensors-register" "$place/sbin/"
    cp "$source"/schema/*.mof "$data/schema/"
    cp "$source/schema/sfcb/tqs.reg" "$data/sfcb/"
    cp "$source/schema/qualifiers.mof" "$data/sfcb/tqaqualifiers.mof"
    cp "$source/schema/pegasus/tqs-registration.mof" "$data/pegasus/"
    : >"$library"
    ln -s ../libzelsensors.so.0 "${library%/*}/cmpi/libzelsensors.so"
}

# The system's tools that are needed, and nothing else: a real manager's tools must not be met.
mkdir "$work/system"
for tool in sh awk cat cmp cp ln mkdir mv readlink rm sort; do
    ln -s "$(command -v $tool)" "$work/system/$tool"
done

sfcb=$work/sfcb
stage=$sfcb/var/lib/sfcb/stage
repository=$sfcb/var/lib/sfcb/registration/repository
schema_mof=$sfcb/share/sfcb/CIM/CIM_Schema.mof
pegasus=$work/pegasus
server=$pegasus/var
link=$pegasus/lib/libzelsensors.so

# An sfcb with the DMTF schema, and something of somebody else's staged and built.
sfcb_is_there() {
    mkdir -p "$sfcb/bin" "$sfcb/share/sfcb/CIM" "$stage/mofs/root/cimv2" "$stage/regs" "$repository"
    for tool in sfcbstage sfcbunstage sfcbrepos; do
        cp "$source/tests/install/managers/sfcb.sh" "$sfcb/bin/$tool"
        chmod +x "$sfcb/bin/$tool"
    done
    printf '// The schema\n#pragma locale ("en_US")\n#pragma include ("qualifiers.mof")\n' >"$schema_mof"
    awk '$1 == "Qualifier"' "$source/schema/qualifiers.mof" >"$sfcb/share/sfcb/CIM/qualifiers.mof"
    echo '[Version ("1.0")] class Other {};' >"$stage/mofs/root/cimv2/other.mof"
    printf '[Other]\n' >"$stage/regs/other.reg"
    echo before >"$repository/built"
    : >"$sfcb/var/calls"
}

# An OpenPegasus with the DMTF schema and a module of somebody else, running.
pegasus_is_there() {
    mkdir -p "$pegasus/bin" "$pegasus/lib" "$server/qualifiers" "$server/namespaces/root/cimv2"
    for tool in cimconfig cimprovider cimmof cimcli; do
        cp "$source/tests/install/managers/pegasus.sh" "$pegasus/bin/$tool"
        chmod +x "$pegasus/bin/$tool"
    done
    awk -v directory="$server/qualifiers/" '$1 == "Qualifier" { printf "" >(directory $2) }' "$source/schema/qualifiers.mof"
    echo lib >"$server/providerDir"
    printf 'MODULE                  STATUS\nOtherModule             OK\n' >"$server/modules"
    : >"$server/running"
    : >"$server/calls"
}

# start CASE [MANAGER...]: a case with these managers, as new.
start() {
    case=$1
    shift
    rm -rf "$sfcb" "$pegasus"
    lay_out
    path=$work/system
    unset PEGASUS_HOME
    for each; do
        "${each}_is_there"
        path=$work/$each/bin:$path
    done
}

register() {
    status=0
    PATH=$path "$place/sbin/zelsensors-register" "$@" >"$work/output" 2>"$work/error" || status=$?
}

failures=0
wrong() {
    printf 'FAILED: %s: %s\n' "$case" "$1"
    cat "$sfcb/var/calls" "$server/calls" "$work/output" "$work/error" 2>/dev/null | sed 's/^/    /'
    failures=$((failures + 1))
}

expect_status() { [ "$status" = "$1" ] || wrong "status $status instead of $1"; }
expect_output() { grep -qF -- "$1" "$work/output" || wrong "output lacks '$1'"; }
expect_error() { tr '\n' ' ' <"$work/error" | grep -qF -- "$1" || wrong "standard error lacks '$1'"; }
expect_no_error() { [ ! -s "$work/error" ] || wrong "something on standard error"; }
expect_no_output() { ! grep -qF -- "$1" "$work/output" || wrong "output has '$1'"; }

# expect_calls MANAGER LINES: all calls of its tools.
expect_calls() {
    printf '%s' "$2" >"$work/expected"
    cmp -s "$work/expected" "$work/$1/var/calls" || wrong "other calls than expected: $(cat "$work/expected")"
}
# expect_changes LINES: the commands that were shown, which are those that change something.
expect_changes() {
    printf '%s' "$1" >"$work/expected"
    sed -n 's/^+ //p' "$work/output" | cmp -s - "$work/expected" || wrong "other changes than: $(cat "$work/expected")"
}
expect_staged() {
    staged=$(cd "$stage" && find . -type f | sort | tr '\n' ' ')
    [ "$staged" = "$1" ] || wrong "staged is '$staged'"
}
expect_built() {
    built=
    [ ! -f "$repository/built" ] || built=$(tr '\n' ' ' <"$repository/built")
    [ "$built" = "$1" ] || wrong "the repository is built of '$built'"
}
expect_link() { [ "$(readlink "$link")" = "$library" ] || wrong "no link $link"; }
expect_no_link() { [ ! -L "$link" ] || wrong "there is a link $link"; }
expect_module() {
    module=$(awk '$1 == "zelsensorsModule" { print $2 }' "$server/modules")
    [ "$module" = "$1" ] || wrong "the module's state is '$module'"
}
# expect_class VERSION: of the sensors' class; none, if there is to be no class.
held=$server/namespaces/root/cimv2/TQS_NumericSensor
expect_class() {
    if [ -f "$held" ]; then version=$(awk -F '"' '/Version/ { print $2; exit }' "$held"); else version=none; fi
    [ "$version" = "$1" ] || wrong "the class has version $version"
}

others="./mofs/root/cimv2/other.mof ./regs/other.reg "
ours="./mofs/root/cimv2/other.mof ./mofs/root/cimv2/tqs.mof ./regs/other.reg ./regs/tqs.reg "
sfcb_added="sfcbstage -n root/cimv2 -r $data/sfcb/tqs.reg $data/schema/tqs.mof
sfcbrepos -f
"
sfcb_added_with_qualifiers="sfcbstage -n root/cimv2 -r $data/sfcb/tqs.reg $data/sfcb/tqaqualifiers.mof $data/schema/tqs.mof
sfcbrepos -f
"
sfcb_undone="sfcbunstage -n root/cimv2 -r tqs.reg tqs.mof
sfcbrepos -f
"
without_schema() {
    : >"$schema_mof"
    rm "$sfcb/share/sfcb/CIM/qualifiers.mof" "$stage/mofs/root/cimv2/other.mof" "$stage/regs/other.reg"
}

start "sfcb: add stages schema and registration, then rebuilds the repository" sfcb
register add
expect_status 0
expect_calls sfcb "$sfcb_added"
expect_changes "$sfcb_added"
expect_staged "$ours"
expect_built "qualifiers.mof CIM_Schema.mof other.mof tqs.mof "
expect_output "sfcb: schema and provider are registered; restart its daemon"
expect_no_error

start "sfcb: add works the same again" sfcb
register add
register add
expect_status 0
expect_calls sfcb "$sfcb_added$sfcb_added"

start "sfcb: without the DMTF schema the qualifiers are staged, under a name that comes before the classes'" sfcb
without_schema
register add
expect_status 0
expect_calls sfcb "$sfcb_added_with_qualifiers"
expect_staged "./mofs/root/cimv2/tqaqualifiers.mof ./mofs/root/cimv2/tqs.mof ./regs/tqs.reg "
expect_built "CIM_Schema.mof tqaqualifiers.mof tqs.mof "
expect_output "sfcb: qualifiers have to be declared: yes"

start "sfcb: add finds its own qualifiers no reason to leave them away" sfcb
without_schema
register add
register add
expect_status 0
expect_calls sfcb "$sfcb_added_with_qualifiers$sfcb_added_with_qualifiers"

start "sfcb: qualifiers in the schema's own file count as declared" sfcb
mv "$sfcb/share/sfcb/CIM/qualifiers.mof" "$schema_mof"
register add
expect_status 0
expect_calls sfcb "$sfcb_added"

start "sfcb: qualifiers in another capitalisation and over two lines count as declared" sfcb
without_schema
printf '// Qualifier Key : in a comment\n\tQUALIFIER\r\n   Description: string = null;\n' >"$schema_mof"
register add --dry-run
expect_output "sfcb: qualifiers have to be declared: no"

start "sfcb: qualifiers that somebody else has staged count as declared" sfcb
without_schema
cp "$source/schema/qualifiers.mof" "$stage/mofs/root/cimv2/another.mof"
register add
expect_status 0
expect_calls sfcb "$sfcb_added"

start "sfcb: a comment, another name and a use declare no qualifier" sfcb
without_schema
cat >"$schema_mof" <<'TEXT'
// Qualifier Key : boolean;
#pragma include ("no-such-qualifiers.mof")
Qualifier Keys : boolean;
class Other { [Read, Key : DisableOverride] string Name; };
TEXT
register add --dry-run
expect_output "sfcb: qualifiers have to be declared: yes"

start "sfcb: qualifiers that were staged go when the DMTF schema has come" sfcb
without_schema
register add
awk '$1 == "Qualifier"' "$source/schema/qualifiers.mof" >"$schema_mof"
: >"$sfcb/var/calls"
register add
expect_status 0
expect_calls sfcb "sfcbunstage -n root/cimv2 tqaqualifiers.mof
$sfcb_added"

start "sfcb: without a schema file sfcbrepos would break the manager, so nothing is changed" sfcb
rm "$schema_mof"
register add
expect_status 1
expect_calls sfcb ""
expect_error "sfcb: there is no $schema_mof, without which sfcbrepos fails; nothing has been changed."

start "sfcb: --qualifiers overrides what is found out" sfcb
register add --qualifiers yes --dry-run
expect_changes "$sfcb_added_with_qualifiers"
rm "$schema_mof"
register add --qualifiers=no --dry-run
expect_changes "$sfcb_added"

start "sfcb: a failing repository build is undone" sfcb
register add --qualifiers yes
expect_status 1
expect_calls sfcb "${sfcb_added_with_qualifiers}sfcbunstage -n root/cimv2 -r tqs.reg tqs.mof tqaqualifiers.mof
sfcbrepos -f
"
expect_staged "$others"
expect_built "qualifiers.mof CIM_Schema.mof other.mof "
expect_error "'sfcbrepos -f' failed with status 1"
expect_error "sfcb: not registered. Our files are out of the staging directory and the repository is rebuilt: sfcb works as"
expect_error "add failed for: sfcb"
expect_no_output "are registered"

start "sfcb: a repository that cannot be rebuilt is reported" sfcb
echo garbage >>"$stage/mofs/root/cimv2/other.mof"
register add
expect_status 1
expect_calls sfcb "$sfcb_added$sfcb_undone"
expect_staged "$others"
expect_built ""
expect_error "sfcb is broken: its repository is gone, and building it fails without our files too. Fix what sfcbrepos"
expect_error "complains of, then run 'sfcbrepos -f' and restart its daemon"

start "sfcb: files that cannot be taken out of the staging directory are reported" sfcb
echo garbage >>"$stage/mofs/root/cimv2/other.mof"
echo 5 >"$sfcb/var/fail-sfcbunstage"
register add
expect_status 1
expect_staged "$ours"
expect_error "sfcb is broken: its repository is gone, and some of our files (tqs.reg, tqs.mof, tqaqualifiers.mof) may still be"

start "sfcb: a failing sfcbstage leaves nothing staged and the repository alone" sfcb
echo 3 >"$sfcb/var/fail-sfcbstage"
cp "$data/schema/tqs.mof" "$stage/mofs/root/cimv2/"
register add
expect_status 1
expect_calls sfcb "sfcbstage -n root/cimv2 -r $data/sfcb/tqs.reg $data/schema/tqs.mof
sfcbunstage -n root/cimv2 tqs.mof
"
expect_staged "$others"
expect_built "before "
expect_error "'sfcbstage -n root/cimv2 -r $data/sfcb/tqs.reg $data/schema/tqs.mof' failed with status 3"
expect_error "sfcb: not registered. Our files are out of the staging directory. The repository has not been touched"

start "sfcb: remove takes all of ours, the qualifiers too" sfcb
without_schema
register add
: >"$sfcb/var/calls"
register remove
expect_status 0
expect_calls sfcb "sfcbunstage -n root/cimv2 -r tqs.reg tqs.mof tqaqualifiers.mof
sfcbrepos -f
"
expect_staged ""
expect_output "sfcb: schema and provider are taken away; restart its daemon"
expect_no_error

start "sfcb: remove names only what is staged" sfcb
register add
: >"$sfcb/var/calls"
register remove
register remove
expect_status 0
expect_calls sfcb "$sfcb_undone"
expect_staged "$others"
expect_output "sfcb: nothing of ours is there; nothing has been changed"

start "sfcb: remove without the schema file leaves the repository alone" sfcb
register add
rm "$schema_mof"
register remove
expect_status 1
expect_staged "$others"
expect_built "qualifiers.mof CIM_Schema.mof other.mof tqs.mof "
expect_error "The repository has not been rebuilt, since sfcbrepos fails without $schema_mof: sfcb keeps our classes"

start "sfcb: a remove after one that could not rebuild rebuilds" sfcb
register add
echo garbage >>"$stage/mofs/root/cimv2/other.mof"
register remove
echo '[Version ("1.0")] class Other {};' >"$stage/mofs/root/cimv2/other.mof"
register remove
expect_status 0
expect_built "qualifiers.mof CIM_Schema.mof other.mof "
expect_output "sfcb: schema and provider are taken away; restart its daemon"

start "sfcb: qualifiers that an older version has staged are ours" sfcb
without_schema
register add --qualifiers yes
mv "$stage/mofs/root/cimv2/tqaqualifiers.mof" "$stage/mofs/root/cimv2/qualifiers.mof"
register add --dry-run
expect_output "sfcb: qualifiers have to be declared: yes"
: >"$sfcb/var/calls"
register remove
expect_status 0
expect_calls sfcb "sfcbunstage -n root/cimv2 -r tqs.reg tqs.mof qualifiers.mof
sfcbrepos -f
"
expect_staged ""

# A machine with an sfcb has its staging directory in this place.
if [ ! -d /var/lib/sfcb/stage ]; then
    start "sfcb: add and remove work where the staging directory is not found" sfcb
    export SFCB_STAGE="$sfcb/var/lib/elsewhere"
    mv "$stage" "$SFCB_STAGE"
    register add
    expect_status 0
    : >"$sfcb/var/calls"
    register remove
    expect_status 0
    expect_calls sfcb "sfcbunstage -n root/cimv2 tqaqualifiers.mof
sfcbunstage -n root/cimv2 -r tqs.reg tqs.mof
sfcbrepos -f
"
    expect_built "qualifiers.mof CIM_Schema.mof other.mof "
    unset SFCB_STAGE
fi

start "sfcb: a remove that cannot rebuild says that the repository is gone" sfcb
register add
echo garbage >>"$stage/mofs/root/cimv2/other.mof"
register remove
expect_status 1
expect_staged "$others"
expect_error "sfcb: our files are out of the staging directory, but sfcb is broken: its repository is gone."
expect_no_output "are taken away"

start "sfcb: a remove that cannot unstage leaves the repository alone" sfcb
register add
echo 5 >"$sfcb/var/fail-sfcbunstage"
register remove
expect_status 1
expect_built "qualifiers.mof CIM_Schema.mof other.mof tqs.mof "
expect_error "sfcb: not taken away. Its repository has not been touched, but some of our files"

start "sfcb: what could not be undone is not begun" sfcb
rm "$sfcb/bin/sfcbunstage"
register add
expect_status 1
expect_calls sfcb ""
expect_error "sfcbunstage is not in PATH"

gq() { for each; do echo "cimcli gq $each -n root/cimv2"; done; }
all_qualifiers=$(gq ArrayType Description Key Read ValueMap Values Version)
compiled="cimmof -uc -aV -n root/cimv2 $data/schema/tqs.mof
cimmof -n root/PG_Interop $data/pegasus/tqs-registration.mof
"
linked="ln -s $library $link
"
module_removed="cimprovider -d -m zelsensorsModule
cimprovider -r -m zelsensorsModule
"
classes_shown="cimcli gc TQS_NumericSensor -n root/cimv2
cimcli gc TQS_SystemEventLog -n root/cimv2
"
# A server that has the classes in VERSION, with one property's type as TYPE.
registered() {
    register add
    sed "s/3\.10\.15/$1/; s/sint32 CurrentReading/$2 CurrentReading/" "$held" >"$work/class"
    cp "$work/class" "$held"
    : >"$server/calls"
}

start "pegasus: the first add makes the link and compiles schema and registration" pegasus
register add
expect_status 0
expect_calls pegasus "cimconfig -g providerDir
cimprovider -l -s
$all_qualifiers
$classes_shown$compiled${classes_shown}cimprovider -l -s
"
expect_changes "$linked$compiled"
expect_link
expect_class 3.10.15
expect_module OK
expect_output "pegasus: schema and provider are registered; nothing has to be restarted"
expect_no_error

start "pegasus: add works again, removes the module that is registered first, and keeps the link" pegasus
register add
register add
expect_status 0
expect_changes "$module_removed$compiled"
expect_link
expect_class 3.10.15
expect_module OK

start "pegasus: a module that is disabled already is not disabled again" pegasus
echo 'zelsensorsModule Stopped' >>"$server/modules"
register add
expect_status 0
expect_changes "${linked}cimprovider -r -m zelsensorsModule
$compiled"

start "pegasus: a module whose name only begins alike is not ours" pegasus
echo 'zelsensorsModule2 OK' >>"$server/modules"
register add
expect_status 0
expect_changes "$linked$compiled"

start "pegasus: a missing qualifier has the qualifiers compiled before the classes" pegasus
rm "$server/qualifiers/Version"
register add
expect_status 0
expect_changes "${linked}cimmof -uc -aV -n root/cimv2 $data/schema/qualifiers.mof
$compiled"
expect_output "pegasus: qualifiers have to be declared: yes"

start "pegasus: --qualifiers asks nothing" pegasus
register add --qualifiers no
! grep -q "cimcli gq" "$server/calls" || wrong "the server was asked for qualifiers"
expect_changes "$linked$compiled"

start "pegasus: classes of another version are replaced" pegasus
registered 3.9.1 uint32
register add
expect_status 0
expect_changes "$module_removed$compiled"
expect_class 3.10.15
grep -q "sint32 CurrentReading" "$held" || wrong "the old class is there"

start "pegasus: classes of our version with other contents are deleted first" pegasus
registered 3.10.15 uint32
register add
expect_status 0
expect_changes "${module_removed}cimcli dc TQS_NumericSensor -n root/cimv2
$compiled"
grep -q "sint32 CurrentReading" "$held" || wrong "the old class is there"

for change in 's/sint32 Accuracy;//' 's/^};/string More;\n};/' 's/boolean IsLinear/boolean IsLinear[]/'; do
    start "pegasus: a class after '$change' is not ours" pegasus
    registered 3.10.15 sint32
    sed "$change" "$held" >"$work/class"
    cp "$work/class" "$held"
    register add --dry-run
    expect_changes "${module_removed}cimcli dc TQS_NumericSensor -n root/cimv2
$compiled"
done

start "pegasus: a class that cimmof leaves as it was is no success, and nothing of ours is left" pegasus
registered 3.9.1 sint32
echo '0 *schema/tqs.mof*' >"$server/fail-cimmof"
register add
expect_status 1
expect_error "pegasus: the class TQS_NumericSensor that the server holds is not ours: version 3.9.1"
expect_error "pegasus: not registered. Nothing of ours is left in the server"
expect_no_output "are registered"
expect_class none
expect_module ""
expect_no_link

start "pegasus: a class that is not there afterwards is no success" pegasus
echo '0 *schema/tqs.mof*' >"$server/fail-cimmof"
register add
expect_status 1
expect_error "that the server holds is not ours: absent"
expect_no_link

start "pegasus: a module that is not there afterwards is no success" pegasus
: >"$server/forgets-modules"
register add
expect_status 1
expect_error "pegasus: the server does not list zelsensorsModule after its registration"
expect_class none
expect_no_link

start "pegasus: a class that cannot be read is reported, and no failure" pegasus
: >"$server/shows-xml"
register add
expect_status 0
expect_error "pegasus: what cimcli shows of TQS_NumericSensor cannot be read; compare it with tqs.mof"

start "pegasus: a class that is shown without its version is reported, and no failure" pegasus
: >"$server/shows-no-qualifiers"
register add
expect_status 0
expect_error "pegasus: what cimcli shows of TQS_NumericSensor cannot be read; compare it with tqs.mof"

start "pegasus: the registration is not compiled when the schema failed, and the link is taken away" pegasus
echo '2 *schema/tqs.mof*' >"$server/fail-cimmof"
register add
expect_status 1
expect_changes "${linked}cimmof -uc -aV -n root/cimv2 $data/schema/tqs.mof
rm $link
"
expect_error "'cimmof -uc -aV -n root/cimv2 $data/schema/tqs.mof' failed with status 2"
expect_error "pegasus: not registered. Nothing of ours is left in the server"

start "pegasus: a refused registration takes classes and link away again" pegasus
echo '4 *PG_Interop*' >"$server/fail-cimmof"
register add
expect_status 1
expect_error "tqs-registration.mof' failed with status 4"
expect_class none
expect_no_link
expect_no_output "are registered"

start "pegasus: what cannot be undone is reported" pegasus
echo '4 *PG_Interop*' >"$server/fail-cimmof"
echo '9 dc*' >"$server/fail-cimcli"
register add
expect_status 1
expect_error "'cimcli dc TQS_NumericSensor -n root/cimv2' failed with status 9"
expect_error "pegasus: not registered, and some of ours may be left in the server"
expect_no_link

start "pegasus: a module that cannot be removed is enabled again, and stays with its classes" pegasus
registered 3.9.1 sint32
rm "$link"
echo '1 -r*' >"$server/fail-cimprovider"
register add
expect_status 1
expect_changes "$linked${module_removed}cimprovider -e -m zelsensorsModule
rm $link
"
expect_error "pegasus: not registered; the server is as it was"
expect_module OK
expect_class 3.9.1
expect_no_link

start "pegasus: a server that does not answer is named as a possible cause" pegasus
rm "$server/running"
register add
expect_status 1
expect_changes ""
expect_error "'cimconfig -g providerDir' gave no answer that helps; is the CIM server running?"

start "pegasus: a server that cannot start for its providerDir: the directory and the way out are reported" pegasus
rm "$server/running"
echo "$work/gone" >"$server/providerDir"
register add
expect_status 1
expect_error "pegasus: the setting providerDir names $work/gone, which does not exist"
expect_error "'cimconfig -u providerDir -p' sets it back, also while the server is down"

start "pegasus: no directory of providerDir exists" pegasus
echo "$work/gone:gone-too:" >"$server/providerDir"
register add
expect_status 1
expect_changes ""
expect_error "providerDir names $work/gone, which does not exist"
expect_error "providerDir names $pegasus/gone-too, which does not exist"
expect_error "pegasus: the setting providerDir names no directory that exists; nothing has been changed"

start "pegasus: the link goes into the first directory that exists, and the missing one is reported" pegasus
mkdir "$pegasus/second directory" "$pegasus/third"
echo "gone:second directory:third" >"$server/providerDir"
register add
expect_status 0
[ "$(readlink "$pegasus/second directory/libzelsensors.so")" = "$library" ] || wrong "no link in the second directory"
expect_error "providerDir names $pegasus/gone, which does not exist"
register remove
[ ! -L "$pegasus/second directory/libzelsensors.so" ] || wrong "the link is left"

start "pegasus: a relative directory is relative to PEGASUS_HOME" pegasus
mkdir -p "$work/home/lib"
PEGASUS_HOME=$work/home
export PEGASUS_HOME
register add --dry-run
unset PEGASUS_HOME
expect_changes "ln -s $library $work/home/lib/libzelsensors.so
$compiled"

for answer in 'providerDir=lib' 'providerDir = lib '; do
    start "pegasus: cimconfig answers '$answer'" pegasus
    printf '%s\n' "$answer" >"$server/providerDir"
    register add
    expect_status 0
    expect_link
done

start "pegasus: our own directory in providerDir is passed over, and reported" pegasus
echo "${library%/*}/cmpi:lib" >"$server/providerDir"
register add
expect_status 0
expect_link
expect_error "providerDir names ${library%/*}/cmpi, which goes when this package is removed; then the server can neither"
register remove
expect_status 0
expect_no_link
[ -L "${library%/*}/cmpi/libzelsensors.so" ] || wrong "the package's own link is gone"
expect_error "providerDir names ${library%/*}/cmpi, which goes when this package is removed"

start "pegasus: the package's own link is enough where its directory is the server's only one" pegasus
echo "${library%/*}/cmpi" >"$server/providerDir"
: >"${library%/*}/cmpi/libothers.so"
register add
expect_status 0
expect_changes "$compiled"
expect_no_error
register remove
expect_status 0
[ -L "${library%/*}/cmpi/libzelsensors.so" ] || wrong "the package's own link is gone"

start "pegasus: a link that does the job already is left alone" pegasus
mkdir "$pegasus/second"
echo "lib:second" >"$server/providerDir"
ln -s "${library%/*}/cmpi/libzelsensors.so" "$pegasus/second/libzelsensors.so"
register add
expect_status 0
expect_changes "$compiled"
expect_no_link
register remove
expect_status 0
[ -L "$pegasus/second/libzelsensors.so" ] || wrong "a link that is not ours is gone"

start "pegasus: something else of that name is not overwritten" pegasus
echo "somebody's" >"$link"
register add
expect_status 1
expect_changes ""
expect_error "pegasus: $link is there and does not lead to $library; nothing has been changed."
[ "$(cat "$link")" = "somebody's" ] || wrong "the file has changed"

start "pegasus: a link that leads nowhere and is not ours is not overwritten" pegasus
ln -s /nowhere "$link"
register add
expect_status 1
expect_changes ""
expect_error "pegasus: $link is there and does not lead to $library; nothing has been changed."

start "pegasus: an old link of ours that leads nowhere is replaced" pegasus
ln -s "$place/lib64/libzelsensors.so.0" "$link"
register add
expect_status 0
expect_changes "rm $link
$linked$compiled"
expect_link

start "pegasus: a link that cannot be made ends it" pegasus
rm "$work/system/ln"
printf '#!/bin/sh\nexit 1\n' >"$pegasus/bin/ln"
chmod +x "$pegasus/bin/ln"
register add
expect_status 1
expect_changes "$linked"
expect_error "'ln -s $library $link' failed with status 1"
expect_error "pegasus: without this link the server does not find the provider; nothing has been changed"
ln -s "$(command -v ln)" "$work/system/ln"

start "pegasus: without the library there is nothing to link to" pegasus
rm "$library"
register add
expect_status 1
expect_calls pegasus ""
expect_error "pegasus: there is no libzelsensors.so.0 below $place/lib; nothing has been changed"

start "pegasus: remove takes module, classes and link away" pegasus
register add
register remove
expect_status 0
expect_changes "${module_removed}cimcli dc TQS_NumericSensor -n root/cimv2
cimcli dc TQS_SystemEventLog -n root/cimv2
rm $link
"
expect_module ""
expect_class none
expect_no_link
expect_output "pegasus: schema and provider are taken away"
expect_no_error

start "pegasus: remove of what is not there is no failure" pegasus
register remove
expect_status 0
expect_changes ""

start "pegasus: remove without cimcli says that the classes stay" pegasus
register add
rm "$pegasus/bin/cimcli"
register remove
expect_status 0
expect_changes "${module_removed}rm $link
"
expect_error "the classes (TQS_NumericSensor TQS_SystemEventLog) stay"

start "pegasus: remove takes the link away though the server does not run" pegasus
register add
rm "$server/running"
register remove
expect_status 1
expect_changes "rm $link
"
expect_no_link
expect_error "'cimprovider -l -s' gave no answer that helps; is the CIM server running?"
expect_error "pegasus: not all of ours is taken away: fix what is reported above, then repeat this"

start "pegasus: remove says that a link may be left where nobody knows providerDir" pegasus
echo '1 *' >"$server/fail-cimconfig"
register remove
expect_status 1
expect_error "pegasus: providerDir cannot be asked for, so a link libzelsensors.so may be left in its directory"

start "both managers are served" sfcb pegasus
register add
expect_status 0
expect_changes "$sfcb_added$linked$compiled"

start "both managers: the failure of the first does not keep the second from being tried" sfcb pegasus
rm "$schema_mof"
register add
expect_status 1
expect_module OK
expect_output "pegasus: schema and provider are registered"
tail -n 1 "$work/error" | grep -qx 'zelsensors-register: add failed for: sfcb' || wrong "it does not say which failed"

start "both managers: both failures are named" sfcb pegasus
rm "$schema_mof" "$server/running"
register add
expect_status 1
expect_error "add failed for: sfcb pegasus"

start "--manager leaves the other one alone" sfcb pegasus
register add --manager pegasus
expect_changes "$linked$compiled"
expect_calls sfcb ""
register --manager=sfcb add
register --manager=sfcb remove
expect_module OK
expect_calls sfcb "$sfcb_added$sfcb_undone"

start "a dry run shows the commands and changes nothing" sfcb pegasus
echo 'zelsensorsModule OK' >>"$server/modules"
register add --dry-run
expect_status 0
expect_changes "$sfcb_added$linked$module_removed$compiled"
expect_calls sfcb ""
expect_staged "$others"
expect_module OK
expect_class none
expect_no_link
expect_output "sfcb: a dry run; nothing has been changed"
expect_output "pegasus: a dry run; nothing has been changed"
expect_no_output "are registered"

start "a dry run of remove changes nothing" sfcb pegasus
register add
register remove --dry-run
expect_status 0
expect_changes "${sfcb_undone}${module_removed}cimcli dc TQS_NumericSensor -n root/cimv2
cimcli dc TQS_SystemEventLog -n root/cimv2
rm $link
"
expect_staged "$ours"
expect_module OK
expect_class 3.10.15
expect_link

start "no manager" sfcb pegasus
rm "$sfcb/bin/sfcbstage" "$pegasus/bin/cimprovider"
register add
expect_status 1
expect_calls sfcb ""
expect_calls pegasus ""
expect_error "no object manager found"

start "a manager that is asked for but not there" sfcb
register add --manager pegasus
expect_status 1
expect_calls sfcb ""
expect_error "cimmof is not in PATH"

for arguments in "" "--dry-run" "insert" "add add" "add remove" "add --manager" "add --manager cimom" "add --manager=" \
    "add --force" "add --qualifiers" "add --qualifiers maybe" "add --qualifiers="; do
    start "wrong usage '$arguments'" sfcb
    # shellcheck disable=SC2086 # a list of words
    register $arguments
    expect_status 2
    expect_calls sfcb ""
    expect_error "usage: zelsensors-register"
done

start "--help" sfcb
register --help
expect_status 0
expect_calls sfcb ""
expect_output "usage: zelsensors-register"

start "the script finds its data through a link to it" sfcb
ln -sf "$place/sbin/zelsensors-register" "$work/link"
PATH=$path "$work/link" add >"$work/output" 2>"$work/error" || wrong "it failed"
expect_calls sfcb "$sfcb_added"

start "the script without its data" sfcb
mkdir -p "$work/elsewhere/sbin"
cp "$place/sbin/zelsensors-register" "$work/elsewhere/sbin/"
status=0
PATH=$path "$work/elsewhere/sbin/zelsensors-register" add >"$work/output" 2>"$work/error" || status=$?
expect_status 1
expect_calls sfcb ""
expect_error "no directory $work/elsewhere/share/zelsensors/schema"

# ---- status

# Stands in for the loader's ldd: $work/needs has what it says of every library.
cat >"$work/ldd" <<TEXT
#!/bin/sh
exec cat "$work/needs"
TEXT
# Stands in for sfcb's client, which asks the daemon.
cat >"$work/wbemcli" <<TEXT
#!/bin/sh
echo "wbemcli \$*" >>"$work/asked"
exec cat "$work/names"
TEXT
chmod +x "$work/ldd" "$work/wbemcli"
# start_status CASE [MANAGER...]: with those two, which find nothing wrong.
start_status() {
    start "$@"
    echo "	libzelchip.so.0 => /lib/libzelchip.so.0 (0x1)" >"$work/needs"
    echo "localhost:5988/root/cimv2:X.Name=\"one\"" >"$work/names"
    rm -rf "$work/asking" "$work/asked"
    mkdir "$work/asking"
    ln -s "$work/ldd" "$work/wbemcli" "$work/asking/"
    path=$work/asking:$path
}
# look_unchanged MANAGER STATUS: the status, and that the manager holds afterwards what it held before.
everything_of() { (cd "$work/$1" && find . -type f ! -name calls -exec cat {} + -o -type l -print | cksum) }
look_unchanged() {
    before=$(everything_of "$1")
    register status
    expect_status "$2"
    [ "$(everything_of "$1")" = "$before" ] || wrong "something of $1 has changed"
    expect_changes ""
}
expect_report() {
    printf '%s' "$1" >"$work/expected"
    cmp -s "$work/output" "$work/expected" || wrong "another report than: $(cat "$work/expected")"
}
sfcb_well="zelsensors-register: sfcb: the schema is of version 3.10.15
zelsensors-register: sfcb: the library loads: $library
zelsensors-register: sfcb: TQS_NumericSensor answers
zelsensors-register: sfcb: TQS_SystemEventLog answers
"
pegasus_well="zelsensors-register: pegasus: zelsensorsModule is registered
zelsensors-register: pegasus: TQS_NumericSensor is of version 3.10.15
zelsensors-register: pegasus: TQS_SystemEventLog is of version 3.10.15
zelsensors-register: pegasus: the library loads: $link
zelsensors-register: pegasus: TQS_NumericSensor answers
zelsensors-register: pegasus: TQS_SystemEventLog answers
"

start_status "status: no manager"
register status
expect_status 3
expect_report "zelsensors-register: no object manager found
"

start_status "status: sfcb without us" sfcb
look_unchanged sfcb 3
expect_report "zelsensors-register: sfcb: nothing of ours is registered
"
expect_calls sfcb ""

start_status "status: sfcb, all well" sfcb
register add
look_unchanged sfcb 0
expect_report "$sfcb_well"
expect_no_error
printf 'wbemcli ein http://localhost:5988/root/cimv2:%s\n' TQS_NumericSensor TQS_SystemEventLog | cmp -s - "$work/asked" ||
    wrong "asked for other classes: $(cat "$work/asked")"

start_status "status: sfcb, what cannot be asked is said, and is nothing wrong" sfcb
register add
rm "$work/asking/ldd" "$work/asking/wbemcli"
look_unchanged sfcb 0
expect_output "sfcb: the library is $library; whether it loads is not known, since ldd is not in PATH"
expect_output "sfcb: whether the classes answer is not known, since wbemcli is not in PATH"

start_status "status: sfcb, a library that does not load" sfcb
register add
echo "	libzelchip.so.0 => not found" >"$work/needs"
look_unchanged sfcb 1
expect_output "sfcb: the library is broken: $library needs what the loader does not find: libzelchip.so.0"
rm "$work/needs"
look_unchanged sfcb 1
expect_output "sfcb: the library is broken: $library is none that the loader takes"
rm "$library"
look_unchanged sfcb 1
expect_output "sfcb: the library is broken: there is no "

start_status "status: sfcb, classes that do not answer" sfcb
register add
: >"$work/names"
look_unchanged sfcb 1
expect_output "sfcb: TQS_NumericSensor does not answer"

start_status "status: sfcb, a schema of another version" sfcb
register add
sed -i 's/3\.10\.15/3.9.0/' "$stage/mofs/root/cimv2/tqs.mof"
look_unchanged sfcb 1
expect_output "sfcb: the schema is not this package's: it has version 3.9.0, and this package 3.10.15"

start_status "status: sfcb, staged and not built, and half taken away" sfcb
register add
rm "$sfcb/var/lib/sfcb/registration/providerRegister"
look_unchanged sfcb 1
expect_output "sfcb: the registration is staged and not built; run 'sfcbrepos -f' and restart sfcbd"
rm "$stage/mofs/root/cimv2/tqs.mof"
look_unchanged sfcb 1
expect_output "sfcb: the registration is broken: there is no $stage/mofs/root/cimv2/tqs.mof"
register add
rm "$stage/regs/tqs.reg"
look_unchanged sfcb 1
expect_output "sfcb: the registration is broken: there is no $stage/regs/tqs.reg"

start_status "status: pegasus without us" pegasus
look_unchanged pegasus 3
expect_report "zelsensors-register: pegasus: nothing of ours is registered
"

start_status "status: pegasus, all well" pegasus
register add
look_unchanged pegasus 0
expect_report "$pegasus_well"
expect_no_error

start_status "status: pegasus, parts that are missing" pegasus
register add
rm "$link" "$server/namespaces/root/cimv2/TQS_SystemEventLog"
look_unchanged pegasus 1
expect_output "pegasus: the registration is broken: no directory of providerDir has libzelsensors.so"
expect_output "pegasus: the registration is broken: there is no class TQS_SystemEventLog"
expect_output "pegasus: TQS_SystemEventLog does not answer"
awk '$1 != "zelsensorsModule"' "$server/modules" >"$work/modules"
cp "$work/modules" "$server/modules"
look_unchanged pegasus 1
expect_output "pegasus: the registration is broken: zelsensorsModule is not registered"
echo "zelsensorsModule Degraded" >>"$server/modules"
look_unchanged pegasus 1
expect_output "pegasus: the registration is broken: zelsensorsModule is in the state Degraded"

start_status "status: pegasus, another version" pegasus
registered 3.9.0 sint32
look_unchanged pegasus 1
expect_output "pegasus: TQS_NumericSensor is not this package's: version 3.9.0"

start_status "status: pegasus, classes that do not answer" pegasus
register add
: >"$server/answers-nothing"
look_unchanged pegasus 1
expect_output "pegasus: TQS_NumericSensor does not answer"

start_status "status: pegasus, a link that leads nowhere" pegasus
register add
rm "$library"
look_unchanged pegasus 1
expect_output "pegasus: the library is broken: there is no $link"

start_status "status: pegasus, a server that does not run" pegasus
register add
rm "$server/running"
look_unchanged pegasus 1
expect_error "pegasus: the server does not answer, so what is registered is not known"

start_status "status: one manager has ours, the other not" pegasus sfcb
register add --manager sfcb
look_unchanged sfcb 0
expect_report "${sfcb_well}zelsensors-register: pegasus: nothing of ours is registered
"
register status --manager pegasus
expect_status 3

start_status "status: one manager that is broken decides" pegasus sfcb
register add
: >"$server/answers-nothing"
register status
expect_status 1
register status --manager sfcb
expect_status 0

start_status "status: takes no option of changes" sfcb
for option in --dry-run --qualifiers=yes; do
    register status $option
    expect_status 2
    expect_error "status takes neither --dry-run nor --qualifiers"
done

[ "$failures" = 0 ] || exit 1
echo "zelsensors-register: all cases passed"
