#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What the shared object shows to the loader: exactly the 47 functions of the header, so that nothing
# of ours collides with an application's names, no library that a till would have to install, and no
# file function that the fault tests do not stand in for (tools/disco/Vigia.cpp).
# The header and the build say one version, that of the file's name.
#   exportados.sh LIBRARY HEADER VERSION
set -euo pipefail
falhar() { echo "$1" >&2; exit 1; }

declarados=$(grep -oE '^ZEL_API int [A-Za-z0-9_]+' "$2" | cut -d' ' -f3 | sort)
[[ $(wc -l <<< "$declarados") -eq 47 ]] || falhar "the header does not declare 47 functions"
# Each with the version that a program asks for: name@@ZEL_1.0; and the name of the version itself.
exportados=$(nm -D --defined-only "$1" | awk '$2 != "A" {print $3}' | sort)
declarados=$(sed 's/$/@@ZEL_1.0/' <<< "$declarados" | sort)
diff <(echo "$declarados") <(echo "$exportados") || falhar "exports differ from the header"
readelf -d "$1" | grep 'SONAME.*\[libZEL_FelborFramework.so.1\]' > /dev/null || falhar "another soname"

[[ $(basename "$(realpath "$1")") == *.so."$3" ]] || falhar "the file is not of version $3"
grep -qx "#define ZEL_VERSAO \"$3\"" "$2" || falhar "the header is not of version $3"

prometidas='^(libc|libm|libstdc\+\+|libgcc_s|ld-linux.*|libnettle|libz|libhpdf.*|lib(a|ub)san)\.so'
for precisa in $(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
    [[ $precisa =~ $prometidas || $precisa == libhpdf-* ]] || falhar "needs $precisa"
done
passam='openat|creat|fopen|freopen|fdopen|fputs|fprintf|writev|pwritev|sendfile|copy_file_range'
passam+='|truncate|renameat|linkat|unlinkat|remove|symlink|mkdir|rmdir|mknod|chmod|chown|mmap|msync'
escapam=$(nm -D --undefined-only "$1" | awk '{print $NF}' | grep -E "^($passam)(64)?(@|$)" || true)
[[ -z $escapam ]] || falhar "file functions that no test can refuse: $escapam"
echo "47 exports of version ZEL_1.0, no library beyond the promised ones"
