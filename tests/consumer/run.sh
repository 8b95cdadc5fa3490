#!/usr/bin/env bash
# Installs the build tree BUILD into a fresh prefix and uses it as a host would:
#  - no internal header is installed;
#  - a separate CMake project (tests/consumer) finds the package, compiles the README's C++
#    example and every installed header with nothing but the prefix on its include path, and
#    the example runs;
#  - with PYTHON given: the Python tests (the README's Python example among them) run against
#    the module and the kwx command installed in the prefix, from the prefix alone.
# Usage: run.sh BUILD SOURCE [PYTHON]
set -euo pipefail
build=$(realpath "$1")
source=$(realpath "$2")
python=${3:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

cmake --install "$build" --prefix "$prefix" >/dev/null
internal=$(find "$prefix/include" -name '*_internal.h' -o -name store_context.h)
if [ -n "$internal" ]; then
  echo "internal headers installed: $internal" >&2
  exit 1
fi

# No program or module, built or installed, searches the current directory for libraries: an
# empty entry of its search path means exactly that. (A build tree of shared libraries is let
# off: CMake ends its paths with one ':', which it removes on installing.)
cwd_search=""
while IFS= read -r -d '' binary; do
  dynamic=$(readelf -d "$binary" 2>/dev/null || true)
  path=$(sed -n 's/.*(R[UN]*PATH).*\[\(.*\)\]$/\1/p' <<<"$dynamic")
  [ -z "$path" ] && continue
  if [[ "$binary" != "$prefix"/* ]] && grep -q 'NEEDED.*\[libkwx_' <<<"$dynamic"; then
    continue
  fi
  case ":$path:" in
    *::*) cwd_search+=" $binary [$path]" ;;
  esac
done < <(find "$prefix" "$build/cli" "$build/python" -maxdepth 4 -type f \
           \( -perm -u+x -o -name '*.so*' \) -print0 2>/dev/null)
if [ -n "$cwd_search" ]; then
  echo "libraries searched for in the current directory by:$cwd_search" >&2
  exit 1
fi

# The fenced block of README.md that follows the line "<!-- example: NAME -->".
readme_example() {
  awk -v name="$1" '
    $0 == "<!-- example: " name " -->" { found = 1; next }
    found && /^```/ { if (inside) exit; inside = 1; next }
    inside { print }' "$source/README.md"
}

host="$work/host"
mkdir -p "$host"
cp "$source/tests/consumer/CMakeLists.txt" "$host/"
readme_example cpp >"$host/host.cc"
(cd "$prefix/include/kwxloader" && find . -name '*.h' | sort | sed 's|^\./|#include <kwxloader/|; s|$|>|') \
  >"$host/all_headers.cc"
cmake -S "$host" -B "$host/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  >/dev/null
cmake --build "$host/build" -j 2 >/dev/null
# The examples read the sample studies from the folder they run in.
run="$work/run"
mkdir -p "$run"
cp "$source"/samples/studies/* "$run/"
(cd "$run" && "$host/build/kwx-host")

if [ -n "$python" ]; then
  module_dir=$(find "$prefix" -name 'kwxloader*.so' -printf '%h\n' | head -n 1)
  PYTHONPATH="$module_dir" KWX_SOURCE_DIR="$source" KWX_COMMAND="$prefix/bin/kwx" \
    "$python" -m pytest -q -p no:cacheprovider "$source/python/tests"
fi
