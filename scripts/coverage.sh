#!/usr/bin/env bash
# Line coverage of src/ by the whole test suite: builds with --coverage in
# build-coverage/, runs every test, and prints the covered share of each
# folder of src/ and of all of it (gcovr from the Debian packages).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
if ! command -v gcovr >/dev/null 2>&1; then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update && $SUDO apt-get install -y gcovr
fi
cmake -S . -B build-coverage -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="--coverage -O0" >/dev/null
cmake --build build-coverage -j2
find build-coverage -name '*.gcda' -delete
ctest --test-dir build-coverage -j2 >/dev/null || echo "some tests failed; coverage of what ran:" >&2
summary=$(mktemp)
trap 'rm -f "$summary"' EXIT
# gcov writes its intermediate files into the working folder.
(cd build-coverage && gcovr -r .. --filter '../src/' --json-summary -o "$summary" . >/dev/null)
python3 - "$summary" <<'PY'
import collections, json, sys
files = json.load(open(sys.argv[1]))["files"]
folders = collections.defaultdict(lambda: [0, 0])
for f in files:
    parts = f["filename"].split("/")
    folder = parts[1] if parts[0] == "src" and len(parts) > 2 else parts[0]
    folders[folder][0] += f["line_covered"]
    folders[folder][1] += f["line_total"]
for name, (covered, total) in sorted(folders.items()):
    print(f"src/{name:<12} {100.0 * covered / total:5.1f} %  ({covered} of {total} lines)")
covered = sum(v[0] for v in folders.values())
total = sum(v[1] for v in folders.values())
print(f"src/ in all     {100.0 * covered / total:5.1f} %  ({covered} of {total} lines)")
PY
