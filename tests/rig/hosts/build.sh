#!/bin/bash
# Builds what the hosts are made of, once, into $CACHE: build.sh [full] [dnf] [bare]; build.sh clean
. "$(dirname "$0")/lib.sh"
# This machine's own sources of bookworm; without any, mmdebstrap takes Debian's usual ones.
mapfile -t MIRROR < <(apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) main' 'Created-By: Packages' 'Component: main' 2>/dev/null | grep -E '^deb \S*debian\S* bookworm(-updates|-security)? ' | sort -u)
HOST=systemd-sysv,udev,dbus,libpam-systemd,openssh-server,sudo,cron,rsyslog,logrotate,procps,iproute2,less,locales,tcsh,acl,busybox-static,ca-certificates,iptables,podman,crun,file,psmisc
FULL=$HOST,docker.io,sysstat,iputils-ping,net-tools,lsof,vim-tiny,nano,htop,tmux,ncurses-term,tar,xz-utils,zip,unzip,bsdextrautils,bash-completion,apt-utils,gnupg,kmod,socat
DNF=$HOST,dnf,rpm,createrepo-c

keys() {
  [ -e "$KEYS/bob.password" ] && return
  mkdir -p "$KEYS"; chmod 700 "$KEYS"
  head -c 9 /dev/urandom | base64 | tr '+/' 'x' >"$KEYS/cleo.passphrase"
  for u in ada dan cleo; do
    ssh-keygen -q -t ed25519 -C "$u@rig" -N "$([ $u = cleo ] && cat "$KEYS/cleo.passphrase")" -f "$KEYS/id_$u" </dev/null; done
  printf 'b0b $%s "x' "$(head -c 9 /dev/urandom | base64 | tr '+/' 'x')" >"$KEYS/bob.password" # with a blank, a dollar and a quote on purpose
}
debian() { # debian NAME PACKAGES SCRIPT
  local tmp=$CACHE/$1.new; rm -rf "$tmp"
  mmdebstrap --quiet --variant=minbase --format=directory --include="$2" \
    --customize-hook='mkdir -p "$1/root/keys"' --customize-hook="cp '$KEYS'/*.pub '$KEYS/bob.password' \"\$1/root/keys/\"; cp '$RIG'/root/*.sh \"\$1/root/\"" \
    --customize-hook="chroot \"\$1\" bash /root/$3" --skip=cleanup/apt/lists bookworm "$tmp" "${MIRROR[@]}"
  rm -f "$tmp/etc/resolv.conf" "$tmp/etc/machine-id"; touch "$tmp/etc/machine-id" "$tmp/etc/resolv.conf"
}
build_full() { debian full "$FULL" full.sh; mv "$CACHE/full.new" "$CACHE/full"; }
build_dnf() {
  debian dnf "$DNF" dnf.sh
  local r=$CACHE/dnf.new; rm -rf "$r"/usr/bin/{apt*,dpkg*,deb*} "$r"/usr/sbin/{dpkg*,deb*} "$r"/{etc/apt,etc/dpkg,var/lib/apt,var/lib/dpkg,var/cache/apt,usr/lib/apt,usr/lib/dpkg,etc/cron.daily/{apt*,dpkg}}
  rm -f "$r"/lib/systemd/system/{apt,dpkg}* "$r"/etc/systemd/system/timers.target.wants/{apt,dpkg}*
  mv "$r" "$CACHE/dnf"
}
build_bare() { # busybox and dropbear, nothing more
  need dropbear=dropbear-bin busybox=busybox-static
  local r=$CACHE/bare.new f; rm -rf "$r"; mkdir -p "$r"/{bin,sbin,usr/bin,usr/sbin,etc/dropbear,root/.ssh,home/ada/.ssh,proc,sys,dev/pts,tmp,var/log,var/run}
  cp /bin/busybox "$r/bin/"; chroot "$r" /bin/busybox --install -s
  for f in ss lsblk crontab systemctl sudo; do find "$r" -name $f -delete; done
  for f in /usr/sbin/dropbear $(ldd /usr/sbin/dropbear | grep -o '/[^ ]*'); do mkdir -p "$r${f%/*}"; cp -L "$f" "$r$f"; done
  printf '%s\n' 'root:x:0:0:root:/root:/bin/sh' 'ada:x:1000:1000:Ada:/home/ada:/bin/sh' >"$r/etc/passwd"; printf 'root:x:0:\nada:x:1000:\n' >"$r/etc/group"
  printf 'root:*:19000::::::\nada:*:19000::::::\n' >"$r/etc/shadow"; echo bare >"$r/etc/hostname"
  for f in root home/ada; do cp "$KEYS/id_ada.pub" "$r/$f/.ssh/authorized_keys"; chmod 700 "$r/$f" "$r/$f/.ssh"; done; chown -R 1000:1000 "$r/home/ada"; chmod 1777 "$r/tmp"
  mv "$r" "$CACHE/bare"
}

[ "${1-}" = clean ] && { grep -q "lowerdir=$CACHE/" /proc/mounts && die "hosts are up"; rm -rf "${CACHE:?}"; exit; }
need mmdebstrap=mmdebstrap ssh-keygen=openssh-client
keys
stamp() { # what a root was made from: made by other scripts or for other keys, it is built again
  local of=(common.sh); case $1 in full) of+=(full.sh);; dnf) of+=(dnf.sh);; esac
  cat "$RIG/build.sh" "${of[@]/#/$RIG/root/}" "$KEYS"/*.pub "$KEYS/bob.password" | sha256sum; }
for what in "${@:-full}"; do
  [ "$(cat "$CACHE/$what.stamp" 2>/dev/null)" = "$(stamp "$what")" ] && continue
  grep -q "lowerdir=$CACHE/$what," /proc/mounts && { say "$what is out of date, but in use"; continue; }
  say "building $what"; t=$SECONDS
  rm -rf "${CACHE:?}/$what"; "build_$what"; stamp "$what" >"$CACHE/$what.stamp"
  say "built $what in $((SECONDS - t)) s, $(du -sh "$CACHE/$what" | cut -f1)"
done
