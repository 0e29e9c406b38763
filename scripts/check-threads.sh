#!/usr/bin/env bash
# Runs what has threads under the thread sanitizer, which finds what no test sees: bytes that two threads use at once.
#
#     scripts/check-threads.sh          (after ./check, which installs what is needed)
set -eu
cd "$(dirname "$0")/.."
rooms="content model frames tools_common render_tool preview"
cmake --preset threads
# shellcheck disable=SC2086
ninja -C build/threads builder_for_tests test_allocations $(printf 'test_%s ' $rooms)
ctest --test-dir build/threads --output-on-failure -R "^(${rooms// /|}|allocations)$"
