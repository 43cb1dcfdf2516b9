# To be sourced by scripts that operate the program on a virtual screen. The script calls
# startScreen, then startProgram for each station; both are ended when the script ends. Sets station,
# programId, windowId and scratch, a temporary folder that is deleted at the end.

scratch=$(mktemp -d)
station='' programId='' screenId=''

endChildren() {
  local id
  for id in $programId $screenId; do
    kill "$id" 2>/dev/null || true
    wait "$id" 2>/dev/null || true
  done
  rm -rf "$scratch"
}
trap endChildren EXIT
trap 'exit 130' INT TERM

# The name of the script for messages, and the file for a picture of the screen after a failure.
scriptName=$(basename "$0")
failurePicture=${failurePicture:-}

fail() {
  echo "$scriptName: $*" >&2
  if [ -n "$screenId" ] && [ -n "$failurePicture" ] &&
    import -window root "$failurePicture" 2>/dev/null; then
    echo "$scriptName: picture of the screen: $failurePicture" >&2
  fi
  [ ! -s "$scratch/program.log" ] || sed 's/^/  program: /' "$scratch/program.log" >&2
  local log
  for log in "$station"/Log/*.log; do
    [ ! -f "$log" ] || iconv -c -f CP936 -t UTF-8 "$log" | sed 's/^/  log: /' >&2
  done
  exit 1
}

waitFor() {  # what, seconds, condition...
  local what=$1 end=$((SECONDS + $2))
  shift 2
  until "$@"; do
    [ -z "$programId" ] || kill -0 "$programId" 2>/dev/null || fail "the program ended before $what"
    [ $SECONDS -lt $end ] || fail "timed out waiting for $what"
    sleep 0.1
  done
}

startScreen() {  # [width x height]
  export XDG_RUNTIME_DIR=$scratch/runtime QT_QPA_PLATFORM=xcb
  unset WAYLAND_DISPLAY QT_SCALE_FACTOR
  : >"$scratch/display"
  mkdir -m 700 -p "$XDG_RUNTIME_DIR"
  # The display number is unique, because a server that ends removes the socket of its successor.
  # -noreset, because a reset after the last client rejects a client that connects at that moment.
  Xvfb ":$((100 + $$ % 50000))" -displayfd 3 -screen 0 "${1:-1280x1024}x24" -dpi 96 \
    -noreset -nolisten tcp 3>"$scratch/display" 2>"$scratch/screen.log" &
  screenId=$!
  waitFor "the virtual screen" 15 test -s "$scratch/display"
  DISPLAY=:$(<"$scratch/display")
  export DISPLAY
}

endScreen() {
  kill "$screenId"
  wait "$screenId" || true
  screenId=''
}

# Starts the program of a station, by default directly, and waits for its window.
startProgram() {  # station [command...]
  station=$1
  shift
  [ $# -gt 0 ] || set -- "$station/orvane-export"
  "$@" 2>"$scratch/program.log" &
  programId=$!
  waitFor "the window" 15 windowIsThere
  xdotool windowfocus --sync "$windowId"
}

windowIsThere() {
  windowId=$(xdotool search --onlyvisible --name '^Orvane成果导出$' 2>/dev/null | head -n 1)
  [ -n "$windowId" ]
}

# Clicks at a position of the design, which has 933 x 645 pixels; windowWidth is the actual width.
clickAt() {
  local width=${windowWidth:-933}
  xdotool mousemove --window "$windowId" $(($1 * width / 933)) $(($2 * width / 933)) click 1
}

# Clicks 启动 and waits until all waiting batches are exported and the run has ended. Then the lines
# of the list are in $scratch/list.
runToItsEnd() {
  clickAt 64 608
  waitFor "the export of all batches" 40 noBatchIsWaiting
  waitFor "the end of the run" 10 runHasEnded
  clickAt 800 600  # below the lines: nothing stays selected
}

noBatchIsWaiting() {
  [ "$(sqlite3 -cmd '.timeout 2000' "$station/Orvane.dll" \
    "select count(*) from T_BatchInfo where BatchState = '完成扫描'")" = 0 ]
}

runHasEnded() {
  copyList && grep -qF '没有扫描完成的档案！' "$scratch/list"
}

# Copies the lines of the list to $scratch/list, with a click, Ctrl+A and Ctrl+C.
copyList() {
  clickAt 800 600
  xdotool key --clearmodifiers ctrl+a ctrl+c
  timeout 2 xclip -o -selection clipboard -t UTF8_STRING >"$scratch/list" 2>/dev/null
}

closeProgram() {  # [command that closes it, by default a click on 退出]
  [ $# -gt 0 ] || set -- clickAt 304 608
  "$@"
  local end=$((SECONDS + 10)) status=0
  while kill -0 "$programId" 2>/dev/null; do
    [ $SECONDS -lt $end ] || fail "the program did not close"
    sleep 0.1
  done
  wait "$programId" || status=$?
  programId=''
  [ $status -eq 0 ] || fail "the program ended with status $status"
}
