#!/usr/bin/env bash
# Imports every model of Debian's assimp-testmodels with the sanitizers watching: a row for each file, sums at the end.
#
#     scripts/import-models.sh [FOLDER]
#
# Ends with 1 when a shape is no mesh or the sanitizers find something; a file that cannot be read is no fault.
set -euo pipefail
cd "$(dirname "$0")/.."
folder=${1:-/usr/share/assimp/models}
[ -d "$folder" ] || { echo "Sorry: $folder is not there (package assimp-testmodels)." >&2; exit 1; }
cmake --preset sanitize -D BRIMLOW_AUTHORING=ON >/dev/null
ninja -C build/sanitize import_models >/dev/null

# What one file asks for beyond 2 GiB is refused as everywhere else, and told as what it is.
found=$(mktemp)
trap 'rm -f "$found"' EXIT
status=0
ASAN_OPTIONS=max_allocation_size_mb=2048:allocator_may_return_null=1 \
    build/sanitize/tests/authoring/import_models "$folder" 2>"$found" || status=$?
if grep -E "ERROR: |runtime error: " "$found" | grep -v "allocator is out of memory"; then
    echo "The sanitizers found something."
    status=1
fi
exit $status
