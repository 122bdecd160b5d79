# shellcheck shell=bash
# The Debian root in the cache folder: its making, what is added to it, and the way into it.

# What a root is made of: Debian 13, unless a command makes another beside it.
suite=trixie
# The root to work in, empty where the host has all that is needed.
root=

rootFolder() {
    local key
    key=$(printf '%s\n' "$suite" "$(toolchainRows | packageNames debian)" | sha256sum | cut -c 1-12)
    printf '%s/orrinet/%s-%s' "${XDG_CACHE_HOME:-$HOME/.cache}" "$suite" "$key"
}

# The archive that the host itself installs from, so that a mirror or a cache near to it is used here too.
hostMirror() {
    # shellcheck disable=SC2016 # apt-get itself fills these in
    apt-get indextargets --format '$(REPO_URI) $(ORIGIN) $(COMPONENT) $(RELEASE)' 'Created-By: Packages' 2>/dev/null |
        awk '$2 == "Debian" && $3 == "main" && $4 !~ /-/ { print $1; exit }'
}

# makeRoot [OPTION OF MMDEBSTRAP ...]
makeRoot() {
    local half=$root.half mirror packages
    asRoot rm -rf --one-file-system -- "$half"
    mirror=$(hostMirror)
    packages=$(toolchainRows | packageNames debian | paste -sd ,)
    if ! command -v mmdebstrap >/dev/null; then installOnHost mmdebstrap debian-archive-keyring; fi
    asRoot mmdebstrap --variant=apt --mode=root --aptopt='APT::Install-Recommends "false"' "$@" \
        --include="$packages" "$suite" "$half" ${mirror:+"$mirror"}
    # Only a root that is whole gets the name that later calls look for.
    asRoot mv -T -- "$half" "$root"
}

installInRoot() {
    # An installation that was cut short is finished first.
    inRoot 0:0 -- DEBIAN_FRONTEND=noninteractive bash -euc '
        dpkg --configure -a
        apt-get update
        apt-get install -y --no-install-recommends "$@"
    ' bash "$@"
}

# Runs a command inside the root: inRoot USER:GROUP [FOLDER ...] -- [NAME=VALUE ...] COMMAND [ARGUMENT ...]
# The folders are seen inside. The mounts live in a mount namespace of their own, so they are gone with the last process
# in it, whatever ends it, and no other call sees them.
inRoot() {
    local user=$1 folders=() keep=() name
    shift
    while [[ $1 != -- ]]; do
        folders+=("$1")
        shift
    done
    shift
    for name in HOME USER LOGNAME TERM CI DISPLAY WAYLAND_DISPLAY XAUTHORITY XDG_RUNTIME_DIR XDG_CACHE_HOME \
        XDG_CONFIG_HOME http_proxy https_proxy no_proxy ORRINET_TEST_MODE ORRINET_JOBS SOURCE_DATE_EPOCH; do
        if [[ -n ${!name-} ]]; then keep+=("$name=${!name}"); fi
    done
    # shellcheck disable=SC2016 # for the shell within
    asRoot unshare --mount --propagation private -- bash -euc '
        root=$1; user=$2; count=$3; shift 3
        mount --rbind /dev "$root/dev"
        mount -t proc proc "$root/proc"
        mount --bind /tmp "$root/tmp"
        : >>"$root/etc/resolv.conf"
        if [[ -e /etc/resolv.conf ]]; then mount --bind "$(readlink -f /etc/resolv.conf)" "$root/etc/resolv.conf"; fi
        while ((count-- > 0)); do
            mkdir -p -- "$root$1"
            mount --rbind "$1" "$root$1"
            shift
        done
        exec chroot --userspec="$user" "$root" /usr/bin/env -i "$@"
    ' bash "$root" "$user" "${#folders[@]}" "${folders[@]}" \
        "${keep[@]}" PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 "$@"
}

# Carries ./dev on inside the root.
enterRoot() {
    local command=$1 folders=("$PWD") git
    case $command in run | shell | demo) folders+=("$HOME") ;; esac
    if [[ -d ${XDG_RUNTIME_DIR-} ]]; then folders+=("$XDG_RUNTIME_DIR"); fi
    # Of a tree that git keeps beside another, the records lie in the other.
    git=$(git -c safe.directory='*' rev-parse --path-format=absolute --git-common-dir 2>/dev/null) || git=
    if [[ -d $git && $git != "$PWD"/* ]]; then folders+=("$git"); fi
    inRoot "$(id -u):$(id -g)" "${folders[@]}" -- ORRINET_INSIDE=1 bash "$PWD/dev" "$@"
}
