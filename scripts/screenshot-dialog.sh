#!/usr/bin/env bash
# Takes the picture of the options dialog, docs/images/dialog.png: screenshot-dialog.sh [FILE [SCALE]].
# Shows the dialog of the example's export on a separate display, with a window manager.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
picture=$(realpath -m -- "${1:-$root/docs/images/dialog.png}")
scale=${2:-1}
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-screenshot.txt"

cd -- "$root"
if [[ ! -f build/release/build.ninja ]]; then
  cmake --preset release -DMAPEXPORT_TESTS=OFF
fi
cmake --build --preset release --target mapexport

# until_it_prints COMMAND...: tries it until it prints something, and prints that.
until_it_prints() {
  local text tries
  for ((tries = 0; tries < 300; ++tries)); do
    text=$("$@" 2>/dev/null || true)
    if [[ -n $text ]]; then
      echo "$text"
      return 0
    fi
    sleep 0.2
  done
  echo "nothing came of: $*" >&2
  return 1
}

work=$(mktemp -d)
started=()
finish() {
  local i
  # The last one first: the display goes when nobody uses it any more.
  for ((i = ${#started[@]} - 1; i >= 0; --i)); do
    kill "${started[i]}" 2>/dev/null || true
    wait "${started[i]}" 2>/dev/null || true
  done
  rm -rf -- "$work"
}
trap finish EXIT

# The server chooses a free display and says which.
mkfifo "$work/display"
Xvfb -displayfd 3 -screen 0 1600x1200x24 3>"$work/display" 2>"$work/server.log" &
started+=($!)
read -r display <"$work/display"
export DISPLAY=:$display XDG_CONFIG_HOME=$work/config HOME=$work
openbox 2>"$work/manager.log" &
started+=($!)
# Without a manager, windows would get no frames.
manager() {
  xprop -root _NET_SUPPORTING_WM_CHECK | grep 'window id'
}
until_it_prints manager >/dev/null

cd -- "$work"
QT_QPA_PLATFORM=xcb QT_SCALE_FACTOR=$scale "$root/build/release/bin/mapexport" export \
  "$root/examples/yard.scene.json" yard.kob --fresh --quiet --cxp /levels/textures/yard.cxp \
  --dialog 2>"$work/export.log" &
started+=($!)
window=$(until_it_prints xdotool search --onlyvisible --name '^MAP Export Options$')
xdotool mousemove 0 0

# frame_of WINDOW: the manager's frame around it, which is the child of the root window.
frame_of() {
  local window=$1 parent
  while true; do
    parent=$(xwininfo -tree -id "$window" | sed -n 's/.*Parent window id: //p')
    [[ $parent != *"the root window"* ]] || break
    window=${parent%% *}
  done
  echo "$window"
}

# Until two pictures in a row are equal, the window is still being framed and drawn.
last=""
for _ in {1..100}; do
  import -window "$(frame_of "$window")" "$work/dialog.png"
  now=$(convert "$work/dialog.png" rgb:- | sha256sum)
  [[ $now != "$last" ]] || break
  last=$now
  sleep 0.5
done
mkdir -p -- "$(dirname -- "$picture")"
convert "$work/dialog.png" -strip +dither -colors 128 "PNG8:$picture"
echo "$picture: $(identify -format '%w x %h pixels' "$picture")"
