#!/bin/sh
# Formats the tree's C++ files with .clang-format, or with "check" lists the files that
# differ from it and fails.
set -e
cd "$(dirname "$0")/.."
files=$(git ls-files '*.cpp' '*.h')
if [ "$1" = "check" ]; then
  bad=""
  for f in $files; do
    clang-format --dry-run --Werror "$f" >/dev/null 2>&1 || bad="$bad $f"
  done
  if [ -n "$bad" ]; then
    echo "not formatted (run make format):$bad"
    exit 1
  fi
  echo "format: $(echo $files | wc -w) files as .clang-format says"
else
  clang-format -i $files
fi
