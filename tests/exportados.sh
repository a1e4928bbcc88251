#!/usr/bin/env bash
# What the shared object shows to the loader: exactly the 47 functions of the header, so that nothing
# of ours collides with an application's names, and no library that a till would have to install.
#   exportados.sh LIBRARY HEADER
set -euo pipefail
falhar() { echo "$1" >&2; exit 1; }

declarados=$(grep -oE '^ZEL_API int [A-Za-z0-9_]+' "$2" | cut -d' ' -f3 | sort)
exportados=$(nm -D --defined-only "$1" | awk '{print $3}' | sort)
[[ $(wc -l <<< "$declarados") -eq 47 ]] || falhar "the header does not declare 47 functions"
diff <(echo "$declarados") <(echo "$exportados") || falhar "exports differ from the header"

prometidas='^(libc|libm|libstdc\+\+|libgcc_s|ld-linux.*|libnettle|libhpdf.*|lib(a|ub)san)\.so'
for precisa in $(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
    [[ $precisa =~ $prometidas || $precisa == libhpdf-* ]] || falhar "needs $precisa"
done
echo "47 exports, no library beyond the promised ones"
