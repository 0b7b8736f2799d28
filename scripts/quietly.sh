#!/usr/bin/env bash
# Runs a command and shows its output only when it fails.
output=$("$@" 2>&1) || {
  status=$?
  printf '%s\n' "$output" >&2
  exit "$status"
}
