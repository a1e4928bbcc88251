#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What libzel-envio shows to the loader: exactly the functions of its header, each with the version
# that a program asks for; and that it needs nothing of the fiscal library.
#   exportados.sh LIBRARY FOLDER_OF_THE_LIBRARY
set -euo pipefail
falhar() { echo "$1" >&2; exit 1; }

declarados=$(grep -oE '^ZEL_ENVIO_API .*\b(zel_envio_[a-z_]+)\(' "$2/include/zel_envio.h" |
    grep -oE 'zel_envio_[a-z_]+\(' | tr -d '(' | sort)
exportados=$(nm -D --defined-only "$1" | awk '$2 != "A" {print $3}' | sort)
[[ -n $declarados ]] || falhar "the header declares no function"
diff <(sed 's/$/@@ZEL_ENVIO_1.0/' <<< "$declarados") <(echo "$exportados") ||
    falhar "exports differ from the header"
if readelf -d "$1" | grep 'NEEDED.*ZEL_Felbor'; then falhar "needs the fiscal library"; fi
if grep -rn 'ZEL_FelborFramework' "$2"/{src,include}; then falhar "knows the fiscal library"; fi
readelf -d "$1" | grep 'SONAME.*\[libzel-envio.so.1\]' > /dev/null || falhar "another soname"
echo "$(wc -l <<< "$declarados") exports"
