#!/usr/bin/env bash
# Installs what a command needs and this machine lacks; does nothing, fast, when nothing is missing.
#
#   scripts/setup.sh demo|demo-cpp|test|build|bench|counts|tsan|fuzz|tidy|format
set -euo pipefail
cd "$(dirname "$0")/.."

need=${1:?usage: scripts/setup.sh demo|demo-cpp|test|build|bench|counts|tsan|fuzz|tidy|format}
requirements=scripts/requirements-build.txt

# Debian package, the command it brings.
commands=(
  "g++ c++"
  "cmake cmake"
  "ninja-build ninja"
  "python3 python3"
)
# Debian package, a header it brings.
headers=()
options="libcli11-dev CLI/CLI.hpp"
examples=("$options" "libboost-dev boost/numeric/odeint.hpp")
tests=("libgtest-dev gtest/gtest.h")
benchmarks=("$options" "libbenchmark-dev benchmark/benchmark.h")

case $need in
  demo) requirements=scripts/requirements-demo.txt ;;
  demo-cpp) headers+=("${examples[@]}") ;;
  test)
    commands+=("git git")
    headers+=("${examples[@]}" "${tests[@]}" "${benchmarks[@]}")
    requirements=scripts/requirements-test.txt
    ;;
  build) ;;
  bench) headers+=("${benchmarks[@]}") ;;
  counts)
    commands+=("valgrind valgrind")
    headers+=("${benchmarks[@]}")
    ;;
  tsan) headers+=("${tests[@]}") ;;
  fuzz) commands+=("clang clang++") ;;
  tidy)
    commands+=("clang-tidy run-clang-tidy")
    headers+=("${examples[@]}" "${tests[@]}" "${benchmarks[@]}")
    ;;
  format)
    commands=("git git" "python3 python3")
    requirements=scripts/requirements-test.txt
    ;;
  *)
    echo "setup: no such need: $need" >&2
    exit 2
    ;;
esac

missing_commands() {
  local entry
  for entry in "${commands[@]}"; do
    command -v "${entry#* }" >/dev/null || echo "${entry% *}"
  done
}

# One run of the preprocessor answers for all headers; without a compiler all of them are missing.
missing_headers() {
  local entry
  ((${#headers[@]})) || return 0
  if ! command -v c++ >/dev/null; then
    printf '%s\n' "${headers[@]% *}"
    return
  fi
  for entry in "${headers[@]}"; do
    printf '#if !__has_include(<%s>)\n%s\n#endif\n' "${entry#* }" "${entry% *}"
  done | c++ -std=c++20 -E -P -x c++ - | tr -s '[:space:]' '\n' | sed '/^$/d'
}

missing_venv() {
  [[ -x .venv/bin/python ]] || python3 -c 'import ensurepip, venv' 2>/dev/null || echo python3-venv
}

# The Python package is built against the headers of the Python that runs it.
missing_python_headers() {
  [[ $need == test || $need == demo ]] || return 0
  local python=python3
  [[ ! -x .venv/bin/python ]] || python=.venv/bin/python
  "$python" -c 'import os, sysconfig
raise SystemExit(not os.path.exists(sysconfig.get_path("include") + "/Python.h"))' 2>/dev/null ||
    echo python3-dev
}

# libFuzzer and the sanitizers' runtimes come apart from clang, in a package named after its version.
missing_runtime() {
  [[ $need == fuzz ]] || return 0
  local version=14 archive
  if command -v clang++ >/dev/null; then
    version=$(clang++ -dumpversion | cut -d. -f1)
    archive=$(clang++ -print-file-name="lib/linux/libclang_rt.fuzzer-$(uname -m).a")
    [[ -e $archive ]] && return 0
  fi
  echo "libclang-rt-$version-dev"
}

install_packages() {
  if [[ $(id -u) == 0 ]] && command -v apt-get >/dev/null; then
    echo "setup: installing $*"
    export DEBIAN_FRONTEND=noninteractive
    scripts/quietly.sh apt-get update
    scripts/quietly.sh apt-get install -y --no-install-recommends "$@"
  else
    echo "setup: please install (Debian names; elsewhere their like):" \
      "sudo apt-get install --no-install-recommends $*" >&2
    exit 1
  fi
}

# A stamp for each list holds what was installed. A longer list includes the shorter ones.
install_python_packages() {
  local wanted list stamp=.venv/installed-$(basename "$requirements")
  wanted=$(cat scripts/requirements-*.txt)
  [[ -e $stamp && $(<"$stamp") == "$wanted" ]] && return 0
  [[ -x .venv/bin/python ]] || python3 -m venv .venv
  echo "setup: installing Python packages into .venv"
  scripts/quietly.sh .venv/bin/python -m pip install --quiet --disable-pip-version-check -r "$requirements"
  for list in build demo test; do
    printf '%s\n' "$wanted" >".venv/installed-requirements-$list.txt"
    [[ $requirements == *-$list.txt ]] && break
  done
}

missing=$(missing_commands; missing_headers; missing_venv; missing_python_headers; missing_runtime)
# shellcheck disable=SC2086  # one word per package
[[ -z $missing ]] || install_packages $missing
install_python_packages
