#!/usr/bin/env bash
# Checks that a built library exports what the headers mark with VRL_API and nothing else: tests/exports.sh LIBRARY
# What the compiler emits wherever it is needed, such as type information, is weak, or has a reserved name, and does not count.
set -euo pipefail
marked=$(grep -rhoP --include='*.h' 'VRL_API .*?\KVRL_\w+(?=[(;])' "$(dirname "$0")/../src")
case $1 in
*.dll) symbols=$(x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/^\t\[ *[0-9]*\] \([A-Za-z_]\)/\1/p') ;;
*) symbols=$(nm --dynamic --defined-only "$1" | awk '$2 !~ /[VWu]/ && $3 !~ /^__/ {print $3}') ;;
esac
diff <(sort <<<"$marked") <(c++filt <<<"$symbols" | sed 's/(.*//' | sort) && [ -n "$marked" ]
