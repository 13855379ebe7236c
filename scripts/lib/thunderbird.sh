# shellcheck shell=bash
# shellcheck disable=SC2154
# A real Thunderbird with sample mail beside Windows programs: sourced by the scripts that need one. All but
# thunderbird_is_installed needs wine.sh and a Wine that runs.
# The caller has set -euo pipefail and `root`, the tree's folder.

readonly thunderbird_program=/usr/lib/thunderbird/thunderbird
thunderbird_keeper=''

thunderbird_is_installed() { [ -x "$thunderbird_program" ] && command -v twm >/dev/null; }

# Where a Windows program finds Thunderbird and its profile; and the extension, as a person installs it.
thunderbird_register() {
  local home=$1 bridge=$2 client='HKLM\Software\Mozilla\Mozilla Thunderbird' data profile
  profile=$(winepath -w "$home/profile")
  {
    wine reg add "$client" /reg:32 /v CurrentVersion /d sample /f
    wine reg add "$client\\sample\\Main" /reg:32 /v PathToExe /d "$(winepath -w "$home/thunderbird.exe")" /f
  } >/dev/null
  data=$(winepath -u "$(wine cmd /c 'echo %APPDATA%' | tr -d '\r')")
  mkdir -p "$data/Thunderbird"
  printf '[Profile0]\r\nName=default\r\nIsRelative=0\r\nPath=%s\r\n' "$profile" >"$data/Thunderbird/profiles.ini"
  wine "$bridge" --install
}

# Makes the home anew and keeps a Thunderbird in it until thunderbird_end, or the end of the calling process.
# thunderbird_begin HOME BRIDGE.exe [OPTION]
thunderbird_begin() {
  local home=$1 bridge=$2 waited
  shift 2
  # What a run that was stopped half-way has left is for a home that goes now.
  wine "$bridge" --remove >/dev/null 2>&1 || true
  rm -rf "$home"
  mkdir -p "$home"
  "$root/scripts/lib/thunderbird/keeper" "$@" "$home" "$bridge" </dev/null >"$home/keeper.log" 2>&1 &
  thunderbird_keeper=$!
  for ((waited = 0; waited < 600; ++waited)); do
    if [ -s "$home/port" ]; then
      thunderbird_register "$home" "$bridge"
      return
    fi
    kill -0 "$thunderbird_keeper" 2>/dev/null || break
    sleep 0.1
  done
  echo "thunderbird: it can't be kept; see $home/keeper.log" >&2
  return 1
}

# Ends Thunderbird and all that was started with it.
thunderbird_end() {
  if [ -n "$thunderbird_keeper" ]; then
    kill "$thunderbird_keeper" 2>/dev/null || true
    wait "$thunderbird_keeper" 2>/dev/null || true
    thunderbird_keeper=''
  fi
}

# Has the keeper of this home do something, and prints its answer.
thunderbird_ask() {
  local port answer
  port=$(cat "$1/port")
  shift
  exec 5<>"/dev/tcp/127.0.0.1/$port"
  printf '%s\n' "$*" >&5
  read -r answer <&5
  exec 5>&-
  printf '%s\n' "$answer"
  [ "${answer#failed: }" = "$answer" ]
}
