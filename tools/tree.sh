# shellcheck shell=bash
# What commands do in the tree: take turns, configure, build, name its files.

# takeTurn [FOLDER]: two calls that build in the same folder take turns.
takeTurn() {
    local folder=${1:-build}
    mkdir -p "$folder"
    exec 9>"$folder/.lock"
    if ! flock -n 9; then
        say "another ./dev works in this tree, waiting for it"
        flock 9
    fi
}
endTurn() { exec 9>&-; }

# configure PRESET [OPTION ...]
configure() {
    local preset=$1 strict=()
    shift
    # Elsewhere it stays as the last call left it, so that not all is built anew.
    if [[ -n ${CI-} ]]; then strict=(-DORRINET_WARNINGS_AS_ERRORS=ON); fi
    timed "configuring '$preset'" quiet cmake --preset "$preset" "${strict[@]}" "$@"
}

# build PRESET [TARGET ...]: all targets where none is named.
build() {
    local preset=$1
    shift
    timed "building '$preset'" quiet cmake --build --preset "$preset" -j "$ORRINET_JOBS" ${1:+--target "$@"}
}

# Prints, each with a zero byte behind it, the files that match patterns and that git tracks: nobody's scratch work. A
# tree that came without git has no other files.
tracked() {
    local file pattern match=()
    if [[ $(git -c safe.directory='*' rev-parse --show-toplevel 2>/dev/null) == "$PWD" ]]; then
        while IFS= read -r -d '' file; do
            if [[ -e $file ]]; then printf '%s\0' "$file"; fi
        done < <(git -c safe.directory='*' ls-files -z -- "$@")
    else
        for pattern in "$@"; do match+=(-o -path "./$pattern"); done
        find . -path ./build -prune -o -type f \( "${match[@]:1}" \) -print0
    fi
}

# The checks that take a second; every test run makes them.

# Of clang-format, as Debian 13 has it.
readonly formatVersion=19

checkFormat() {
    local version
    version=$(clang-format --version | sed -n 's/.*version \([0-9]*\).*/\1/p')
    if [[ $version != "$formatVersion" ]]; then
        say "clang-format: nothing checked, since version $version does not format as version $formatVersion does"
        return
    fi
    timed "clang-format" quiet formatAll
}
formatAll() { tracked '*.cpp' '*.h' | xargs -0 -r -P "$ORRINET_JOBS" -n 32 clang-format --dry-run --Werror; }

checkShell() { timed "shellcheck" quiet shellcheckAll; }
shellcheckAll() { scripts | xargs -0 -r shellcheck -x; }
scripts() {
    local file first
    while IFS= read -r -d '' file; do
        IFS= read -r first <"$file" || first=
        if [[ $first == '#!'*bash || $first == '# shellcheck shell=bash' ]]; then printf '%s\0' "$file"; fi
    done < <(tracked dev '.ci/*' 'tools/*' 'tests/dev/*' 'packaging/*')
}
