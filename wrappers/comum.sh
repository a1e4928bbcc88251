# SPDX-License-Identifier: MIT
# What the tests of all languages share; they are called as
#   wrappers/LANGUAGE/testar LIBRARY DIRECTORY
# with the shared object and a directory for what is compiled. They end with 0, with 1 and what
# failed, or with 77 and the reason why they cannot run here.
# ZEL_PRECARGA names what is loaded in front of the library, if any: the runtime of a sanitizer.
set -euo pipefail
biblioteca=$(realpath "$1")
trabalho=$(realpath -m "$2")
aqui=$(cd "$(dirname "${BASH_SOURCE[1]}")" && pwd)
casos=$aqui/../casos.tsv
entradas=$aqui/../entradas.tsv
andamento=$aqui/../andamento.tsv
mkdir -p "$trabalho"
dados=$(mktemp -d "${TMPDIR:-/tmp}/zel-wrapper.XXXXXX")
trap 'rm -rf "$dados"' EXIT

ausente() {
    echo "absent: $1"
    exit 77
}

exigir() {
    command -v "$1" > /dev/null || ausente "$1 is not installed"
}

# An empty directory for the library's files.
vazio() {
    mktemp -d "$dados/caixa.XXXXXX"
}

# A program that loads the library. The runtimes of other languages keep memory to their end, and
# handle some faults of memory themselves.
executar() {
    if [[ -n ${ZEL_PRECARGA:-} ]]; then
        env LD_PRELOAD="$ZEL_PRECARGA" \
            ASAN_OPTIONS=detect_leaks=0:handle_segv=0:verify_asan_link_order=0 "$@"
    else
        "$@"
    fi
}

# The receipt that every example prints, as a check that it went all the way.
conferir_exemplo() {
    local esperado
    for esperado in "total: 17.06" "troco: 42.94" "Pão francês" "ZEL_CANCELAMENTO_GRAVADO" \
        "Encerramento antes de o total estar pago, ou depois do fim do cupom."; do
        grep -qF "$esperado" "$1" || { cat "$1"; echo "no \"$esperado\" in the example's output"; exit 1; }
    done
}

# The first program of the README, or the one that $3 counts, in the language that its block names, for
# the directory $2 in the place of the one that it names.
programa_do_leiame() {
    awk -v bloco="\`\`\`$1" -v qual="${3:-1}" \
        '$0 == bloco { dentro = ++vistos == qual; next } /^```/ { dentro = 0 } dentro' \
        "$aqui/README.md" | sed -e "s|/var/lib/caixa1|$2|" -e "s|/caminho/wrappers|$aqui/..|"
}

# It finds the library by its name alone, and prints its receipt.
rodar_leiame() {
    LD_LIBRARY_PATH=$(dirname "$biblioteca") executar "$@" > "$trabalho/leiame.txt"
    grep -qF "Café 500 g" "$trabalho/leiame.txt" ||
        { cat "$trabalho/leiame.txt"; echo "the README's program prints no receipt"; exit 1; }
}
