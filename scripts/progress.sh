# shellcheck shell=bash
# Sourced by the commands beside it.

# with_progress NAME LOG COMMAND...: runs the command with its output in the log, and says on standard error, every few
# seconds, how far it is: on a terminal in one line, otherwise in a line each.
with_progress() {
    local name=$1 log=$2 monitor status=0
    shift 2
    : >"$log"
    report_progress "$name" "$log" &
    monitor=$!
    "$@" >"$log" 2>&1 || status=$?
    kill "$monitor" 2>/dev/null || true
    wait "$monitor" 2>/dev/null || true
    if [ -t 2 ]; then
        printf '\r\033[K' >&2
    fi
    return "$status"
}

# Ends with the command that started it.
report_progress() {
    local begin=$SECONDS pause=10 form='%s\n' text
    if [ -t 2 ]; then
        pause=2 form='\r\033[K%s'
    fi
    while sleep "$pause" >/dev/null 2>&1 && kill -0 $$ 2>/dev/null; do
        text=$(tail -n 40 "$2" | latest_step)
        # shellcheck disable=SC2059 # the form is one of those above
        printf "$form" "$1: ${text:+$text, }$((SECONDS - begin)) s" >&2
    done
}

# The last step that the output of ninja, ctest or apt-get tells.
latest_step() {
    sed -nE -e 's/^\[([0-9]+)\/([0-9]+)\].*/step \1 of \2/p' -e 's/^ *([0-9]+)\/([0-9]+) Test .*/test \1 of \2/p' \
        -e 's/^(Get:[0-9]+|Unpacking|Setting up) ?([^ ]+( [a-z0-9.+-]+)?).*/\1 \2/p' | tail -n 1
}
