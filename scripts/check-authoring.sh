#!/usr/bin/env bash
# Runs the tests of what makes shows under the sanitizers; ./check leaves them out, for they take minutes to build.
#
#     scripts/check-authoring.sh        (after ./check, which installs what is needed)
set -eu
cd "$(dirname "$0")/.."
cmake --preset sanitize -D BRIMLOW_AUTHORING=ON
ninja -C build/sanitize
ctest --test-dir build/sanitize --output-on-failure -R "^(asset|curve|show|lua|open|check|fonts|round_trips|make_tool|brimlow_make)$"
