# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154
# The wizard beside a real Thunderbird: a part of scripts/demo, whose functions it uses.

# Thunderbird as a person has it open, with sample mail. On a virtual screen it fills what there is.
open_thunderbird() {
  local options=() waited
  thunderbird_home=$out/thunderbird
  if [ "$mode" = virtual ]; then options=(--window-manager --remote-control); fi
  say "starting Thunderbird, with sample mail in $thunderbird_home"
  thunderbird_begin "$thunderbird_home" "$build/stage/bin/postmarker-thunderbird.exe" "${options[@]}"
  thunderbird_ask "$thunderbird_home" start >/dev/null
  for ((waited = 0; waited < patience * 10; ++waited)); do
    if [ "$(thunderbird_ask "$thunderbird_home" window)" = normal ]; then break; fi
    sleep 0.1
  done
  if [ "$mode" = virtual ]; then
    thunderbird_ask "$thunderbird_home" show Inbox >/dev/null
    set_window "Mozilla Thunderbird" 0 0 1280 1024
  fi
}

# Moves the window with this name to the front, and changes its size if that is given.
set_window() {
  local name=$1 left=$2 top=$3 window
  window=$(xdotool search --onlyvisible --name "$name" | tail -n 1)
  xdotool windowmove "$window" "$left" "$top" windowraise "$window"
  if [ $# -gt 3 ]; then xdotool windowsize "$window" "$4" "$5"; fi
}

# The whole screen, once two looks show the same.
screen_picture() {
  local before='' now
  while
    now=$(import -window root -depth 8 rgb:- | sha256sum)
    [ "$now" != "$before" ]
  do
    before=$now
    sleep 0.5
  done
  import -window root -strip +dither -colors 255 "PNG8:$out/$1.png"
  say "build/demo/$1.png"
}

# From the choice of the client over the folders with a new one, and the addresses, to the end. Then the spam that lies
# around is moved.
walk_beside_thunderbird() {
  say "walking through the wizard, with Thunderbird"
  start_host --language en
  wait_for welcome next
  desktop_left=640 desktop_top=520
  set_window 'demo - Wine desktop' "$desktop_left" "$desktop_top"
  bring_to_front
  press next
  wait_for clients tiles next
  xdotool type --clearmodifiers Mozilla
  press next
  wait_for folders tree next
  screen_picture thunderbird-01-folders
  xdotool type --clearmodifiers Local
  wait_for folders root
  keys alt+e
  wait_for new-folder
  xdotool type --clearmodifiers Spam
  keys Return
  wait_for folders folder
  screen_picture thunderbird-02-new-folder
  press next
  wait_for addresses grid next
  screen_picture thunderbird-03-addresses
  press next
  wait_for settings finish
  keys alt+m
  screen_picture thunderbird-04-settings
  press finish
  wait_for gone
  wait_for_host
  say "$(thunderbird_ask "$thunderbird_home" move-old)"
  thunderbird_ask "$thunderbird_home" show Spam >/dev/null
  screen_picture thunderbird-05-moved
  grep -q '"result": 12325' "$out/record.json" || fail "the wizard was not finished"
  export_registry after
}
