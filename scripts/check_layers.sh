#!/usr/bin/env bash
# Prints the folder-level include edges of src/ and fails on any edge that
# runs back up the line of floors below (a folder may include itself and the
# folders after it, never one before it), and on a folder of src/ that is not
# in the line at all.
set -euo pipefail
cd "$(dirname "$0")/.."

FLOORS=(api run doc devices results solver components code xml expr base)

rank() {
  local i
  for i in "${!FLOORS[@]}"; do
    [ "${FLOORS[$i]}" = "$1" ] && { echo "$i"; return; }
  done
  echo -1
}

status=0
for dir in src/*/; do
  folder=$(basename "$dir")
  if [ "$(rank "$folder")" -lt 0 ]; then
    echo "src/$folder is not in the line of floors" >&2
    status=1
  fi
done

# One "from to file" line per include of another folder of src/.
edges=$(grep -rHoE '^#include "[a-z_]+/[^"]+"' src --include='*.h' --include='*.cpp' |
  sed -E 's#^src/([^/]+)/[^:]*:\#include "([^/]+)/.*$#\1 \2#' |
  awk '$1 != $2' | sort | uniq -c)

echo "folder include edges (count from to):"
while read -r count from to; do
  [ -z "${count:-}" ] && continue
  mark=""
  if [ "$(rank "$from")" -gt "$(rank "$to")" ] || [ "$(rank "$to")" -lt 0 ]; then
    mark="   <-- runs back up"
    status=1
  fi
  printf '  %5d %-10s -> %s%s\n' "$count" "$from" "$to" "$mark"
done <<<"$edges"

if [ "$status" -ne 0 ]; then
  echo "layering check FAILED: line is ${FLOORS[*]}" >&2
  grep -rnE '^#include "[a-z_]+/' src --include='*.h' --include='*.cpp' |
    while IFS=: read -r file line text; do
      from=$(echo "$file" | cut -d/ -f2)
      to=$(echo "$text" | sed -E 's#^\#include "([^/]+)/.*#\1#')
      if [ "$from" != "$to" ] && [ "$(rank "$from")" -gt "$(rank "$to")" ]; then
        echo "  $file:$line: $text" >&2
      fi
    done
  exit 1
fi
echo "layering check passed: ${FLOORS[*]}"
