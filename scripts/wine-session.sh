#!/usr/bin/env bash
# Runs Windows executables of the cross build inside the Debian 13 root (Wine 10, lavapipe, Xvfb).
#
#   wine-session.sh start DIR...   mount the root's file systems and DIR... (same absolute paths), start Xvfb on a
#                                  free display, start a persistent wineserver and warm it up
#   wine-session.sh exec PROG ARGS run PROG under Wine in the current directory (the CTest emulator); starts a
#                                  session on the fly when none is running, so a single test also works by hand
#   wine-session.sh stop [DIR]     drop DIR's hold on the session; the last holder stops Wine and Xvfb and
#                                  unmounts everything this script mounted
# Several build trees (or developers) may hold one session at once: each start DIR registers a holder, and only
# the stop of the last holder tears the session down. start and stop serialise on a lock file.
#   wine-session.sh mount-base | umount-base | boot-prefix   (used by provision.sh)
# With LUMEX_X_DISPLAY set (":0"), a session that starts uses that X display instead of starting Xvfb.
#
# Session state lives in $ROOT/run/lumex-session: the display number and the list of mounts to undo.
set -euo pipefail

CACHE=${LUMEX_CACHE:-/var/cache/lumex}
ROOT=$CACHE/trixie
STATE=$ROOT/run/lumex-session
PREFIX=/opt/wineprefix
HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
REPO=$(cd "$HERE/.." && pwd)

die() { printf '[wine-session] %s\n' "$*" >&2; exit 1; }
{ [ -e "$ROOT/usr/bin/wine" ] || [ -L "$ROOT/usr/bin/wine" ]; } || [ "${1:-}" = mount-base ] || [ "${1:-}" = umount-base ] \
  || die "no Wine root at $ROOT: run scripts/provision.sh windows first"

# On a host whose / is a shared mount, a plain bind would propagate back: use rbind + rslave there.
if findmnt -no PROPAGATION / 2>/dev/null | grep -q shared; then BIND=(--rbind); SLAVE=1; else BIND=(--bind); SLAVE=0; fi

mnt() { # mnt TARGET mount-args...
  local t=$1; shift
  mountpoint -q "$t" && return 0
  mkdir -p "$t"
  mount "$@" "$t"
  [ $SLAVE = 1 ] && mount --make-rslave "$t" 2>/dev/null || true
}

mount_base() {
  mnt "$ROOT/proc" -t proc proc
  mnt "$ROOT/sys" -t sysfs sysfs
  mnt "$ROOT/dev" "${BIND[@]}" /dev
  mnt "$ROOT/dev/pts" -t devpts -o newinstance,ptmxmode=0666 devpts
  mnt "$ROOT/dev/shm" -t tmpfs tmpfs
}

umount_under() { # unmount everything at or below $1, deepest first
  local p
  findmnt -rn -o TARGET | awk -v r="$1" 'index($0, r) == 1' | sort -r | while read -r p; do
    umount -l "$p" 2>/dev/null || true
  done
}

umount_base() {
  for p in dev/shm dev/pts dev sys proc; do
    mountpoint -q "$ROOT/$p" && umount -l "$ROOT/$p" 2>/dev/null || true
  done
}

in_root() { # in_root DISPLAY cmd...
  local d=$1; shift
  # fd 9 is the session lock: daemons started here (wineserver) must not inherit it.
  chroot "$ROOT" env -i HOME=/root USER=root PATH=/usr/local/bin:/usr/bin:/bin \
    WINEPREFIX=$PREFIX WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" DISPLAY=":$d" \
    VKD3D_CAPS_OVERRIDE=feature_level=12.1 TZ="${TZ:-UTC}" "$@" 9>&-
}

start_xvfb() { # prints the display number
  local f=$ROOT/run/lumex-xdisplay
  mkdir -p "$ROOT/run" "$ROOT/tmp/.X11-unix"
  chmod 1777 "$ROOT/tmp/.X11-unix"
  rm -f "$f"
  # -displayfd picks a display number that is free machine-wide (abstract sockets are shared across roots).
  chroot "$ROOT" sh -c 'exec Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>/run/lumex-xdisplay' \
    >/dev/null 2>&1 9>&- &
  echo $! >"$ROOT/run/lumex-xvfb.pid"
  for _ in $(seq 100); do
    [ -s "$f" ] && { tr -d '\n' <"$f"; return 0; }
    sleep 0.1
  done
  die "Xvfb did not start"
}

