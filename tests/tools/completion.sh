#!/usr/bin/env bash
# What bash proposes after a command line, that kxsip accepts every option that is proposed, and that zsh has the same.
set -euo pipefail
source tools/kxsip/completion/kxsip

fail() {
    echo "$*" >&2
    exit 1
}

# expect WORDS... = PROPOSALS: the last word is being typed.
expect() {
    local words=() joined
    while [ "$1" != = ]; do
        words+=("$1")
        shift
    done
    shift
    COMP_WORDS=(kxsip "${words[@]}")
    COMP_CWORD=${#words[@]}
    _kxsip
    joined="${COMPREPLY[*]}"
    [ "$joined" = "$*" ] || fail "kxsip ${words[*]}: $joined, not $*"
}

expect c = check calls cancel
expect calls --sort -d = -duration
expect check --u = --user --until
expect show --me = --method
expect flow --status 4 = 4xx
expect key --grammar c = classic
expect check --method INF = INFO
expect digest v = verify
expect digest answer --qop auth- = auth-int
expect show samples/in = samples/invite.sip
expect flow --call-id x =

for command in show check flow calls key response "digest answer" "digest verify"; do
    help=$("$KXSIP" $command --help)
    for option in $(_kxsip_options "${command##* }"); do
        grep -q -e "$option\b" <<<"$help" || fail "kxsip $command has no $option"
    done
done

# options FILE: all options that the file has
options() {
    grep -oE -e '--[a-z][a-z-]*' "$1" | sort -u
}
diff <(options tools/kxsip/completion/kxsip) <(options tools/kxsip/completion/_kxsip) || fail "zsh has other options"
if command -v zsh >/dev/null; then
    zsh -n tools/kxsip/completion/_kxsip
fi

# the manual describes every command and option, and the help of every command ends with an example
for command in $("$KXSIP" --help | sed -n '/^Subcommands/,/^$/s/^  \([a-z]*\) .*/\1/p'); do
    grep -q "^\.\(Cm\|It Cm\).*\b$command\b" tools/kxsip/kxsip.1 || fail "kxsip.1 does not tell of $command"
    "$KXSIP" "$command" --help | tail -n 1 | grep -q "^  kxsip $command" || fail "kxsip $command --help has no example"
done
for option in $("$KXSIP" show --help; "$KXSIP" check --help; "$KXSIP" flow --help; "$KXSIP" calls --help); do
    option=${option%%,*}
    case $option in
        --help) ;;
        --[a-z]*) grep -q -e "Fl .*-${option#--}" tools/kxsip/kxsip.1 || fail "kxsip.1 does not tell of $option" ;;
    esac
done
