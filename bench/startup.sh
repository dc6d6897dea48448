#!/usr/bin/env bash
# Start-up, hand-over, idle CPU and memory of the agent on the built-in simulated machine.
#
#   start to first answer: `lumora --simulate --headless lumora://status` is started with no
#     agent running; the time from the start of the process to the status file's write
#     (its modification time), median of RUNS runs, each in a fresh home.
#   hand-over: with the agent running, the whole `lumora lumora://status` process from start
#     to exit, median of RUNS runs.
#   idle CPU: user + system time of the running agent over IDLE_SECONDS, in % of one core.
#   memory: VmRSS of the agent once it has started.
#
# usage: bench/startup.sh [path/to/lumora]   (default: the release build)
set -euo pipefail
cd "$(dirname "$0")/.."
lumora=$(realpath "${1:-build/release/src/app/lumora}")
runs=${RUNS:-10}
idle_seconds=${IDLE_SECONDS:-60}
# How long a start may take before the run counts as failed.
limit_seconds=30

work=$(mktemp -d "${TMPDIR:-/tmp}/lumora-bench.XXXXXX")
agent=""
cleanup() {
  if [ -n "$agent" ]; then kill -TERM "$agent" 2>/dev/null || true; wait "$agent" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

# A fresh home with its XDG folders; sets the variables for the commands that follow.
fresh_home() {
  local home="$work/home-$1"
  mkdir -p "$home/run"
  chmod 700 "$home/run"
  export HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_STATE_HOME="$home/state"
  export XDG_DATA_HOME="$home/data" XDG_CACHE_HOME="$home/cache" XDG_RUNTIME_DIR="$home/run"
}
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM

now_ns() { date +%s%N; }
median() { sort -n | awk '{ a[NR] = $1 } END { print (NR % 2) ? a[(NR + 1) / 2] : (a[NR / 2] + a[NR / 2 + 1]) / 2 }'; }

stop_agent() {
  kill -TERM "$agent"
  wait "$agent" || true
  agent=""
}

wait_for_file() {
  for _ in $(seq $((limit_seconds * 500))); do [ -e "$1" ] && return 0; sleep 0.002; done
  echo "bench: $1 never appeared" >&2
  return 1
}

starts=()
for i in $(seq "$runs"); do
  fresh_home "start-$i"
  status="$XDG_STATE_HOME/lumora/status.json"
  begin=$(now_ns)
  "$lumora" --simulate --headless lumora://status >/dev/null 2>&1 &
  agent=$!
  wait_for_file "$status"
  written=$(stat -c '%.9Y' "$status" | tr -d .)
  starts+=($(((written - begin) / 1000000)))
  stop_agent
done

fresh_home handover
"$lumora" --simulate --headless >/dev/null 2>&1 &
agent=$!
wait_for_file "$XDG_RUNTIME_DIR/lumora.socket"
"$lumora" lumora://status  # the first answer: the agent is up
handovers=()
for _ in $(seq "$runs"); do
  begin=$(now_ns)
  "$lumora" lumora://status
  handovers+=($((($(now_ns) - begin) / 1000000)))
done

rss_kb=$(awk '/^VmRSS:/ { print $2 }' "/proc/$agent/status")
ticks() { awk '{ print $14 + $15 }' "/proc/$agent/stat"; }
hz=$(getconf CLK_TCK)
before=$(ticks)
sleep "$idle_seconds"
after=$(ticks)
stop_agent

echo "start to first answer (ms, $runs runs): ${starts[*]}"
echo "  median $(printf '%s\n' "${starts[@]}" | median) ms   (goal < 400)"
echo "hand-over to a running agent (ms, $runs runs): ${handovers[*]}"
echo "  median $(printf '%s\n' "${handovers[@]}" | median) ms"
awk -v t=$((after - before)) -v hz="$hz" -v s="$idle_seconds" \
  'BEGIN { printf "idle CPU over %d s: %d ticks = %.3f %% of one core   (goal < 0.3)\n", s, t, 100 * t / hz / s }'
awk -v kb="$rss_kb" 'BEGIN { printf "resident memory after start: %.1f MB   (goal < 60)\n", kb / 1024 }'
