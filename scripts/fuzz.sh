#!/bin/sh
# make fuzz: builds the libFuzzer targets, has the tests write the seed corpora, then runs
# each target for SECONDS on its seeds. Crashes land in BUILD/findings.
#   sh scripts/fuzz.sh BUILD SECONDS JOBS
set -e
BUILD=$1
SECONDS_EACH=$2
JOBS=$3
ROOT=$(cd "$(dirname "$0")/.." && pwd)
SCIPY_MAT=/usr/lib/python3/dist-packages/scipy/io/matlab/tests/data

# name, program under BUILD, seed folder, extra libFuzzer flags
TARGETS="
zrk         tests/files/fuzz_zrk_file                  tests/corpus/zrk
look        tests/display/fuzz_look                    tests/corpus/look
payload     tests/display/fuzz_payload                 $ROOT/tests/display/payload_corpus
binary      tests/files/fuzz_binary_file               tests/corpus/binary
text        tests/files/fuzz_text_file                 tests/corpus/text
stack       tests/files/fuzz_stack_model               tests/corpus/stack
escapes     tests/files/fuzz_escapes                   tests/corpus/escapes
dicom       tests/files/fuzz_dicom_file                tests/corpus/dicom
nifti       tests/files/fuzz_nifti_file                tests/corpus/nifti
mat         tests/files/fuzz_mat_file                  $SCIPY_MAT  -detect_leaks=0
raw         tests/files/scanner/fuzz_raw_file          tests/corpus/scanner/raw
image       tests/files/scanner/fuzz_image_file        tests/corpus/scanner/image
pulsegen    tests/files/scanner/fuzz_pulsegen_file     tests/corpus/scanner/pulsegen
plotpulse   tests/files/scanner/fuzz_plotpulse_file    tests/corpus/scanner/plotpulse
mu          tests/mu/fuzz_mu_options                   $ROOT/tests/mu/corpus
"

programs=$(echo "$TARGETS" | awk 'NF { n = split($2, p, "/"); print p[n] }')
# shellcheck disable=SC2086
cmake --build "$BUILD" -j "$JOBS" --target $programs files_tests files_open_save_tests \
    files_med_tests

# The seeds: the tests that write them.
cd "$BUILD"
./tests/files/files_tests --gtest_filter='ZrkCorpus.*' >/dev/null
./tests/files/files_open_save_tests --gtest_filter='OpenSaveCorpus.*' >/dev/null
./tests/files/files_med_tests --gtest_filter='MedCorpus.*' >/dev/null
ctest -R files.scanner_files >/dev/null

mkdir -p findings
echo "$TARGETS" | while read -r name program seeds flags; do
    [ -n "$name" ] || continue
    mkdir -p "work/$name"
    # matio leaks its inflate state on some broken files: leaks are not findings there.
    # shellcheck disable=SC2086
    "./$program" -max_total_time="$SECONDS_EACH" -artifact_prefix=findings/ $flags \
        "work/$name" "$seeds"
done
