# shellcheck shell=bash
# shellcheck disable=SC2016 # what a stand-in does is for the stand-in to expand
# A copy of ./dev in a folder of its own, a PATH of stand-ins that note how they are called, and what a test says of both.

original=$(cd ../.. && pwd -P)
readonly original

# Programs that ./dev calls as they are.
readonly plainTools=(awk basename bash cat chmod cmp cp cut date dirname env find flock grep head locale mkdir mktemp mv
    nproc paste readlink rm sed sha256sum sort stat tail tee touch tr wc xargs)

newStage() {
    local tool
    folder=$(mktemp -d)
    trap 'rm -rf -- "$folder"' EXIT
    tree=$folder/tree bin=$folder/bin output=$folder/output errors=$folder/errors noted=$folder/calls
    export HOME=$folder/home XDG_CACHE_HOME=$folder/cache
    unset XDG_RUNTIME_DIR ORRINET_INSIDE ORRINET_JOBS CI
    mkdir -p "$tree" "$bin" "$HOME" "$XDG_CACHE_HOME" "$folder/plugins/sqldrivers"
    cp -R "$original/dev" "$original/tools" "$tree"
    touch "$noted" "$errors" "$folder/plugins/sqldrivers/libqsqlite.so"
    for tool in "${plainTools[@]}"; do ln -s "$(type -P "$tool")" "$bin/$tool"; done
    for tool in apt-cache apt-get c++ chroot cmake ctest dpkg-query mount ninja shellcheck sqlite3 \
        true x86_64-w64-mingw32-windres; do
        standIn "$tool" ''
    done
    standIn id 'echo 0'
    standIn git 'exit 128'
    standIn clang-format 'echo "clang-format version 19.1.7"'
    standIn qmake6 "if [[ \$2 == QT_VERSION ]]; then echo 6.8.2; else echo '$folder/plugins'; fi"
    standIn mmdebstrap 'mkdir -p "${@: -1}/etc"'
    standIn unshare 'while [[ $1 != -- ]]; do shift; done; shift; "$@"'
}

# A program of that name, which notes its call, in one line, and then does what the script says.
standIn() {
    rm -f -- "$bin/$1"
    cat >"$bin/$1" <<STAND_IN
#!$(type -P bash)
arguments="\$*"
printf '%s\n' "$1 \${arguments//\$'\n'/ }" >>'$noted'
$2
STAND_IN
    chmod +x "$bin/$1"
}

# The host may have a Qt outside its PATH, so none is not to be had.
hostWithOldQt() { standIn qmake6 'echo 6.4.2'; }

# A command of ./dev named added.
addCommand() { printf '%s\n' "$@" >"$tree/tools/added"; }

# What the build is taken to have made.
benchmarks() {
    mkdir -p "$tree/build/release/bench"
    standIn orrinet-bench "$1"
    mv "$bin/orrinet-bench" "$tree/build/release/bench"
}

# The fuzzers of these targets.
fuzzers() {
    local target
    standIn dpkg-query 'echo installed'
    for target; do standInFuzzer "$target" 'echo "stat::number_of_executed_units: 12345"'; done
}
standInFuzzer() {
    mkdir -p "$tree/build/fuzz/fuzz"
    standIn "fuzz-$1" "$2"
    mv "$bin/fuzz-$1" "$tree/build/fuzz/fuzz"
}

# What makes packages and reads them, with nothing to say, and what a tour takes along.
packagers() {
    local tool built=$tree/build/package/build
    standIn dpkg-query 'echo installed'
    for tool in dpkg-buildflags lintian desktop-file-validate appstreamcli; do standIn "$tool" ''; done
    standIn cpack 'mkdir -p build/package/packed; echo same >build/package/packed/some.deb'
    touch -d @86400 "$tree/VERSION.txt"
    mkdir -p "$built/demo" "$built/standin" "$built/packaging"
    echo 86400 >"$built/dated"
    touch "$built/standin/orrinet-standin" "$built/packaging/org.example.orrinet.metainfo.xml"
    standIn orrinet-demo 'touch build/package/tour/demo.ormt'
    mv "$bin/orrinet-demo" "$built/demo"
}

# The roots that a later call would take for whole.
roots() { find "$XDG_CACHE_HOME/orrinet" -mindepth 1 -maxdepth 1 ! -name '*.half' ! -name '*.lock' -printf '%f\n'; }

calls() { grep -- "^$1 " "$noted" || true; }
forgetCalls() { : >"$noted"; }

dev() { PATH=$bin "$tree/dev" "$@" >"$output" 2>"$errors"; }

# --- what is to hold -------------------------------------------------------------------------------------------

wrong() {
    printf '    line %s: %s\n' "$(caller 1 | cut -d ' ' -f 1)" "$1"
    sed 's/^/    | /' "$errors"
    exit 1
}

succeeds() { "$@" || wrong "failed ($?): $*"; }
fails() { if "$@"; then wrong "succeeded: $*"; fi; }
statusOf() {
    local status=0
    "$@" || status=$?
    printf '%s' "$status"
}
equals() { [[ $1 == "$2" ]] || wrong "'$1' is not '$2'"; }
# shellcheck disable=SC2053 # the second is a pattern
matches() { [[ $1 == $2 ]] || wrong "'$1' does not match '$2'"; }
# shellcheck disable=SC2053
matchesNot() { [[ $1 != $2 ]] || wrong "'$1' matches '$2'"; }
isEmpty() { [[ -z $1 ]] || wrong "'$1' is not empty"; }
errorHas() { matches "$(<"$errors")" "*$1*"; }

# --- the run ---------------------------------------------------------------------------------------------------

# Runs the functions named, or all of the script whose name says a promise.
runFunctions() {
    local name status failed=0 names=("$@")
    if (($# == 0)); then mapfile -t names < <(sed -n 's/^\([a-z0-9]*_[a-z0-9_]*\)() {$/\1/p' "${0##*/}"); fi
    for name in "${names[@]}"; do
        # Not as part of a condition, within which bash goes on behind a failure.
        set +e
        (set -e; newStage; "$name")
        status=$?
        set -e
        if ((status == 0)); then
            printf 'PASS   : %s\n' "$name"
        else
            printf 'FAIL!  : %s\n' "$name"
            failed=$((failed + 1))
        fi
    done
    printf '%s of %s failed\n' "$failed" "${#names[@]}"
    ((failed == 0))
}
