#!/usr/bin/env bash
# Everything that must hold before a commit, step by step, stopping at the first failure.
# A step's output stays in a log and is shown when the step fails; of a test runner's output,
# its closing line is shown always.
set -uo pipefail
cd "$(dirname "$0")/.."

log=$(mktemp)
trap 'rm -f "$log"' EXIT
steps=0
noise='^ +Start +[0-9]+: | Passed +[0-9.]+ sec$'
closing='tests passed|tests failed| (passed|failed|error|skipped).* in [0-9.]+s'

step() {
  local title=$1 began=$EPOCHREALTIME
  shift
  printf '== %s\n' "$title"
  if ! "$@" >"$log" 2>&1 </dev/null; then
    grep -vE "$noise" "$log"
    printf '\nmake test: failed at "%s" after %d s (%s)\n' "$title" "$SECONDS" "$*"
    exit 1
  fi
  grep -E "$closing" "$log" | tail -n 1
  awk -v a="$began" -v b="$EPOCHREALTIME" 'BEGIN { printf "   %.1f s\n", b - a }'
  steps=$((steps + 1))
}

build() {
  cmake --preset "$1" && cmake --build --preset "$1"
}

run_pytest() {
  .venv/bin/python -m pytest "$@"
}

has_tests() {
  compgen -G "$1/test_*.py" >/dev/null || compgen -G "$1/**/test_*.py" >/dev/null
}

# Into .venv, from the build that the other tests have made.
install_python_package() {
  .venv/bin/python -m pip install --quiet --disable-pip-version-check --no-deps \
    --no-build-isolation -C build-dir=build/dev -C cmake.build-type=Debug .
}

check_directions() {
  .venv/bin/python tools/check_includes.py src build/dev/gen python
}

step "Set-up" scripts/setup.sh test
step "Format" scripts/format.sh --check
python_suites=(tests/tools)
has_tests tests/generator && python_suites+=(tests/generator)
step "Generator and tools" run_pytest "${python_suites[@]}"
step "Build, warnings as errors" build dev
step "Tests" ctest --preset dev
step "Directions of includes" check_directions
step "Build with address and undefined-behaviour sanitizers" build asan
step "Tests under the sanitizers" ctest --preset asan
step "Install the Python package" install_python_package
export KXSIM_EXAMPLES=build/dev/examples
step "Python" run_pytest tests/python
printf '\nmake test: all %d steps passed in %d s\n' "$steps" "$SECONDS"
