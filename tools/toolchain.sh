# shellcheck shell=bash
# The toolchain: the host's own packages, or those of a Debian root. What only one command needs is added on demand.

readonly qtWanted=6.8

# A row for each package: its names on Debian, Fedora and Arch, - where another row's brings it along.
toolchainRows() {
    cat <<'ROWS'
g++                        gcc-c++                 gcc
lld                        lld                     lld
cmake                      cmake                   cmake
ninja-build                ninja-build             ninja
qt6-base-dev               qt6-qtbase-devel        qt6-base
qt6-svg-dev                qt6-qtsvg-devel         qt6-svg
libqt6sql6-sqlite          -                       -
libssl-dev                 openssl-devel           openssl
libllhttp-dev              llhttp-devel            llhttp
libcli11-dev               cli11-devel             cli11
libxlsxwriter-dev          libxlsxwriter-devel     libxlsxwriter
libreadstat-dev            readstat-devel          readstat
ca-certificates            ca-certificates         ca-certificates
libbenchmark-dev           google-benchmark-devel  benchmark
-                          libasan                 -
-                          libubsan                -
sqlite3                    sqlite                  sqlite
git                        git                     git
clang-format               clang-tools-extra       clang
shellcheck                 ShellCheck              shellcheck
binutils-mingw-w64-x86-64  mingw64-binutils        mingw-w64-binutils
fonts-dejavu-core          dejavu-sans-fonts       ttf-dejavu
ROWS
}

# Prints the names that the rows read have in a family.
packageNames() {
    local -A column=([debian]=1 [fedora]=2 [arch]=3)
    awk -v column="${column[$1]}" '$column != "-" && !seen[$column]++ { print $column }'
}

atLeast() { [[ $(printf '%s\n%s\n' "$2" "$1" | sort -V | head -n 1) == "$2" ]]; }

# Asks the host's Qt, if there is one.
hostQt() {
    local qmake
    for qmake in qmake6 qmake-qt6 /usr/lib/qt6/bin/qmake; do
        if command -v "$qmake" >/dev/null; then "$qmake" -query "$1" && return; fi
    done
    return 1
}

# Prints the first thing that the host lacks of the toolchain and of the commands named, nothing where it has all.
hostLacks() {
    local tool
    if ! atLeast "$(hostQt QT_VERSION 2>/dev/null)" "$qtWanted"; then
        printf 'Qt %s' "$qtWanted"
        return
    fi
    if ! compgen -G "$(hostQt QT_INSTALL_PLUGINS)/sqldrivers/*qsqlite*" >/dev/null; then
        printf "Qt's driver for SQLite"
        return
    fi
    for tool in cmake ninja c++ "$@"; do
        if ! command -v "$tool" >/dev/null; then
            printf '%s' "$tool"
            return
        fi
    done
    if ! c++ -fsyntax-only -x c++ - <<<'#include <openssl/x509.h>' 2>/dev/null; then
        printf "OpenSSL's headers"
    fi
}

# The family whose package manager the host has, empty where it is another.
hostFamily() {
    if command -v apt-get >/dev/null; then printf debian
    elif command -v dnf >/dev/null; then printf fedora
    elif command -v pacman >/dev/null; then printf arch
    fi
}

# The version of Qt that the host's own package manager offers, empty where it offers none.
offeredQt() {
    case $(hostFamily) in
        debian) apt-cache policy qt6-base-dev 2>/dev/null | sed -n 's/^ *Candidate: *\([0-9.]*\).*/\1/p' ;;
        fedora) dnf -q repoquery --latest-limit 1 --queryformat '%{version}' qt6-qtbase-devel 2>/dev/null | head -n 1 ;;
        arch) pacman -Si qt6-base 2>/dev/null | sed -n 's/^Version *: *\([0-9.]*\).*/\1/p' ;;
    esac
}

isInstalled() {
    local package=$1
    if [[ -n $root ]]; then
        [[ $(dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]]
        return
    fi
    case $(hostFamily) in
        debian) [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ;;
        fedora) rpm -q --whatprovides "$package" >/dev/null 2>&1 ;;
        arch) pacman -Q "$package" >/dev/null 2>&1 ;;
    esac
}

installOnHost() {
    case $(hostFamily) in
        debian) asRoot env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@" ;;
        fedora) asRoot dnf -y install "$@" ;;
        arch) asRoot pacman -S --noconfirm --needed "$@" ;;
    esac
}

refreshLists() {
    if [[ $(hostFamily) == debian ]]; then
        timed "refreshing the package lists" quiet asRoot apt-get update
    fi
}

# One call changes the toolchain; another that comes meanwhile waits, and then finds it done.
lockToolchain() {
    local cache=${XDG_CACHE_HOME:-$HOME/.cache}/orrinet
    mkdir -p -- "$cache"
    exec 8>"$cache/toolchain.lock"
    if ! flock -n 8; then
        say "another ./dev is making the toolchain, waiting for it"
        flock 8
    fi
}
unlockToolchain() { exec 8>&-; }

# Leaves in $root the Debian root to work in, or nothing where the host has all that is needed, the commands named too.
findToolchain() {
    root=
    if [[ -z $(hostLacks "$@") ]]; then return; fi
    root=$(rootFolder)
    if [[ -d $root ]]; then return; fi
    lockToolchain
    if [[ ! -d $root ]]; then makeToolchain "$@"; fi
    unlockToolchain
}

# The same, with the commands without which the tests would leave something out.
findTestToolchain() { findToolchain sqlite3 git clang-format shellcheck x86_64-w64-mingw32-windres; }

makeToolchain() {
    local offered lacking packages
    refreshLists
    offered=$(offeredQt)
    if [[ -n $offered ]] && atLeast "$offered" "$qtWanted"; then
        root=
        mapfile -t packages < <(toolchainRows | packageNames "$(hostFamily)")
        timed "installing Qt $offered and the tools from this system's packages" quiet installOnHost "${packages[@]}"
        lacking=$(hostLacks "$@")
        if [[ -n $lacking ]]; then die "the packages are installed, yet $lacking is still missing"; fi
    elif [[ $(hostFamily) == debian ]]; then
        timed "making a Debian 13 root with Qt in ${root/#$HOME/\~} (once)" quiet makeRoot
    else
        die "Qt $qtWanted or later (with its development files) is missing, this system's package manager does not offer it, and without apt-get no Debian root can be made"
    fi
}

# Installs what is missing of some packages, each a row of names as above, where the toolchain is. What one command
# alone needs is asked for by it, so that nobody else waits for it.
onDemand() {
    local family=debian package missing=()
    if [[ -z $root ]]; then family=$(hostFamily); fi
    if [[ -z $family ]]; then
        say "this system's packages are not known here; needed is: $(printf '%s\n' "$@" | packageNames debian | paste -sd ' ')"
        return
    fi
    lockToolchain
    for package in $(printf '%s\n' "$@" | packageNames "$family"); do
        if ! isInstalled "$package"; then missing+=("$package"); fi
    done
    if ((${#missing[@]} > 0)); then
        if [[ -n $root ]]; then
            timed "installing ${missing[*]} in the Debian root" quiet installInRoot "${missing[@]}"
        else
            refreshLists
            timed "installing ${missing[*]}" quiet installOnHost "${missing[@]}"
        fi
    fi
    unlockToolchain
}
