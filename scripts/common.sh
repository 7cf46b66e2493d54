# shellcheck shell=bash
# Sourced by the commands beside it. Changes to the checkout's root, installs what they need (all of it, or the arguments
# of scripts/setup in "needs"), and defines builds whose output is kept in logs.

set -euo pipefail
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$ROOT"
source scripts/progress.sh
# shellcheck disable=SC2154 # may be set by those that source this file
scripts/setup "${needs[@]}"
LOGS=build/logs
mkdir -p "$LOGS"

# logged NAME COMMAND...: runs the command with its output in the log NAME, and tells how far it is. If it fails, shows
# the end of the log.
logged() {
    local name=$1 log="$LOGS/$1.log"
    shift
    with_progress "$name" "$log" "$@" && return
    local status=$?
    echo "failed: $* (whole log: $log)" >&2
    tail -n 60 "$log" >&2
    return $status
}

# build PRESET [TARGET...]: configures and builds, all targets if none is named.
build() {
    local preset=$1
    shift
    logged "configure-$preset" cmake --preset "$preset" || return
    if [ $# -gt 0 ]; then
        set -- --target "$@"
    fi
    logged "build-$preset" cmake --build --preset "$preset" "$@"
}

# run_tests PRESET [CTEST-OPTION...]: runs the tests, shows the output of those that fail, and stores the numbers of
# tests in the variables passed and failed.
run_tests() {
    local preset=$1 log="$LOGS/test-$1.log" status=0 total=0
    shift
    with_progress "test-$preset" "$log" "${fixed_addresses[@]}" \
        ctest --preset "$preset" -j2 --output-on-failure --no-tests=error "$@" || status=$?
    failed=$(sed -n 's/^.* tests passed, \([0-9]*\) tests failed out of [0-9]*$/\1/p' "$log")
    total=$(sed -n 's/^.* tests passed, [0-9]* tests failed out of \([0-9]*\)$/\1/p' "$log")
    failed=${failed:-0}
    # shellcheck disable=SC2034 # read by the callers
    passed=$((${total:-0} - failed))
    if [ "$status" -ne 0 ]; then
        grep -vE '^ +Start +[0-9]+:| Passed +[0-9.]+ sec$' "$log" >&2 || true
    fi
    return "$status"
}

# The sanitizers' shadow memory needs a predictable address space, so its randomisation is turned off where that is
# allowed.
fixed_addresses=()
if setarch "$(uname -m)" -R true 2>/dev/null; then
    fixed_addresses=(setarch "$(uname -m)" -R)
fi
