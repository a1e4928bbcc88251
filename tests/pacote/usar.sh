#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Uses an installed library as a till's programmer would: compiles programs with what pkg-config and
# CMake say, and sells a receipt with each of them.
#   usar.sh SOURCES DIRECTORY
# SOURCES is a checkout, for the programs alone. From the environment: CC and CXX, CFLAGS, and
# EXECUTAR, a command that runs a program of another machine.
set -euo pipefail
fontes=$1
trabalho=$2
aqui=$(cd "$(dirname "$0")" && pwd)
read -ra cc <<< "${CC:-cc} ${CFLAGS:-}"
read -ra executar <<< "${EXECUTAR:-}"
falhar() { echo "usar.sh: $1" >&2; exit 1; }

rm -rf "$trabalho"
mkdir -p "$trabalho"
cd "$trabalho"
# The README's own sale, and that of the examples, which writes the issuer first.
sed -n '/^```c$/,/^```$/p' "$fontes/README.md" | sed '1d;$d' > leiame.c
cp "$fontes/examples/venda.c" .

vender() {
    local programa=$1 dados
    dados=$PWD/dados-$programa
    mkdir "$dados"
    ZEL_DIRETORIO=$dados "${executar[@]}" "./$programa" > "$programa.txt" ||
        { cat "$programa.txt"; falhar "$programa did not sell"; }
    grep -q '<infNFe' "$dados/documentosEnvio.xml" || falhar "$programa wrote no document"
    [[ $(stat -c %a "$dados/ZEL_Framework.xml") == 600 ]] || falhar "$programa: a readable secret"
    echo "sold: $programa"
}

read -ra pacote <<< "$(pkg-config --cflags --libs zel-felborframework)"
for programa in leiame venda; do
    "${cc[@]}" -std=c99 -Wall -Werror "$programa.c" "${pacote[@]}" -o "$programa"
    vender "$programa"
done

bibliotecas=$(pkg-config --variable=libdir zel-felborframework)
if [[ -f $bibliotecas/libZEL_FelborFramework.a ]]; then
    # The archive by name: beside a shared object the linker would take that one.
    read -ra estatico <<< "$(pkg-config --static --cflags --libs zel-felborframework |
        sed 's/-lZEL_FelborFramework/-l:libZEL_FelborFramework.a/')"
    "${cc[@]}" venda.c "${estatico[@]}" -o estatico
    ! readelf -d estatico | grep 'NEEDED.*ZEL_Felbor' || falhar "estatico is not static"
    vender estatico
fi

if command -v "${CXX:-c++}" > /dev/null; then
    read -ra cxx <<< "${CXX:-c++} ${CFLAGS:-}"
    "${cxx[@]}" -std=c++17 "$fontes/wrappers/cpp/exemplo.cpp" "${pacote[@]}" -pthread -o camada
    mkdir dados-camada
    "${executar[@]}" ./camada "$PWD/dados-camada" > camada.txt || falhar "the C++17 layer did not sell"
    echo "sold: camada"
fi

if pkg-config --exists zel-cupom; then
    read -ra cupom <<< "$(pkg-config --cflags --libs zel-cupom)"
    "${cc[@]}" "$fontes/tests/cupom/em_c.c" "${cupom[@]}" -o cupom
    "${executar[@]}" ./cupom || falhar "no picture: step $?"
    echo "drawn: cupom"
fi

if pkg-config --exists zel-envio; then
    read -ra envio <<< "$(pkg-config --cflags --libs zel-envio)"
    "${cc[@]}" -std=c99 -Wall -Werror "$fontes/tests/envio/em_c.c" "${envio[@]}" -o envio
    "${executar[@]}" ./envio < dados-venda/documentosEnvio.xml > envio.xml ||
        falhar "no message of layout 4.00: step $?"
    grep -q ' versao="4.00"' envio.xml || falhar "envio wrote another layout"
    echo "translated: envio"
fi

if command -v cmake > /dev/null; then
    read -ra opcoes <<< "${CMAKE_OPCOES:-}"
    cmake -S "$aqui/consumidor" -B cmake -DCMAKE_C_COMPILER="${cc[0]}" \
        -DCMAKE_C_FLAGS="${CFLAGS:-}" -DZEL_FONTE="$PWD/venda.c" "${opcoes[@]}" > cmake.log ||
        { cat cmake.log; falhar "find_package failed"; }
    cmake --build cmake > construir.log || { cat construir.log; falhar "the consumer did not build"; }
    cp cmake/pelo_cmake* .
    for programa in pelo_cmake*; do vender "$programa"; done
fi
