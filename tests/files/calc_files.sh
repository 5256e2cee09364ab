#!/bin/sh
# quelmor-calc opens and saves files as the dialogs do: arrays saved by extension are read
# by NumPy, files NumPy wrote are opened, stacked and saved again, and a failed open ends
# the run with its text and status 1.
set -e
calc=$1
dir=$2
py=/usr/bin/python3
rm -rf "$dir"
mkdir -p "$dir"

"$calc" -e "a = {1.5, -2, 3, 4, 5, 6}" --set save_dtype=8 --set save_swap=1 \
    -w "a=$dir/a.raw" -w "a=$dir/a.txt" </dev/null
$py - "$dir" <<'PY'
import sys
import numpy as np
d = sys.argv[1]
assert np.fromfile(f"{d}/a.raw", dtype=">f4").tolist() == [1.5, -2, 3, 4, 5, 6]
assert np.loadtxt(f"{d}/a.txt").tolist() == [1.5, -2, 3, 4, 5, 6]
rng = np.random.default_rng(5)
planes = [rng.integers(-3000, 3000, size=(3, 4), dtype=np.int16) for _ in range(3)]
for k, p in enumerate(planes):
    p.astype(">i2").tofile(f"{d}/z{k}.raw")
np.stack(planes).tofile(f"{d}/want.raw")
PY

# Back in: the raw file under a name of its own, the text by its title.
out=$("$calc" --set "open_res4d=3 2 1 1" --set open_swap=1 -r "b=$dir/a.raw" -r "$dir/a.txt" \
    -e "c = b - a" -p c </dev/null)
test "$out" = "$(printf 'c = b - a\nr4 c[3][2]\n0\n0\n0\n0\n0\n0')"

# Three planes NumPy wrote, one stack, saved native and compared with numpy.stack.
"$calc" --set "open_res4d=4 3 1 1" --set open_datatype=1 --set open_swap=1 \
    --stack "$dir/z0.raw" "$dir/z1.raw" "$dir/z2.raw" --set save_dtype=1 \
    -w "z0=$dir/stack.raw" -p z0 </dev/null | grep -q "i2 z0\[4\]\[3\]\[3\]"
cmp "$dir/stack.raw" "$dir/want.raw"

# The kind named overrides the guess: a text file under a binary name.
printf '1 2\n3 4\n' >"$dir/t.raw"
"$calc" --set open_filetype=4 --set "open_res4d=2 2 1 1" -r "$dir/t.raw" -p t </dev/null |
    grep -q "r4 t\[2\]\[2\]"

# Failures: the reader's text on standard error, status 1.
if "$calc" -r "$dir/missing.raw" 2>"$dir/err" </dev/null; then exit 1; fi
grep -q "unable to access file" "$dir/err"
if "$calc" -e "a = 1" -w "nothing=$dir/n.raw" 2>"$dir/err" </dev/null; then exit 1; fi
grep -q "can not find data" "$dir/err"
if "$calc" --set no_such_key=1 2>/dev/null </dev/null; then exit 1; fi
echo "calc files ok"
