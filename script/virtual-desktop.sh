# A virtual display with a window manager, and functions to run Orvelin on it with mouse, keyboard and
# screenshots. Source this file. $orvelin is the program; $out is the folder for screenshots and logs,
# which is emptied first.

fail() {
  echo "$0: $*" >&2
  exit 1
}
[ -x "$orvelin" ] || fail "no such program: $orvelin; script/run builds it"

[ ! -e "$out" ] || [ -e "$out/orvelin.log" ] || fail "$out is not an old output folder; move it away"
rm -rf "$out"
mkdir -p "$out/.run"
touch "$out/orvelin.log"
chmod 700 "$out/.run"
# Folder dialogs start in HOME, so it is enough to type a name.
export HOME=$out XDG_RUNTIME_DIR=$out/.run QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8 TZ=Europe/Paris
unset WAYLAND_DISPLAY
stop_desktop() {
  kill $(jobs -p) 2>/dev/null || true
  wait 2>/dev/null || true
}
trap stop_desktop EXIT

exec 3<> <(:)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset >"$out/.run/xvfb.log" 2>&1 &
read -r -t 30 -u 3 number || fail "the virtual display does not start"
export DISPLAY=:$number
openbox >"$out/.run/openbox.log" 2>&1 &
for _ in $(seq 300); do
  ! xdotool get_num_desktops >/dev/null 2>&1 || break # the window manager is running
  sleep 0.1
done
scale=${QT_SCALE_FACTOR:-1}

# wait_for TITLE [OTHER]: waits until the active window has a title that matches TITLE and is not
# the window OTHER. Sets $window to its number.
wait_for() {
  for _ in $(seq 600); do
    window=$(xdotool getactivewindow 2>/dev/null || true)
    if [ -n "$window" ] && [ "$window" != "${2:-}" ] &&
       xdotool getwindowname "$window" 2>/dev/null | grep -qE "$1"; then
      sleep 0.3 # for it to be drawn
      return
    fi
    kill -0 $program 2>/dev/null || fail "Orvelin has exited: $(cat "$out/orvelin.log")"
    sleep 0.1
  done
  import -window root "$out/stuck.png"
  fail "no window titled $1 appears; see $out/stuck.png"
}
wait_for_main() { wait_for '^Orvelin$'; }
wait_for_dialog() { wait_for . "$main"; }
# screenshot NAME
screenshot() { import -window root "$out/$1.png"; }
# click X Y: clicks a point of the window, relative to its content; the menu bar has a negative Y.
click() {
  eval "$(xdotool getwindowgeometry --shell "$main")"
  xdotool mousemove --window "$main" \
    "$(awk "BEGIN { print int($1 * $scale) }")" \
    "$(awk "BEGIN { print int($HEIGHT + ($2 - 150) * $scale) }")" click 1
}
# Starts the program as a desktop does, in another folder. Sets $program and $main, its window.
start() {
  (cd / && exec "$orvelin" 2>>"$out/orvelin.log") &
  program=$!
  wait_for_main
  main=$window
}
# choose STEP NAME [SCREENSHOT]: clicks the button of a step and chooses a folder of $out in the
# dialog.
choose() {
  click 217 $((42 * $1 - 8))
  wait_for_dialog
  xdotool type --delay 20 "$2"
  sleep 0.3
  [ -z "${3:-}" ] || screenshot "$3"
  xdotool key Return
  wait_for_main
}
# Clicks the button of step 3 and waits for the final message.
build() {
  click 217 118
  wait_for_dialog
}
# expect_exit STATUS: waits for the program to exit and checks its status.
expect_exit() {
  local status=0
  wait $program || status=$?
  [ $status = "$1" ] || fail "Orvelin exited with status $status: $(cat "$out/orvelin.log")"
}
