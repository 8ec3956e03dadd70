#!/bin/bash
# A real sshd for tests and the demo, on a free port of 127.0.0.1, with everything it needs in one private directory.
#
#   up DIR [--accounts] [--owner PID]
#                   makes DIR (0700) and starts the daemon; prints the lines of `env`. --accounts (root only) creates
#                   three accounts for the run. With an owner the daemon goes down by itself when that process ends.
#   env DIR         KEY=VALUE lines: PORT, USER, PID, DIR, the paths KEY, PASSPHRASE_KEY, PASSPHRASE_FILE,
#                   KNOWN_HOSTS, LOG; with accounts PASSWORD_ACCOUNT, PASSWORD_FILE (its first password),
#                   SUDO_ACCOUNT (sudo without a password) and PLAIN_ACCOUNT (no sudo); both take KEY
#   down DIR        ends the daemon, its sessions and its agent, removes the accounts and DIR; also after a crash
#   rekey DIR       another host key on the same port; known_hosts keeps the old one until `trust DIR`
#   hang DIR [all]  stops the daemon (all: its sessions too); new connections get no greeting. resume DIR: goes on
#   drop DIR        kills every session in the middle of what it does; the daemon stays
#   logins DIR      how many logins it has accepted
#   agent DIR       starts an ssh-agent with a key that is in no file; prints AGENT=path of its socket
#   password DIR    reads a new password for PASSWORD_ACCOUNT from standard input
#
# It runs as the present user, who logs in with KEY. As another user than root it knows no passwords.
set -euo pipefail
export LC_ALL=C.UTF-8
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=tests/rig/process.sh
. "$here/process.sh"

die() { printf 'sshd.sh: %s\n' "$*" >&2; exit 1; }
is_root() { [ "$(id -u)" = 0 ]; }
is_ours() { [ -f "$1/rig" ]; }
signal() { # signal NAME PID...
    local name=$1 process
    shift
    for process; do kill "-$name" "$process" 2>/dev/null || true; done
}
daemon() { recalled "$dir/sshd.pid" || die "no sshd is running for $dir"; }

# --- accounts (root) --------------------------------------------------------------------------------------------
ACCOUNT_LOCK=/run/lock/tarnwell-rig-accounts # useradd gives up when another one runs

make_account() { # make_account NAME: with an empty home that takes KEY; '*' is no password, yet not locked
    useradd --create-home --skel /var/empty --shell /bin/bash --password '*' "$1"
    local home
    home=$(getent passwd "$1" | cut -d: -f6)
    install -d -m 700 -o "$1" -g "$1" "$home/.ssh"
    install -m 600 -o "$1" -g "$1" "$dir/authorized_keys" "$home/.ssh/rig_keys"
    install -m 644 -o "$1" -g "$1" /dev/null "$home/.bashrc" # bash under sshd reads it for every command
}

make_accounts() {
    command -v sudo >/dev/null || die "sudo is missing (./dev setup)"
    local base
    base=tw$((RANDOM % 9))$(printf %05d $((RANDOM * 3)))
    printf '%s\n' "${base}p" "${base}s" "${base}n" >"$dir/accounts" # before they exist: down removes what it can
    (
        flock 9
        make_account "${base}p"
        make_account "${base}s"
        make_account "${base}n"
    ) 9>"$ACCOUNT_LOCK"
    (umask 337 && echo "${base}s ALL=(ALL) NOPASSWD: ALL" >"/etc/sudoers.d/${base}s")
    printf 'PASSWORD_ACCOUNT=%s\nPASSWORD_FILE=%s\nSUDO_ACCOUNT=%s\nPLAIN_ACCOUNT=%s\n' \
        "${base}p" "$dir/password" "${base}s" "${base}n" >>"$dir/env"
    head -c 12 /dev/urandom | base64 | tr -d '\n' >"$dir/password"
    password <"$dir/password"
}

accounts() { cat "$dir/accounts" 2>/dev/null || true; }

remove_accounts() { # remove_accounts NAME...
    local name uid left
    for name; do
        uid=$(id -u "$name" 2>/dev/null) || continue
        # What its sessions left behind; nothing but our sshd could start a process of this account.
        mapfile -t left < <(find /proc -maxdepth 1 -name '[0-9]*' -uid "$uid" -printf '%f\n' 2>/dev/null)
        signal KILL "${left[@]}"
        rm -f "/etc/sudoers.d/$name"
        (flock 9 && userdel --force --remove "$name" >/dev/null 2>&1) 9>"$ACCOUNT_LOCK" || true
    done
}

