# shellcheck shell=bash
# What ./dev says on its way, and with whose rights it does things.

say() { printf '==> %s\n' "$*" >&2; }
die() { printf 'dev: %s\n' "$*" >&2; exit 1; }

# Runs a command under a line that says what it does, and says how long it took; where it fails, all ends.
# Its output goes to a log that is shown only when it fails; "loud" shows it as it comes.
timed() {
    local what=$1 how=$2 log status begin=$SECONDS
    shift 2
    say "$what ..."
    # A shell of its own, so that a die in it comes back here, and no part of a condition, which would let the command
    # go on behind its first failure.
    set +e
    if [[ $how == loud ]]; then
        (set -e; "$@")
        status=$?
    else
        log=$(mktemp)
        (set -e; "$@") >"$log" 2>&1
        status=$?
        if ((status != 0)); then cat -- "$log" >&2; fi
        rm -f -- "$log"
    fi
    set -e
    if ((status != 0)); then
        say "$what: failed (status $status) after $((SECONDS - begin)) s"
        exit "$status"
    fi
    say "$what: $((SECONDS - begin)) s"
}

asRoot() {
    if (($(id -u) == 0)); then "$@"
    elif command -v sudo >/dev/null; then sudo "$@"
    else die "'$1' needs root here: run as root or install sudo"
    fi
}
