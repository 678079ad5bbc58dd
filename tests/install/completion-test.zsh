#!/usr/bin/env zsh
# Types command lines into real shells, bash and zsh, in a terminal of their own, and compares what the tabulator makes
# of them. After each, a key lets the shell print the line between two marks: nothing here rests on time.
#
# usage: completion-test.zsh SOURCE-DIRECTORY ZELHOST
emulate -L zsh
setopt extended_glob
zmodload zsh/zpty || { print "SKIPPED: zsh has no module zsh/zpty"; exit 77; }
command -v bash >/dev/null || { print "SKIPPED: bash is not installed"; exit 77; }
source_directory=$1
work=$(mktemp -d)
trap 'rm -rf $work' EXIT
ln -s $2 $work/zelhost
export PATH=$work:$PATH LC_ALL=C.UTF-8
unset ZELCHIP_SCENARIO
failures=0

# Control-T prints the line as it stands.
print -r -- "PS1=
bind 'set bell-style none' 'set page-completions off' 'set completion-query-items 1000' 'set enable-bracketed-paste off'
bind -x '\"\\C-t\": printf \"<%s>\\n\" \"\$READLINE_LINE\"'
source $source_directory/packaging/completion/zelhost.bash" >$work/bashrc
print -r -- "PS1=
fpath=($source_directory/packaging/completion \$fpath)
autoload -Uz compinit && compinit -u -D
setopt no_beep no_list_ambiguous
show() { print -r -- \"<\$BUFFER>\" }
zle -N show
bindkey '^I' complete-word '^T' show" >$work/.zshrc

start_bash() { zpty -b shell bash --noprofile --rcfile $work/bashrc -i }
start_zsh() { zpty -b shell "ZDOTDIR=$work zsh -d -i" }

# completed TYPED: sets line to what the shell makes of it, with a tabulator after it.
completed() {
    local answer
    zpty -n -w shell "$1"$'\t\x14'
    zpty -r -m shell answer $'*<zelhost*>[\r\n]*'
    line=${${answer##*\<}%%\>[[:cntrl:]]*}
    zpty -n -w shell $'\x15'
}

# expect TYPED LINE: trailing blanks count for nothing.
expect() {
    completed "$1"
    line=${line%%[[:space:]]##}
    [[ $line == "$2" ]] && return
    print -r -- "FAILED: $shell: '$1' becomes '$line' instead of '$2'"
    ((++failures))
}

for shell in bash zsh; do
    start_$shell
    expect 'zelhost inst' 'zelhost instances'
    expect 'zelhost sc' 'zelhost scenario'
    expect 'zelhost scenario ch' 'zelhost scenario check'
    expect 'zelhost log --si' 'zelhost log --since'
    expect 'zelhost log --sch' 'zelhost log --sch'
    expect 'zelhost verify --sch' 'zelhost verify --schema'
    expect 'zelhost names --format j' 'zelhost names --format json'
    expect 'zelhost names --scenario dy' 'zelhost names --scenario dying-sensor'
    expect 'zelhost names --chip sys' 'zelhost names --chip system'
    expect 'zelhost names --chip lin' 'zelhost names --chip linux'
    expect 'zelhost names TQS_S' 'zelhost names TQS_SystemEventLog'
    expect 'zelhost get Clo' 'zelhost get Clock\ Battery\(00000024\)'
    expect 'zelhost get CPU\ T' 'zelhost get CPU\ Temperature\(00000010\)'
    expect 'zelhost --scenario thousand-sensors get Probe\ 77\(' 'zelhost --scenario thousand-sensors get Probe\ 77\(0000104c\)'
    expect 'zelhost sensors --problems Clo' 'zelhost sensors --problems Clock\ Battery\(00000024\)'
    expect 'zelhost --problems sen' 'zelhost --problems sensors'
    expect 'zelhost sensors Clock\ Battery\(00000024\) Cab' \
        'zelhost sensors Clock\ Battery\(00000024\) Cabinet\ Cover\(00000050\)'
    expect 'zelhost --scenario=thousand-sensors get Probe\ 77\(' \
        'zelhost --scenario=thousand-sensors get Probe\ 77\(0000104c\)'
    expect 'zelhost sensors --type temp' 'zelhost sensors --type temperature'
    expect 'zelhost sensors --sort s' 'zelhost sensors --sort severity'
    expect 'zelhost sensors --color al' 'zelhost sensors --color always'
    expect 'zelhost sensors --format c' 'zelhost sensors --format csv'
    expect 'zelhost check --warn-on no' 'zelhost check --warn-on no-reading'
    expect 'zelhost check --ignore Cab' 'zelhost check --ignore Cabinet\ Cover\(00000050\)'
    expect 'zelhost --server http://localhost:1 get Clo' 'zelhost --server http://localhost:1 get Clo'
    expect 'zelhost --servers list sensors Clo' 'zelhost --servers list sensors Clo'
    expect 'zelhost --server http://localhost:1 --user me sens' 'zelhost --server http://localhost:1 --user me sensors'
    expect 'zelhost log --since 2' 'zelhost log --since 2'
    expect 'zelhost watch TQS' 'zelhost watch TQS'
    expect 'zelhost get Nonesuch' 'zelhost get Nonesuch'
    expect 'zelhost help ver' 'zelhost help ver'
    expect 'zelhost help veri' 'zelhost help verify'
    zpty -d shell
done
((failures == 0)) || exit 1
print "Completion: all lines passed, in bash and zsh"
