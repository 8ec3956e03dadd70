# Sourced by the rig's scripts: processes are named by 'PID STARTTIME', so a pid that was used again is never hit.

# born PID: its start time in clock ticks since boot (proc(5), stat, field 22); fails for a dead or ended one.
born() {
    local stat
    stat=$(cat "/proc/$1/stat" 2>/dev/null) || return 1
    stat=${stat##*) }
    # shellcheck disable=SC2086  # split into fields on purpose
    set -- $stat
    [ "$1" != Z ] && echo "${20}"
}

# remember FILE PID; recalled FILE: the pid that the file names, if that process still lives.
remember() { echo "$2 $(born "$2")" >"$1"; }
recalled() {
    local pid start
    read -r pid start 2>/dev/null <"$1" && [ "$(born "$pid")" = "$start" ] && echo "$pid"
}

# tree PID: it and all below it, parents first.
tree() {
    local child
    echo "$1"
    for child in $(cat /proc/"$1"/task/*/children 2>/dev/null); do tree "$child"; done
}

# await SECONDS COMMAND...: runs it every twentieth of a second until it succeeds; fails when the time is over.
await() {
    local left=$(($1 * 20))
    shift
    until "$@"; do
        [ $((left -= 1)) -gt 0 ] || return 1
        sleep 0.05
    done
}
