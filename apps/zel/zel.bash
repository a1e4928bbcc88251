# Completion of the command zel for bash. SPDX-License-Identifier: MIT
# Commands and options are those that its own help names.
_zel() {
    local atual=${COMP_WORDS[COMP_CWORD]} anterior=${COMP_WORDS[COMP_CWORD - 1]}
    local zel=${COMP_WORDS[0]} comando=${COMP_WORDS[1]} palavras
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        palavras=$("$zel" --help 2> /dev/null | sed -n 's/^  \([a-z][a-z]*\)  .*/\1/p')
        mapfile -t COMPREPLY < <(compgen -W "$palavras --help --version" -- "$atual")
        return
    fi
    case $anterior in
        --diretorio | --esquema | --caixa)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$atual")
            return
            ;;
        --itens | --documento | --retorno | --saida | --impressora | --pdf | --config)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$atual")
            return
            ;;
        --perfil)
            mapfile -t COMPREPLY < <(compgen -W "$("$zel" imprimir --perfis 2> /dev/null)" -- "$atual")
            return
            ;;
        --colunas)
            mapfile -t COMPREPLY < <(compgen -W "42 48" -- "$atual")
            return
            ;;
    esac
    if [[ $atual == --* ]]; then
        palavras=$("$zel" "$comando" --help 2> /dev/null | grep -oE -- '--[a-z]+(-[a-z]+)*' | sort -u)
        mapfile -t COMPREPLY < <(compgen -W "$palavras --help" -- "$atual")
        return
    fi
    case $comando in
        conferir)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$atual"; compgen -f -X '!*.xml' -- "$atual")
            ;;
        codigo)
            palavras=$("$zel" codigo 2> /dev/null | sed -n 's/^-\{0,1\}[0-9]* \(ZEL_[A-Z_]*\)$/\1/p')
            mapfile -t COMPREPLY < <(compgen -W "$palavras" -- "$atual")
            ;;
        config)
            # The second word of a form's line in the help.
            ((COMP_CWORD == 2)) || return
            palavras=$("$zel" config --help 2> /dev/null | sed -n 's/^  zel config \([a-z]*\).*/\1/p')
            mapfile -t COMPREPLY < <(compgen -W "$palavras" -- "$atual")
            ;;
        documento)
            if ((COMP_CWORD == 2)); then
                mapfile -t COMPREPLY < <(compgen -W "traduzir assinar verificar mostrar config" -- "$atual")
            elif [[ ${COMP_WORDS[2]} != config ]]; then
                compopt -o filenames
                mapfile -t COMPREPLY < <(compgen -f -- "$atual")
            fi
            ;;
        enviar)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$atual")
            ;;
        envio)
            if ((COMP_CWORD == 2)); then
                mapfile -t COMPREPLY < <(compgen -W "estado procurar exportar servico continuar inutilizar" -- "$atual")
            elif [[ ${COMP_WORDS[2]} == exportar ]] && ((COMP_CWORD == 4)); then
                compopt -o filenames
                mapfile -t COMPREPLY < <(compgen -f -- "$atual")
            fi
            ;;
        consultar)
            ((COMP_CWORD == 2)) || return
            mapfile -t COMPREPLY < <(compgen -W "numero data" -- "$atual")
            ;;
    esac
}
complete -F _zel zel
