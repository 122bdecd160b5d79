#!/usr/bin/env bash
# Uses the packages as a person would, in the fresh Debian root that ./dev package --try makes: as root installs them,
# as a user enters a persona in the window, runs the example survey through the bridge and reports on it, as root
# removes them. Prints a line for each thing that was seen; ends with an error at the first that is not as it should be.
# The folder of this script has the packages, the endpoint orrinet-standin and the example survey demo.ormt.
set -euo pipefail

cd -- "$(dirname -- "${BASH_SOURCE[0]}")"
export DEBIAN_FRONTEND=noninteractive
unset DISPLAY WAYLAND_DISPLAY XAUTHORITY XDG_RUNTIME_DIR
readonly packages=(orrinet orrinet-tools)
readonly home=/home/visitor

seen() { printf '%s\n' "$*"; }
wrong() {
    printf 'tour: %s\n' "$*" >&2
    tail -n 5 ./*.log >&2 || true
    exit 1
}
is() { if [[ $1 != "$2" ]]; then wrong "$3: '$1', not '$2'"; fi; }

# Before a command: as the user, in the user's own folder.
readonly visitor=(runuser -u visitor -- env --chdir="$home" HOME="$home")

# Until a command succeeds, for three minutes at most.
await() {
    local what=$1 end=$((SECONDS + 180))
    shift
    until "$@" >/dev/null 2>&1; do
        if ((SECONDS > end)); then wrong "waited in vain for $what"; fi
        sleep 0.1
    done
}

# --- installing ------------------------------------------------------------------------------------------------

# All that is there but what belongs to users and to the machine, and the index of the manual pages, which is made anew
# whenever any have changed: kind, rights, owner and content. Of /var, where the package manager keeps its books, no
# content.
listing() {
    find / \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /run -o -path /home -o -path /tour \
        -o -path /var/cache/man \) -prune \
        -o -printf '%p %y %m %u:%g %l\n' | sort
    find /etc /usr /opt /root /srv -type f ! -path /etc/resolv.conf -exec sha256sum {} + | sort -k 2
}

satisfied() {
    local package
    apt-get update
    for package in ./*.deb; do
        apt-get satisfy -y --no-install-recommends "$(dpkg-deb --field "$package" Depends)"
    done
}

install_packages() {
    satisfied >apt.log
    useradd --create-home visitor
    listing >before
    apt-get install -y --no-install-recommends ./*.deb >>apt.log
    is "$(dpkg --verify "${packages[@]}")" '' 'files that are not as packed'
    seen "installed: $(dpkg-query -W -f '${Package} ${Version}  ' "${packages[@]}")"
}

purge_packages() {
    apt-get purge -y "${packages[@]}" >>apt.log
    listing >after
    diff before after || wrong 'something is left, or was changed'
    seen "removed: nothing is left outside the user's own folder, and nothing was changed"
}

# --- the window ------------------------------------------------------------------------------------------------

screen() {
    "${visitor[@]}" Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>display 2>/dev/null &
    ended+=($!)
    await 'a display' test -s display
    DISPLAY=:$(<display)
    export DISPLAY
    "${visitor[@]}" openbox >/dev/null 2>&1 &
    ended+=($!)
    await 'a window manager' manages_windows
}

# A window that is opened while it starts may never be shown. xprop succeeds whether there is such a property or not.
manages_windows() { xprop -root _NET_SUPPORTED | grep -q _NET_ACTIVE_WINDOW; }

# open COMMAND: starts a program with a window, leaves its process in $process and its window in $window.
open() {
    "${visitor[@]}" "$1" >"$1.log" 2>&1 &
    starter=$!
    await "the window of $1" xdotool search --onlyvisible --classname "^$1\$"
    window=$(xdotool search --onlyvisible --classname "^$1\$" | head -n 1)
    process=$(xdotool getwindowpid "$window")
    is "$(readlink "/proc/$process/exe")" "/usr/bin/$1" 'the program of the window'
    is "$(stat -c %U "/proc/$process")" visitor 'the user of the program'
    xdotool windowactivate --sync "$window"
}

in_front() { [[ $(xdotool getactivewindow) == "$window" ]]; }
dialog_in_front() { ! in_front && [[ $(xdotool getwindowpid "$(xdotool getactivewindow)") == "$process" ]]; }

# size WIDTH|HEIGHT WINDOW
size() { xdotool getwindowgeometry --shell "$2" | sed -n "s/^$1=//p"; }

# from_file_menu KEY ...: opens the menu File, goes to an entry and takes it.
from_file_menu() { xdotool key --delay 100 alt+f "$@" Return; }

quit() {
    from_file_menu Up
    wait "$starter" || wrong "the program ended with status $?"
}

enter_persona() {
    local dialog
    open orrinet
    seen "started: a window of class $(xprop -id "$window" WM_CLASS | sed 's/.*= //')"
    xdotool mousemove --window "$window" 45 "$(($(size HEIGHT "$window") - 24))" click 1
    await 'the editor of a persona' dialog_in_front
    dialog=$(xdotool getactivewindow)
    xdotool key Tab type --delay 20 'You roll down hills.'
    xdotool mousemove --window "$dialog" "$(($(size WIDTH "$dialog") - 60))" 20 click 1 type --delay 20 'Pebble'
    xdotool key Return
    await 'the main window' in_front
    from_file_menu Down Down Down
    await 'the file dialog' dialog_in_front
    xdotool type --delay 20 "$home/typed.ormt"
    xdotool key Return
    await 'the main window' in_front
    quit
    is "$(sqlite3 "$home/typed.ormt" 'SELECT name, attributes FROM personas')" 'Pebble|You roll down hills.' \
        'the persona in the file'
    is "$("${visitor[@]}" gio info -a standard::content-type typed.ormt | sed -n 's/.*content-type: //p')" \
        application/x-orrinet-project 'the type of the file'
    seen 'entered: a persona, saved in typed.ormt, which is known as application/x-orrinet-project'
}

open_bridge() {
    open "$(sed -n 's/^Exec=//p' /usr/share/applications/orrinet-bridge.desktop)"
    quit
    seen 'started: the window of orrinet-bridge by its desktop entry'
}

# --- the tools -------------------------------------------------------------------------------------------------

run_example() {
    ./orrinet-standin >address &
    ended+=($!)
    await 'the endpoint' test -s address
    cp demo.ormt "$home/example.ormt"
    chown visitor: "$home/example.ormt"
    sqlite3 "$home/example.ormt" 'DELETE FROM responses'
    "${visitor[@]}" orrinet-bridge --to "$(<address)" --run example.ormt --save answered.ormt --jobs 4 --quiet
    is "$(sqlite3 "$home/answered.ormt" 'SELECT COUNT(*) FROM responses')" 120 'the answers'
    seen "run: 120 answers through orrinet-bridge, from an endpoint as strict as the hosted one"
}

report_example() {
    "${visitor[@]}" orrinet-study check answered.ormt --bridge >/dev/null
    "${visitor[@]}" orrinet-study export answered.ormt --to csv --out tables >/dev/null
    "${visitor[@]}" orrinet-study report answered.ormt --out report.html >/dev/null
    "${visitor[@]}" orrinet-study report answered.ormt --out report.pdf >/dev/null
    is "$(tail -c 8 "$home/report.html" | tr -d '\n' | tail -c 7)" '</html>' 'the end of the report'
    is "$(head -c 5 "$home/report.pdf")" '%PDF-' 'the beginning of the report'
    seen "reported: $(cd "$home" && du -b report.html report.pdf | awk '{ printf "%s %d bytes  ", $2, $1 }')"
}

read_manuals() {
    local page
    for page in orrinet orrinet-bridge orrinet-study; do
        is "$("${visitor[@]}" man "$page" 2>&1 | grep -cE '^(NAME|SEE ALSO)')" 2 "the manual page of $page"
    done
    seen 'read: the manual pages'
}

complete_options() {
    local offered
    # shellcheck disable=SC2016 # for the shell within
    offered=$("${visitor[@]}" bash -ic 'source /usr/share/bash-completion/bash_completion
        _comp_load -- "$1" 2>/dev/null || _completion_loader "$1"
        COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
        $(complete -p "$1" | sed "s/.*-F \([^ ]*\) .*/\1/") "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
        echo "${COMPREPLY[@]}"' bash "$@" 2>/dev/null)
    echo "$offered"
}

complete_commands() {
    is "$(complete_options orrinet-bridge --re)" '--retries --record --replay' 'what is offered'
    is "$(complete_options orrinet-bridge --format json)" 'json_schema json_object' 'what is offered'
    is "$(complete_options orrinet-study r)" 'report' 'what is offered'
    is "$(complete_options orrinet-study export --fo)" '--force' 'what is offered'
    seen 'completed: options and commands in bash'
}

# ---------------------------------------------------------------------------------------------------------------

ended=()
# Only what was started here.
trap 'if ((${#ended[@]} > 0)); then kill "${ended[@]}" 2>/dev/null || true; fi' EXIT

install_packages
screen
enter_persona
open_bridge
run_example
report_example
read_manuals
complete_commands
purge_packages
