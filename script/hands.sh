# The user's hands and eyes, for scripts that drive the real program through its window: a virtual
# display with a window manager, mouse, keyboard and screenshots. To be sourced, with `orvelin`
# and `out`, the folder that receives the screenshots and logs, set; that folder is emptied first.

fail() {
  echo "$0: $*" >&2
  exit 1
}
[ -x "$orvelin" ] || fail "there is no program $orvelin; script/run builds it"

[ ! -e "$out" ] || [ -e "$out/orvelin.log" ] || fail "$out holds something else; move it away"
rm -rf "$out"
mkdir -p "$out/.run"
touch "$out/orvelin.log"
chmod 700 "$out/.run"
# The program's folder dialogs begin at home, so that a name is all there is to type.
export HOME=$out XDG_RUNTIME_DIR=$out/.run QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8 TZ=Europe/Paris
unset WAYLAND_DISPLAY
trap 'kill $(jobs -p) 2>/dev/null || true; wait 2>/dev/null || true' EXIT

exec 3<> <(:)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset >"$out/.run/xvfb.log" 2>&1 &
read -r -t 30 -u 3 number || fail "the virtual display does not start"
export DISPLAY=:$number
openbox >"$out/.run/openbox.log" 2>&1 &
for _ in $(seq 300); do
  ! xdotool get_num_desktops >/dev/null 2>&1 || break # the window manager is there
  sleep 0.1
done
scale=${QT_SCALE_FACTOR:-1}

# Waits until a window whose title matches is the active one; leaves its number in `window`.
await() {
  for _ in $(seq 600); do
    window=$(xdotool getactivewindow 2>/dev/null || true)
    if [ -n "$window" ] && [ "$window" != "${gone:-}" ] &&
       xdotool getwindowname "$window" 2>/dev/null | grep -qE "$1"; then
      sleep 0.3 # for it to be drawn
      return
    fi
    kill -0 $program 2>/dev/null || fail "Orvelin has ended: $(cat "$out/orvelin.log")"
    sleep 0.1
  done
  import -window root "$out/stuck.png"
  fail "no window titled $1 appears; see $out/stuck.png"
}
shot() { import -window root "$out/$1.png"; }
# Clicks a place of the window's content, which lies at the window's bottom, below the menu bar.
click() {
  eval "$(xdotool getwindowgeometry --shell "$main")"
  xdotool mousemove --window "$main" \
    "$(awk "BEGIN { print int($1 * $scale) }")" \
    "$(awk "BEGIN { print int($HEIGHT + ($2 - 150) * $scale) }")" click 1
}
# Starts the program, as from a desktop, in a folder that has nothing to do with it.
start() {
  (cd / && exec "$orvelin" 2>>"$out/orvelin.log") &
  program=$!
  await '^Orvelin$'
  main=$window
}
# Presses the button of a step and chooses a folder, named from `out`, in the dialog.
choose() {
  click 217 $((42 * $1 - 8))
  gone=$main await .
  xdotool type --delay 20 "$2"
  sleep 0.3
  [ -z "${3:-}" ] || shot "$3"
  xdotool key Return
  await '^Orvelin$'
}
# Presses the button of step 3 and waits for the message at the end.
build() {
  click 217 118
  gone=$main await .
}
# Waits for the program to end and checks its exit status.
ends_with() {
  local status=0
  wait $program || status=$?
  [ $status = "$1" ] || fail "Orvelin ended with status $status: $(cat "$out/orvelin.log")"
}
