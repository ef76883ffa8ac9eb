#!/usr/bin/env bash
# Names the lines of the program that no test reaches: see docs/proof.md.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
    cat <<TEXT
Usage: ./prove.sh coverage [--report | --help]

Builds the programs anew in out/proof/coverage/, so that they count what they run, and runs the tests but for those that
wait for real or need another machine. Names the lines that none of them reaches, and fails when docs/proof.md does not
explain one, or explains one that is reached.

  --report  names those of the run before
TEXT
}

case ${1:-} in
"" | --report) ;;
--help) usage; exit ;;
*) usage >&2; exit 2 ;;
esac

replacing='WindowedInstallation.ClosesItsLogBeforeTheRuntimeEndsTheProcess:TemporaryFolder.That*'
replacing+=':ElevatedInstallerFate.*BeforeItsStart*:AbnormalEnd.IsThatOfAFaultInTheStartUpCodeToo'
build=$PWD/out/proof/coverage/build
run_tests() { # PROGRAM FILTER
    VELLUMKIT_PREFIX=coverage GCOV_PREFIX=Z: nice -n 10 lab/machine.sh display \
        lab/machine.sh wine "$build/tests/$1.exe" --gtest_filter="$2"
}

if [ "${1:-}" != --report ]; then
    cmake -S . -B "$build" -G Ninja --toolchain cmake/MingwToolchain.cmake -DCMAKE_BUILD_TYPE=Debug \
        -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DCMAKE_PROJECT_VellumkitInstaller_INCLUDE="$PWD/proof/coverage/coverage.cmake"
    nice -n 10 cmake --build "$build" --target unit-tests window-tests program-tests
    find "$build" -name '*.gcda' -delete
    # Those left out are for another machine, wait for real, or replace functions with which also the counts are
    # written.
    run_tests unit-tests -LogFile.IsNotClosedInTheMiddleOfAWriteByAnotherThread
    run_tests window-tests '-*zh*'
    run_tests program-tests "-*LanguageOnA*:WindowWithoutFonts.*:*RealWait*:$replacing"
fi
exec python3 proof/coverage/coverage.py "$build"
