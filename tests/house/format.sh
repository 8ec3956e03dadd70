#!/bin/bash
# Names the files of the tree that clang-format would change.   format.sh | format.sh --self-test
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."

wrong() { # reads file names, each ended by a NUL
    # shellcheck disable=SC2016  # sh expands it
    xargs -0 -r -P"$(nproc)" -n1 sh -c 'clang-format-19 --dry-run -Werror "$0" >/dev/null 2>&1 || echo "$0"' | sort
}

if [ "${1-}" = --self-test ]; then
    planted=$(mktemp -d)
    trap 'rm -rf "$planted"' EXIT
    cp .clang-format "$planted"
    printf 'int a;\n' >"$planted/right.cpp"
    printf 'int   a;\n' >"$planted/wrong.h"
    [ "$(printf '%s\0' "$planted/right.cpp" "$planted/wrong.h" | wrong)" = "$planted/wrong.h" ]
    exit
fi
files=$(git ls-files -z '*.cpp' '*.h' | wrong)
[ -z "$files" ] || { printf '%s\n' "$files" "mend with: clang-format-19 -i FILE..."; exit 1; }
