#!/usr/bin/env bash
# The main job: a fresh database, the sample studies imported into it, listed, one shown, and
# that study's chart written.
# Usage: demo.sh KWX_BINARY DATABASE_PATH
set -euo pipefail
kwx=$1
db=$2
root=$(cd "$(dirname "$0")/.." && pwd)

echo "== $("$kwx" --version)"
rm -f "$db" "$db-wal" "$db-shm"
mkdir -p "$(dirname "$db")"
"$kwx" --db "$db" init
echo "== importing the sample studies"
"$kwx" --db "$db" import --quiet "$root"/samples/studies/*.kwx
echo "== kwx list"
"$kwx" --db "$db" list
first=$("$kwx" --db "$db" list --json | sed -n 's/.*"CompanyID": *\([0-9]*\).*/\1/p' | head -n 1)
echo "== kwx show $first"
"$kwx" --db "$db" show "$first"
chart="$(cd "$(dirname "$db")" && pwd)/chart-$first.svg"
echo "== kwx chart $first -o $chart"
"$kwx" --db "$db" chart "$first" -o "$chart" >/dev/null
echo "The study's chart: $chart (open it in a web browser)"
