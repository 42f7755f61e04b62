#!/usr/bin/env bash
# Installs what is missing, builds everything in build/release and runs every test.
#
# usage: test.sh [CTEST-OPTION...]     e.g.  test.sh -R types
set -euo pipefail
# shellcheck source=scripts/steps.sh
source "$(dirname "${BASH_SOURCE[0]}")/steps.sh"

./scripts/install-dependencies.sh build test
configure_release -DLUM_BUILD_TESTS=ON -DLUM_BUILD_EXAMPLES=ON
build_release "Building the library, its tests and the example host (some minutes the first time)"
echo "Running the tests"
ctest --preset release --parallel "$(nproc)" "$@" </dev/null ||
    fail "tests failed; log: build/release/Testing/Temporary/LastTest.log"