stop_xvfb() {
  local pf=$ROOT/run/lumex-xvfb.pid
  [ -f "$pf" ] && kill "$(cat "$pf")" 2>/dev/null || true
  rm -f "$pf" "$ROOT/run/lumex-xdisplay"
}

holder_of() { printf '%s' "$1" | tr -c 'A-Za-z0-9' '_'; }

case ${1:-} in
  start | stop)
    mkdir -p "$ROOT/run"
    exec 9>"$ROOT/run/lumex-session.lock"
    flock 9
    ;;
esac

case ${1:-} in
  mount-base) mount_base ;;
  umount-base) umount_base ;;
  boot-prefix)
    mount_base
    d=$(start_xvfb)
    in_root "$d" wineboot -u >/dev/null 2>&1 || true
    in_root "$d" wineserver -w || true
    stop_xvfb
    umount_base
    [ -f "$ROOT$PREFIX/system.reg" ] || die "the Wine prefix did not boot"
    ;;
  start)
    shift
    if [ -f "$STATE/display" ] && { [ -f "$STATE/external" ] ||
         kill -0 "$(cat "$ROOT/run/lumex-xvfb.pid" 2>/dev/null || echo 0)" 2>/dev/null; }; then
      d=$(cat "$STATE/display")
    else
      mount_base
      mkdir -p "$STATE"
      if [ -n "${LUMEX_X_DISPLAY:-}" ]; then
        # A real display instead of Xvfb (an interactive demo): X's abstract socket is shared with the root, the
        # cookie is copied in.
        d=${LUMEX_X_DISPLAY#*:}
        d=${d%%.*}
        touch "$STATE/external"
        xauth=${XAUTHORITY:-${HOME:-/root}/.Xauthority}
        [ -f "$xauth" ] && cp "$xauth" "$ROOT/root/.Xauthority"
      else
        d=$(start_xvfb)
      fi
      echo "$d" >"$STATE/display"
    fi
    for dir in "$REPO" "$@"; do
      dir=$(cd "$dir" && pwd)
      case $dir in "$REPO"/*) [ "$dir" != "$REPO" ] && continue ;; esac
      mnt "$ROOT$dir" "${BIND[@]}" "$dir"
      grep -qxF "$dir" "$STATE/mounts" 2>/dev/null || echo "$dir" >>"$STATE/mounts"
    done
    mkdir -p "$STATE/holders"
    touch "$STATE/holders/$(holder_of "${1:-$PWD}")"
    # A persistent wineserver and one warm-up start, or Wine's services keep CTest's pipes open per test.
    in_root "$d" wineserver -p >/dev/null 2>&1 || true
    in_root "$d" wine cmd /c exit >/dev/null 2>&1 || true
    ;;
  exec)
    shift
    # Run by hand without a session: start one for this folder (stop it with "stop $PWD").
    [ -f "$STATE/display" ] || "$0" start "$PWD" >/dev/null
    d=$(cat "$STATE/display")
    in_root "$d" sh -c 'cd "$1" && shift && exec wine "$@"' sh "$PWD" "$@"
    ;;
  stop)
    rm -f "$STATE/holders/$(holder_of "${2:-$PWD}")"
    if [ -n "$(ls -A "$STATE/holders" 2>/dev/null)" ]; then
      exit 0 # another build tree still uses the session
    fi
    if [ -f "$STATE/display" ]; then
      d=$(cat "$STATE/display")
      in_root "$d" wineserver -k >/dev/null 2>&1 || true
      sleep 0.2
    fi
    stop_xvfb
    if [ -f "$STATE/mounts" ]; then
      while read -r dir; do umount_under "$ROOT$dir"; done <"$STATE/mounts"
    fi
    rm -rf "$STATE"
    umount_base
    ;;
  *) die "usage: $0 start DIR... | exec PROG ARGS... | stop" ;;
esac