password() {
    local account secret
    account=$(sed -n 's/^PASSWORD_ACCOUNT=//p' "$dir/env")
    [ -n "$account" ] || die "there is no account with a password: up as root with --accounts"
    secret=$(cat)
    (flock 9 && printf '%s:%s\n' "$account" "$secret" | chpasswd) 9>"$ACCOUNT_LOCK"
}

# --- the daemon -------------------------------------------------------------------------------------------------
host_key() { rm -f "$dir"/host_key*; ssh-keygen -q -t ed25519 -N '' -C rig -f "$dir/host_key" </dev/null; }
trust() { printf '[127.0.0.1]:%s %s\n' "$port" "$(cut -d' ' -f1,2 "$dir/host_key.pub")" >"$dir/known_hosts"; }

write_config() {
    local pam=no
    # Without PAM sshd refuses a user whose password is locked, as root's is on many machines, even with a key.
    if is_root && [[ $(getent shadow root) == root:!* ]]; then pam=yes; fi
    cat >"$dir/sshd_config" <<CONFIG
ListenAddress 127.0.0.1
Port $port
HostKey $dir/host_key
AuthorizedKeysFile $dir/authorized_keys .ssh/rig_keys
PidFile none
LogLevel VERBOSE
UsePAM $pam
# DIR may lie below /tmp, which everybody can write to.
StrictModes no
UseDNS no
PermitRootLogin prohibit-password
PasswordAuthentication $(is_root && echo yes || echo no)
KbdInteractiveAuthentication no
AcceptEnv LANG LC_*
PrintMotd no
Subsystem sftp internal-sftp
# MaxSessions stays at its default of 10; the number of connections that are logging in does not.
MaxStartups 500
CONFIG
}

listening() { [ "$(grep -c '^Server listening on 127.0.0.1 port ' "$dir/log" 2>/dev/null)" -gt "$1" ]; } # more often than

try_port() { # start the daemon on $port; fails when the port is taken
    write_config
    : >"$dir/log"
    setsid /usr/sbin/sshd -D -f "$dir/sshd_config" -E "$dir/log" </dev/null >/dev/null 2>&1 &
    local pid=$!
    remember "$dir/sshd.pid" "$pid"
    up_or_gone() { listening 0 || [ -z "$(born "$pid")" ]; }
    await 20 up_or_gone && listening 0
}

up() {
    local accounts='' owner=''
    while [ $# -gt 0 ]; do
        case $1 in
            --accounts) accounts=1 ;;
            --owner) owner=$2; shift ;;
            *) die "up: no option $1" ;;
        esac
        shift
    done
    [ -z "$accounts" ] || is_root || die "accounts need root"
    [ -x /usr/sbin/sshd ] || die "/usr/sbin/sshd is missing: openssh-server (./dev setup)"
    if [ -e "$dir" ]; then is_ours "$dir" && down || rmdir "$dir" 2>/dev/null || die "$dir exists and is not ours"; fi
    (umask 077 && mkdir -p "$dir" && touch "$dir/rig")
    chmod 700 "$dir"
    trap down EXIT # until all stands
    if is_root; then mkdir -p /run/sshd; fi

    ssh-keygen -q -t ed25519 -N '' -C rig -f "$dir/id_plain" </dev/null
    ssh-keygen -q -t ed25519 -N '' -C rig -f "$dir/id_agent" </dev/null
    # shellcheck disable=SC2016  # a passphrase that no shell may touch
    printf 'pass "phrase" \\ $HOME `id` ü%s' $RANDOM >"$dir/passphrase"
    ssh-keygen -q -t ed25519 -N "$(cat "$dir/passphrase")" -C rig -f "$dir/id_passphrase" </dev/null
    cat "$dir"/id_*.pub >"$dir/authorized_keys"
    host_key

    local attempt
    for attempt in {1..20}; do # below the range that the kernel gives to outgoing connections
        port=$((20000 + RANDOM % 12000))
        ! try_port || break
        [ "$attempt" -lt 20 ] || die "no sshd on 127.0.0.1: $(tail -n 3 "$dir/log")"
    done
    trust
    cat >"$dir/env" <<ENV
