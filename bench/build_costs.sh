#!/usr/bin/env bash
# What building costs: a clean release build, the generator alone, and each library's size.
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/costs
python=.venv/bin/python
[[ -x $python ]] || python=python3
log=$(mktemp)
trap 'rm -rf "$log" "$build"' EXIT

# Runs a command quietly; prints its elapsed seconds and its processor seconds.
timed() {
  local TIMEFORMAT='%R %U %S'
  { time "$@" >"$log" 2>&1; } 2>&1 || { cat "$log" >&2; return 1; }
}

line() { printf '%-28s%10s%12s%10s\n' "$@"; }
row() {
  local elapsed user system
  read -r elapsed user system <<<"$2"
  line "$1" "$elapsed" "$(awk "BEGIN { print $user + $system }")" "$3"
}

rm -rf "$build"
cmake --preset release -B "$build" -DKXSIM_EXAMPLES=OFF >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
mapfile -t schemas < <(find src -name '*.toml' | sort)

line "" "seconds" "processor" "goal"
row "generator" "$(timed "$python" -m generator --out "$build/alone" "${schemas[@]}")" 0.5
row "clean release build, -j2" "$(timed cmake --build "$build" -j2)" 120

echo
line "" "bytes" "stripped" ""
for name in vexal mf0 kxsim_design; do
  library=$build/lib/lib$name.so
  strip -o "$log" "$library"
  line "lib$name.so" "$(stat -Lc %s "$library")" "$(stat -c %s "$log")" ""
done
