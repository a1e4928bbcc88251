#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What libzel-cupom shows to the loader: exactly the functions of its header; and that it needs
# nothing of the fiscal library.
#   exportados.sh LIBRARY FOLDER_OF_THE_LIBRARY
set -euo pipefail
falhar() { echo "$1" >&2; exit 1; }

declarados=$(grep -oE '^ZEL_CUPOM_API .*\b(zel_cupom_[a-z_]+)\(' "$2/include/zel_cupom.h" |
    grep -oE 'zel_cupom_[a-z_]+\(' | tr -d '(' | sort)
exportados=$(nm -D --defined-only "$1" | awk '$2 != "A" {print $3}' | sort)
[[ -n $declarados ]] || falhar "the header declares no function"
diff <(echo "$declarados") <(sed 's/@.*//' <<< "$exportados") || falhar "exports differ from the header"
# What was out in a release stays in its node.
[[ $(grep -c '@@ZEL_CUPOM_1\.0$' <<< "$exportados") == 20 ]] || falhar "another first release"
! grep -v '@@ZEL_CUPOM_1\.[01]$' <<< "$exportados" || falhar "a name without a version"
if readelf -d "$1" | grep 'NEEDED.*ZEL_Felbor'; then falhar "needs the fiscal library"; fi
if grep -rn 'ZEL_FelborFramework' "$2"; then falhar "knows the fiscal library"; fi
readelf -d "$1" | grep 'SONAME.*\[libzel-cupom.so.1\]' > /dev/null || falhar "another soname"
echo "$(wc -l <<< "$declarados") exports"
