#!/usr/bin/env bash
# The main job: a fresh database, the sample studies imported into it, listed, and one shown.
# Usage: demo.sh KWX_BINARY DATABASE_PATH
set -euo pipefail
kwx=$1
db=$2
root=$(cd "$(dirname "$0")/.." && pwd)

echo "== $("$kwx" --version)"
rm -f "$db"
mkdir -p "$(dirname "$db")"
if "$kwx" --help | grep -q '^  init'; then
  "$kwx" --db "$db" init
fi
if "$kwx" --help | grep -q '^  import' && compgen -G "$root/samples/studies/*.kwx" >/dev/null; then
  echo "== importing the sample studies"
  "$kwx" --db "$db" import "$root"/samples/studies/*.kwx
  echo "== kwx list"
  "$kwx" --db "$db" list
  first=$("$kwx" --db "$db" list --json | sed -n 's/.*"CompanyID": *\([0-9]*\).*/\1/p' | head -n 1)
  echo "== kwx show $first"
  "$kwx" --db "$db" show "$first"
else
  "$kwx" --help
fi
