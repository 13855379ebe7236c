# shellcheck shell=bash
# Wine with a prefix of its own, one server that stays, and a virtual screen: sourced by the scripts that run
# Windows programs. Everything is kept in the prefix' folder, so two prefixes never meet.
# The caller has set -euo pipefail and `root`, the tree's folder.

export WINEPREFIX=${POSTMARKER_WINEPREFIX:-$root/build/wine-prefix}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
export WINEARCH=win64
# Wine takes code pages and language from it, and file names are UTF-8: the same for everybody.
export LC_ALL=C.UTF-8
# The person's screen is never taken by accident: only a caller that was told to names it here.
unset DISPLAY
readonly wine_state=$WINEPREFIX/postmarker

wine_display_works() { xdpyinfo -display "$1" >/dev/null 2>&1; }

# Runs a function while nobody else runs one under the same name. Programs that stay don't inherit the lock.
wine_locked() {
  mkdir -p "$wine_state"
  (
    flock 9
    "$2" 9>&-
  ) 9>"$wine_state/$1.lock"
}

# The number and the process of the screen that belongs to this prefix: ":97 1234".
wine_read_screen() {
  local display='' pid=''
  [ -e "$wine_state/screen" ] && read -r display pid <"$wine_state/screen" || return 1
  [ "$(cat "/proc/$pid/comm" 2>/dev/null)" = Xvfb ] && wine_display_works "$display" || return 1
  wine_screen=$display wine_screen_pid=$pid
}

# The server looks for a free number itself, so that two that start at once never get the same one.
wine_start_screen() {
  local number pid
  if wine_read_screen; then return; fi
  # Windows of a screen that is gone can't move to another one: programs and server of that time end here.
  wineserver -k 2>/dev/null || true
  : >"$wine_state/display"
  # In a session of its own, so that Ctrl-C at the terminal does not reach it.
  setsid Xvfb -displayfd 6 -screen 0 1280x1024x24 -nolisten tcp -noreset \
    </dev/null >"$wine_state/xvfb.log" 2>&1 6>"$wine_state/display" &
  pid=$!
  while kill -0 "$pid" 2>/dev/null; do
    if read -r number <"$wine_state/display" && wine_display_works ":$number"; then
      printf ':%s %s\n' "$number" "$pid" >"$wine_state/screen"
      return
    fi
    sleep 0.05
  done
  echo "wine: no virtual screen can be started; see $wine_state/xvfb.log" >&2
  return 1
}

# Which font dialogs ask for, and the fonts that fill in for letters that it lacks (Greek, Japanese).
wine_register_fonts() {
  local key='HKLM\Software\Microsoft\Windows NT\CurrentVersion' view name
  local links='DejaVuSans.ttf,DejaVu Sans\0VL-PGothic-Regular.ttf,VL PGothic'
  for view in /reg:64 /reg:32; do
    for name in 'MS Shell Dlg' 'MS Shell Dlg 2'; do
      wine reg add "$key\\FontSubstitutes" "$view" /v "$name" /d Tahoma /f
    done
    for name in Tahoma 'Tahoma Bold'; do
      wine reg add "$key\\FontLink\\SystemLink" "$view" /v "$name" /t REG_MULTI_SZ /d "$links" /f
    done
  done
}

# Windows live on a desktop of Wine's own: they get frames, and showing one does not wait two seconds for a
# window manager that is not there.
wine_register_desktop() {
  local key='HKCU\Software\Wine\Explorer'
  wine reg add "$key" /v Desktop /d Postmarker /f
  wine reg add "$key\\Desktops" /v Postmarker /d 1280x1024 /f
}

# A program that crashes says where, and ends. By default a dialog would wait for a person.
wine_register_crashes() {
  wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
}

wine_make_prefix() {
  if [ -e "$WINEPREFIX/postmarker-ready" ]; then return; fi
  # Wine's own fonts, Tahoma above all: Debian puts them where Wine 8 does not look. They must be there before
  # the first program starts, as the list of fonts is kept for the server's life.
  mkdir -p "$WINEPREFIX/drive_c/windows/Fonts"
  cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/"
  if ! { wineboot --init && wine_register_fonts && wine_register_desktop && wine_register_crashes; } \
    >"$wine_state/wineboot.log" 2>&1; then
    echo "wine: the prefix can't be made; see $wine_state/wineboot.log" >&2
    return 1
  fi
  touch "$WINEPREFIX/postmarker-ready"
}

wine_start_server() {
  wine_make_prefix
  # Says no if there is a server already. One that was killed leaves its socket behind, which this replaces.
  if wineserver -p >/dev/null 2>>"$wine_state/wineserver.log"; then
    # Wine's services and desktop come with the first program and keep its output open: not that of the caller's.
    wine wineboot </dev/null >/dev/null 2>&1
  fi
}

# The one to call: screen, prefix and server, each if it is missing. With an argument that display is used,
# otherwise the virtual screen. Any number of callers at a time.
wine_start() {
  if [ -n "${1:-}" ]; then
    export DISPLAY=$1
  else
    wine_locked screen wine_start_screen
    wine_read_screen
    export DISPLAY=$wine_screen
  fi
  if [ ! -e "$WINEPREFIX/postmarker-ready" ]; then echo "wine: making a prefix (about 20 s)" >&2; fi
  wine_locked prefix wine_start_server
}

# Ends the programs, the server and the virtual screen of this prefix.
wine_stop() {
  wineserver -k 2>/dev/null || true
  if wine_read_screen; then kill "$wine_screen_pid" 2>/dev/null || true; fi
  rm -f "$wine_state/screen"
}

# Can 32-bit programs be run here?
wine_runs_32_bits() { wine 'C:\windows\syswow64\cmd.exe' /c exit 0 >/dev/null 2>&1; }
