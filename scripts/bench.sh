#!/bin/sh
# Runs every benchmark program of the build; each prints its figures and ratios.
set -e
BUILD=${1:-build}
for b in "$BUILD"/bench/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b"
done