DIR=$dir
PORT=$port
USER=$(id -un)
PID=$(daemon)
KEY=$dir/id_plain
PASSPHRASE_KEY=$dir/id_passphrase
PASSPHRASE_FILE=$dir/passphrase
KNOWN_HOSTS=$dir/known_hosts
LOG=$dir/log
ENV
    if [ -n "$accounts" ]; then make_accounts; fi
    if [ -n "$owner" ]; then
        local watched # read now: the background job's own expansions come later
        mapfile -t watched < <(born "$owner"; daemon; accounts)
        setsid "$0" watch "$dir" "$owner" "${watched[@]}" </dev/null >/dev/null 2>&1 &
        remember "$dir/watch.pid" $!
    fi
    trap - EXIT
    cat "$dir/env"
}

# watch OWNER STARTTIME DAEMON ACCOUNT...: down when the owner has ended; what can be found when somebody removed DIR.
watch() {
    while [ "$(born "$1")" = "$2" ] && [ -e "$dir" ]; do sleep 1; done
    # shellcheck disable=SC2046
    if [ -e "$dir" ]; then down; else signal KILL $(tree "$3") && remove_accounts "${@:4}"; fi
}

# Every process of the daemon, its sessions and what they run. Those whose daemon has died still hold the log open;
# what a session left running in the background still has the daemon's address in its environment.
everything() {
    local process
    {
        find /proc/[0-9]*/fd -maxdepth 1 -lname "$dir/log" 2>/dev/null || true
        grep -lzsE "^SSH_CONNECTION=127\.0\.0\.1 [0-9]+ 127\.0\.0\.1 $port\$" /proc/[0-9]*/environ || true
    } | cut -d/ -f3 | sort -nu | while read -r process; do tree "$process"; done
}

down() {
    is_ours "$dir" || die "$dir is not ours"
    local watcher port
    port=$(sed -n 's/^Port //p' "$dir/sshd_config" 2>/dev/null) || true
    # shellcheck disable=SC2046  # process ids
    signal KILL $(everything) $(recalled "$dir/agent.pid")
    watcher=$(recalled "$dir/watch.pid") || watcher=$$
    # shellcheck disable=SC2046
    [ "$watcher" = $$ ] || signal KILL $(tree "$watcher")
    # shellcheck disable=SC2046
    remove_accounts $(accounts)
    rm -rf "$dir"
}

rekey() {
    local before
    before=$(grep -c '^Server listening' "$dir/log")
    host_key
    kill -HUP "$(daemon)"
    await 20 listening "$before" || die "sshd did not come back: $(tail -n 3 "$dir/log")"
}

# shellcheck disable=SC2046  # process ids
hang() { signal STOP $(if [ "${1-}" = all ]; then tree "$(daemon)"; else daemon; fi); }
# shellcheck disable=SC2046
resume() { signal CONT $(tree "$(daemon)"); }
# shellcheck disable=SC2046
drop() { signal KILL $(tree "$(daemon)" | tail -n +2); }
logins() { grep -cE '^Accepted [a-z-]+ for ' "$dir/log" || true; }

agent() {
    local socket=$dir/agent
    if ! recalled "$dir/agent.pid" >/dev/null; then
        rm -f "$socket"
        setsid ssh-agent -D -a "$socket" </dev/null >/dev/null 2>&1 &
        remember "$dir/agent.pid" $!
        await 10 test -S "$socket" || die "no ssh-agent at $socket"
        SSH_AUTH_SOCK=$socket ssh-add -q "$dir/id_agent" </dev/null
        rm "$dir/id_agent"
    fi
    echo "AGENT=$socket"
}

[ $# -ge 2 ] || die "usage: sshd.sh up|env|down|rekey|trust|hang|resume|drop|logins|agent|password DIR"
command=$1 dir=$(readlink -m "$2")
shift 2
case $command in
    up|down|watch) ;;
    *) is_ours "$dir" || die "$dir is not ours"
       port=$(sed -n 's/^PORT=//p' "$dir/env") ;;
esac
case $command in
    env) cat "$dir/env" ;;
    up|down|watch|rekey|trust|hang|resume|drop|logins|agent|password) "$command" "$@" ;;
    *) die "no command $command" ;;
esac
