#!/bin/bash
# All hosts at once: rig.sh up | down | status; hosts: full dnf hostile.
# Processes that share them: rig.sh borrow PID (up, unless they are), rig.sh return PID (down, when they came up by
# borrowing and no other borrower lives). borrow ends with 3 and says why where hosts cannot be.
. "$(dirname "$0")/lib.sh"
ALL=(full dnf hostile)

# What the tests call the hosts, one in a line: ROLE USER ADDRESS PORT KEY. Only these names stand in tests.
roles() {
  printf '%s\n' "@state $STATE" "systemd ada 127.0.0.11 22 $KEYS/id_ada" "nosudo dan 127.0.0.11 22 $KEYS/id_dan" \
    "german heidi 127.0.0.11 22 $KEYS/id_dan" "tcsh tess 127.0.0.11 22 $KEYS/id_dan" "slow ada 127.0.0.21 22 $KEYS/id_ada" \
    "breakable ada 127.0.0.31 22 $KEYS/id_ada" "dnf ada 127.0.0.12 22 $KEYS/id_ada" "busybox ada 127.0.0.13 22 $KEYS/id_ada" \
    "hostile ada 127.0.0.14 22 $KEYS/id_ada" >"$1"
}
up() { local h; for h in "${ALL[@]}"; do "$RIG/$h.sh" up >/dev/null; done; roles "$STATE/roles"; }
down() { local h; rm -f "$STATE/roles" "$STATE/borrowed"; for h in "${ALL[@]}"; do "$RIG/$h.sh" down; done; }
status() { local h; for h in "${ALL[@]}"; do "$RIG/$h.sh" status || true; done; }

borrowers() { # the living ones; the dead are forgotten
  local f; for f in "$STATE"/borrower.*; do [ -e "$f" ] || continue; if recalled "$f" >/dev/null; then echo "$f"; else rm -f "$f"; fi; done; }
others_rig() { # the rig that has the addresses, if it is not this one: 'CACHE STATE', as its mount tells
  pid_of full >/dev/null || sed -nE 's|^rig-full .*lowerdir=([^,]*)/full,upperdir=([^,]*)/full/upper,.*|\1 \2|p' /proc/mounts | grep . ; }
borrow() {
  local other cache state
  [ "$(id -u)" = 0 ] || { say 'hosts need root'; exit 3; }
  unshare --mount --net true 2>/dev/null || { say 'hosts need namespaces, which are not allowed here'; exit 3; }
  if other=$(others_rig); then
    read -r cache state <<<"$other"
    say "the hosts of another rig ($state) are up: they are used, and left as they are"
    local mine=$STATE; STATE=$state KEYS=$cache/keys; roles "$mine/roles"; return; fi
  remember "$STATE/borrower.$1" "$1"
  if [ -e "$STATE/roles" ] && pid_of full >/dev/null && pid_of dnf >/dev/null && pid_of plain >/dev/null; then say 'the hosts are up already'; return; fi
  touch "$STATE/borrowed"; up
}
give_back() {
  rm -f "$STATE/borrower.$1"
  if [ ! -e "$STATE/borrowed" ]; then pid_of full >/dev/null || rm -f "$STATE/roles"; return; fi
  if [ -n "$(borrowers)" ]; then say 'the hosts stay up for another borrower'; return; fi
  down
}

exec 9>"$STATE/lock"
case ${1-} in
  up|down) flock 9; "$1" 9>&-;;
  status) status;;
  borrow) flock 9; borrow "${2:?PID}" 9>&-;;
  return) flock 9; give_back "${2:?PID}" 9>&-;;
  *) die "usage: rig.sh up | down | status | borrow PID | return PID";;
esac
