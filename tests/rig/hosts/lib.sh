# Shared by every script here: where things lie, processes, namespaces, links, the wait for ssh.
# What is built once lies in $CACHE; what a running rig writes lies in $STATE.
set -euo pipefail
RIG=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/rig/process.sh
. "$RIG/../process.sh"
CACHE=${RIG_CACHE:-/var/cache/tarnwell-rig}
STATE=${RIG_STATE:-/var/lib/tarnwell-rig}
KEYS=$CACHE/keys
export LC_ALL=C.UTF-8
mkdir -p "$CACHE" "$STATE"

say() { printf 'rig: %s\n' "$*" >&2; }
die() { say "$*"; exit 1; }

need() { # need COMMAND=PACKAGE...  installs the Debian packages whose commands are missing
  local pair missing=()
  for pair; do [ -n "$(type -P "${pair%%=*}")" ] || missing+=("${pair#*=}"); done
  [ ${#missing[@]} -eq 0 ] && return
  say "installing ${missing[*]}"
  apt-get -qq update && DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null
}

# --- processes, by pid file in $STATE
start() { # start NAME COMMAND...
  local name=$1; shift
  setsid "$@" >"$STATE/$name.log" 2>&1 </dev/null &
  remember "$STATE/$name.pid" $!
}
pid_of() { recalled "$STATE/$1.pid"; }
stop() { # stop NAME [SIGNAL] [SECONDS]: the signal, then SIGKILL when the time is over
  local p i; p=$(pid_of "$1") || { rm -f "$STATE/$1.pid"; return 0; }
  kill "-${2:-TERM}" "$p" 2>/dev/null || true
  for ((i = 0; i < ${3:-5} * 10; i++)); do pid_of "$1" >/dev/null || break; sleep 0.1; done
  if pid_of "$1" >/dev/null; then kill -KILL "$p"; sleep 0.2; fi
  rm -f "$STATE/$1.pid"
}
host_pid() { # the process that is PID 1 inside host NAME
  local p q; p=$(pid_of "$1") || return
  for q in $(tree "$p"); do [ "$(awk '/^NSpid/{print (NF > 2 && $NF == 1)}' "/proc/$q/status" 2>/dev/null)" = 1 ] && echo "$q" && return; done
}
as_root() { ssh -i "$KEYS/id_ada" -o BatchMode=yes -o UserKnownHostsFile=/dev/null -o StrictHostKeyChecking=no -o LogLevel=ERROR "root@$1" "${@:2}"; } # as_root IP COMMAND...
inside() { local h; h=$(host_pid "$1") || die "$1 is not up"; shift; nsenter -t "$h" -a -r -w -- "$@"; } # a command as root in a host

# --- network: namespace rig-net holds a bridge; each host is a namespace of its own on it.
# Nothing of this is in the machine's own namespace: it is reached through link.py on 127.0.0.x only.
net_up() {
  [ -e /run/netns/rig-net ] && return
  ip netns add rig-net
  ip -n rig-net link set lo up
  ip -n rig-net link add br0 type bridge
  ip -n rig-net addr add 198.51.100.1/24 dev br0
  ip -n rig-net link set br0 up
}
netns_up() { # netns_up NAME LAST_BYTE
  [ -e "/run/netns/rig-$1" ] && return
  net_up
  ip netns add "rig-$1"
  ip -n rig-net link add "$1" type veth peer name eth0 netns "rig-$1"
  ip -n rig-net link set "$1" master br0 up
  ip -n "rig-$1" link set lo up
  ip -n "rig-$1" addr add "198.51.100.$2/24" dev eth0
  ip -n "rig-$1" link set eth0 up
}
netns_down() {
  ip -n rig-net link del "$1" 2>/dev/null || true
  ip netns del "rig-$1" 2>/dev/null || true
  [ -z "$(ip -n rig-net -o link show type veth 2>/dev/null)" ] && ip netns del rig-net 2>/dev/null || true
}
link_up() { # link_up NAME LISTEN_IP TARGET [key=value...]: 127.0.0.x ports 22 and 2222 -> TARGET ip:port
  pid_of "link-$1" >/dev/null && return
  printf '%s\n' "${@:4}" >"$STATE/link-$1.ctl"
  start "link-$1" /usr/bin/python3 "$RIG/link.py" rig-net "$2:22,$2:2222" "$3" "$STATE/link-$1.ctl"
}

# --- roots: the built root is the read-only lower layer, so a fresh host costs one mount
root_up() { # root_up NAME CACHED_ROOT
  mountpoint -q "$STATE/$1/root" && return
  rm -rf "${STATE:?}/$1"; mkdir -p "$STATE/$1"/{root,upper,work}
  mount -t overlay -o "redirect_dir=on,lowerdir=$CACHE/$2,upperdir=$STATE/$1/upper,workdir=$STATE/$1/work" "rig-$1" "$STATE/$1/root"
}
root_down() {
  mountpoint -q "$STATE/$1/root" && umount "$STATE/$1/root"
  rm -rf "${STATE:?}/$1"
}

# --- a host with systemd as PID 1
cgroup_enter() { # cgroup_enter NAME PID: a v1 cgroup of its own below the present one, so two hosts do not mix
  local line lines ctl path dir f
  mapfile -t lines </proc/self/cgroup # read whole first: the moves below change it
  for line in "${lines[@]}"; do
    ctl=${line#*:}; path=${ctl#*:}; ctl=${ctl%%:*}; ctl=${ctl#name=}
    [ -n "$ctl" ] || ctl=unified
    mountpoint -q "/sys/fs/cgroup/$ctl" || continue
    dir=/sys/fs/cgroup/$ctl${path%/}/rig-$1
    mkdir -p "$dir"
    [ "$ctl" = cpuset ] && for f in cpus mems; do cat "${dir%/*}/cpuset.$f" >"$dir/cpuset.$f"; done
    echo "$2" >"$dir/cgroup.procs"
  done
}
cgroup_leave() { # the dead need a moment to leave
  local i; for i in 1 2 3 4 5 6 7 8 9 10; do
    find /sys/fs/cgroup/ -depth -type d -path "*/rig-$1*" -exec rmdir {} \; 2>/dev/null || true
    [ -z "$(find /sys/fs/cgroup/ -type d -name "rig-$1" -print -quit)" ] && return; sleep 0.2
  done; say "cgroups of $1 are left"
}
nspawn_up() { # nspawn_up NAME EXTRA_ARGS...
  local name=$1; shift
  ( export SYSTEMD_NSPAWN_UNIFIED_HIERARCHY=0
    cgroup_enter "$name" "$BASHPID"
    start "$name" systemd-nspawn --quiet --register=no --keep-unit --console=pipe \
      --machine="$name" --directory="$STATE/$name/root" --network-namespace-path="/run/netns/rig-$name" \
      --capability=all --system-call-filter='add_key keyctl bpf perf_event_open' \
      --resolv-conf=off --timezone=off --link-journal=no "$@" /usr/local/sbin/rig-init )
}
nspawn_down() { # its PID 1 is killed: all in its pid namespace goes with it, and nspawn ends by itself
  local h f; h=$(host_pid "$1") && kill -KILL "$h"
  for f in $(find /sys/fs/cgroup/freezer/rig-"$1" -name freezer.state 2>/dev/null); do echo THAWED >"$f" 2>/dev/null || true; done # a frozen (paused) process cannot die
  stop "$1" TERM; rm -rf "/run/systemd/nspawn/propagate/$1"; cgroup_leave "$1"
}
wait_booted() { local i; for ((i = 0; i < 600; i++)); do
  case $(inside "$1" systemctl is-system-running 2>/dev/null) in running|degraded) return 0;; esac; sleep 0.1; done; die "$1 did not finish booting: $STATE/$1.log"; }

# --- ssh
wait_ssh() { # wait_ssh IP [SECONDS]: until an ssh server's greeting comes through
  local i; for ((i = 0; i < ${2:-60} * 5; i++)); do
    [ "$(timeout 5 bash -c "exec 3<>/dev/tcp/$1/22; head -c4 <&3" 2>/dev/null)" = SSH- ] && return; sleep 0.2; done
  die "no ssh greeting from $1"
}
ssh_line() { echo "ssh -i $KEYS/$1 -o UserKnownHostsFile=$STATE/known_hosts -o StrictHostKeyChecking=accept-new $2@$3"; }
