#!/usr/bin/env bash
# Formats the C++ and Python sources that git knows or would add; with --check only tells.
set -euo pipefail
cd "$(dirname "$0")/.."

sources() { git ls-files --cached --others --exclude-standard -- "$@" | while read -r file; do
  [[ ! -e $file ]] || printf '%s\0' "$file"
done; }

clang_format=(-i)
ruff_format=()
ruff_check=(--fix)
if [[ ${1:-} == --check ]]; then
  clang_format=(--dry-run --Werror)
  ruff_format=(--diff)
  ruff_check=()
fi

sources '*.h' '*.cpp' | xargs -0 -r .venv/bin/clang-format "${clang_format[@]}"
sources '*.py' '*.pyi' | xargs -0 -r .venv/bin/ruff check --quiet "${ruff_check[@]}"
sources '*.py' '*.pyi' | xargs -0 -r .venv/bin/ruff format --quiet "${ruff_format[@]}"
