#!/usr/bin/env bash
# Builds Lumora and shows one short session of the agent on the built-in simulated machine
# (a laptop panel, a DDC/CI office monitor and a projector without DDC/CI), driven by URL
# commands the way scripts drive it, then draws the menu panel of that session into a PNG.
# Needs no desktop: the agent runs headless, the panel is drawn offscreen.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

bash scripts/deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --target lumora -j2
lumora="$root/build/release/src/app/lumora"

# A private home: the agent's log, status file, settings and autostart entry all land here.
demo=$(mktemp -d "${TMPDIR:-/tmp}/lumora-demo.XXXXXX")
export HOME="$demo/home"
export XDG_CONFIG_HOME="$HOME/.config" XDG_STATE_HOME="$HOME/.local/state"
export XDG_DATA_HOME="$HOME/.local/share" XDG_CACHE_HOME="$HOME/.cache"
export XDG_RUNTIME_DIR="$demo/run"
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM
state="$demo/sim-state.json"
status="$XDG_STATE_HOME/lumora/status.json"
log="$XDG_STATE_HOME/lumora/Lumora.log"
out="$root/build/demo"
mkdir -p "$out"
panel="$out/lumora-panel.png"

agent=""
cleanup() {
  if [ -n "$agent" ] && kill -0 "$agent" 2>/dev/null; then
    kill -TERM "$agent" 2>/dev/null || true
    for _ in $(seq 50); do kill -0 "$agent" 2>/dev/null || break; sleep 0.1; done
    kill -KILL "$agent" 2>/dev/null || true
  fi
  rm -rf "$demo"
}
trap cleanup EXIT

# Polls until the command succeeds; gives up after $1 seconds.
wait_for() {
  local limit=$1; shift
  for _ in $(seq $((limit * 10))); do "$@" && return 0; sleep 0.1; done
  echo "demo: gave up waiting for: $*" >&2
  return 1
}

section() { printf '\n=== %s\n' "$*"; }

# One line per simulated display: what the hardware itself now holds.
hardware() {
  python3 - "$state" <<'EOF' 2>/dev/null || cat "$state"
import json, sys
state = json.load(open(sys.argv[1]))
for d in state["displays"]:
    gamma = d["gamma"]
    if gamma != "identity":
        gamma = "r/g/b at 255 = %s/%s/%s" % (gamma["red"][2], gamma["green"][2], gamma["blue"][2])
    ddc = ", DDC brightness %s" % d["vcp"]["0x10"] if "vcp" in d else ""
    kind = " (virtual)" if d["virtual"] else ""
    print("  display %s%s: enabled %s, mode %s, gamma %s%s"
          % (d["id"], kind, d["enabled"], d["mode"], gamma, ddc))
print("  virtual displays: %s" % [v["name"] for v in state["virtualDisplays"]])
EOF
}

section "starting the agent (headless, built-in simulated machine)"
"$lumora" --simulate --headless --sim-state="$state" >"$demo/agent.out" 2>&1 &
agent=$!
# Up once its socket exists and its first DDC/CI scan has answered.
wait_for 30 test -S "$XDG_RUNTIME_DIR/lumora.socket"
wait_for 30 grep -q "DDC: " "$log"
echo "agent pid $agent"

send() {
  printf '$ lumora %s\n' "$1"
  timeout 60 "$lumora" "$1"
}

section "URL commands, each handed over to the running agent"
send "lumora://status"
send "lumora://brightness?display=office&value=70"
send "lumora://dim?display=projector&value=0.4"
send "lumora://mode?display=office&width=1920&height=1080"
send "lumora://virtual?width=1920&height=1080&name=Demo"
# The DDC write is debounced and waits its turn on the monitor's bus (behind the reading of
# its capabilities, the first time Lumora meets it): the monitor has its new brightness a
# moment later.
office_at() {
  python3 -c 'import json,sys; d=[d for d in json.load(open(sys.argv[1]))["displays"] if d["id"]==2][0]; sys.exit(d["vcp"]["0x10"]!=int(sys.argv[2]))' "$state" "$1" 2>/dev/null
}
wait_for 10 office_at 70
echo "hardware before the disconnect:"
hardware
send "lumora://disconnect?display=projector"

section "status file ($status)"
cat "$status"
section "simulated hardware ($state)"
cat "$state"
section "event log, last lines"
tail -n 14 "$log"

section "stopping the agent with SIGTERM"
kill -TERM "$agent"
code=0
wait "$agent" || code=$?
agent=""
echo "agent exit status $code"
tail -n 3 "$log"
echo "hardware after the clean-up:"
hardware

section "the menu panel of this session"
"$lumora" --simulate --render-panel="$panel" >/dev/null
echo "panel written to $panel"
