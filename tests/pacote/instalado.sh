#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs a build into an empty directory and uses it from there:
#   instalado.sh BUILD SOURCES DIRECTORY
set -euo pipefail
construcao=$1
fontes=$2
prefixo=$3/prefixo
aqui=$(cd "$(dirname "$0")" && pwd)
falhar() { echo "instalado.sh: $1" >&2; exit 1; }
unset ZEL_DIRETORIO

rm -rf "$3"
mkdir -p "$3"
cmake --install "$construcao" --prefix "$prefixo" > "$3/instalar.log"
bibliotecas=$(dirname "$(find "$prefixo" -name 'libZEL_FelborFramework.so.1')")
for arquivo in include/ZEL_FelborFramework.h include/ZEL_Felbor.hpp include/zel_felbor/texto.hpp \
    bin/zel share/man/man1/zel.1 share/bash-completion/completions/zel; do
    [[ -f $prefixo/$arquivo ]] || falhar "$arquivo is not installed"
done

export PKG_CONFIG_PATH=$bibliotecas/pkgconfig CMAKE_PREFIX_PATH=$prefixo
LD_LIBRARY_PATH=$bibliotecas "$aqui/usar.sh" "$fontes" "$3/uso"

# The installed command finds the library by itself.
zel=$prefixo/bin/zel
"$zel" config gravar 'EMIT\CRT' 3 --diretorio "$3/uso/dados-venda" > /dev/null ||
    falhar "zel config does not write"
# The example's issuer has an invented state registration, the factory's NCM and no token: nothing
# else is wrong.
TZ=BRT3 "$zel" conferir "$3/uso/dados-venda" > "$3/conferir.txt" || true
[[ $(grep -oE '\[[a-z-]+\]$' "$3/conferir.txt" | tr -d '\n') == \
    '[ie-digito][ncm-fabrica][ambiente-indefinido][token-ausente]' ]] ||
    { cat "$3/conferir.txt"; falhar "zel conferir finds something else in the example's directory"; }

# And it finds the library that draws.
if [[ -f $prefixo/include/zel_cupom.h ]]; then
    "$zel" ver --diretorio "$3/uso/dados-venda" --saida "$3/cupom.png" > /dev/null ||
        falhar "zel ver draws nothing"
fi

# The service: its manual page has every figure and option, and systemd takes every line of its unit.
if [[ -f $prefixo/sbin/zel-envio ]]; then
    pagina=$(sed 's/\\-/-/g' "$prefixo/share/man/man8/zel-envio.8")
    for nome in $(sed -nE 's/.*metricas\.(comecar|uma)\("([a-z_]+)".*/zel_envio_\2/p' "$fontes/apps/zel-envio/Metricas.cpp") \
        $("$prefixo/sbin/zel-envio" --ajuda | grep -oE -- '--[a-z]+'); do
        grep -qF -- "$nome" <<< "$pagina" || falhar "no $nome in zel-envio(8)"
    done
    if command -v systemd-analyze > /dev/null; then
        sed "s,/usr/sbin/,$prefixo/sbin/,; /^Documentation/d" "$fontes/apps/zel-envio/sistema/zel-envio.service" \
            > "$3/zel-envio.service"
        ! systemd-analyze verify "$3/zel-envio.service" 2>&1 | grep -F zel-envio || falhar "its unit"
    fi
fi

# The manual page has every command and option that the help names, and completion offers them.
comandos=$("$zel" --help | sed -n 's/^  \([a-z]*\)  .*/\1/p')
[[ $(wc -w <<< "$comandos") -ge 4 ]] || falhar "the help names no commands"
pagina=$(sed 's/\\-/-/g' "$prefixo/share/man/man1/zel.1")
oferece() { # WORD WORDS...: is the word offered for the last of the words?
    local palavra=$1 oferta
    shift
    oferta=$(completar "$@")
    grep -qx -- "$palavra" <<< "$oferta" || falhar "zel $*: $palavra is not completed"
}
completar() {
    bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
        compopt() { :; }; _zel; printf "%s\n" "${COMPREPLY[@]}"' _ \
        "$prefixo/share/bash-completion/completions/zel" "$zel" "$@"
}
for comando in $comandos; do
    grep -qE "^\.B(R)? $comando\$" <<< "$pagina" || falhar "no $comando in the manual page"
    oferece "$comando" ""
    for opcao in $("$zel" "$comando" --help | grep -oE -- '--[a-z]+(-[a-z]+)*' | sort -u); do
        grep -qE -- "^\.(B|BI|BR) .*$opcao( |\$)" <<< "$pagina" ||
            falhar "no $opcao in the manual page"
        oferece "$opcao" "$comando" --
    done
done
oferece --version --ver
oferece ZEL_JA_PAGO codigo ZEL_JA
oferece gravar config g
oferece data consultar d
[[ ! -f $3/cupom.png ]] || oferece generico-58mm imprimir --perfil gen
echo "installed, used, explained"
