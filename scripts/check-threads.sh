#!/usr/bin/env bash
# Runs what has threads under the thread sanitizer, which finds what no test sees: bytes that two threads use at once.
#
#     scripts/check-threads.sh          (after ./check, which installs what is needed)
set -eu
cd "$(dirname "$0")/.."
cmake --preset threads
ninja -C build/threads builder_for_tests test_allocations test_content test_model test_frames test_tools_common \
    test_render_tool test_preview
cd build/threads/tests
./test_content --source-file="*test_pack*"
./test_model --source-file="*test_decode_ahead*,*test_image_decode*"
./allocations/test_allocations --test-case="*worker*"
./test_frames
./test_tools_common
./test_render_tool --source-file="*test_picture_worker*,*test_video_pipe*,*test_flash_report*,*test_progress*"
./test_preview
echo "No two threads used the same bytes at once."
