// SPDX-License-Identifier: MIT
// Configuration file: whatever stands in it, the library starts; what it completed is complete the
// next time, and a change is found again by the next process.
#include "PastaDoAlvo.h"

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"

using namespace zel;

void jogar(std::string_view texto) {
    static const PastaDoAlvo pasta;
    const auto carga = fnXML_CarregarXML(texto, ValoresConfig{});
    const auto relida = fnXML_CarregarXML(carga ? carga->arquivo.texto : "", ValoresConfig{});
    exigir(!carga ||
           (relida->arquivo.texto == carga->arquivo.texto && relida->inteira >= carga->inteira));
    if (texto.size() % 4 != 0) return; // the rest is slow

    pasta.esvaziar();
    pasta.gravar("ZEL_Framework.xml", texto);
    exigir(inicializarConfig() == ZEL_OK);
    const std::string antes(valorConfig(R"(IDE\nNF)"_chave));
    const int codigo = fnRegAlterarValor_ZEL(R"(IDE\nNF)", "7654321");
    exigir(valorConfig(R"(IDE\nNF)"_chave) == (codigo == ZEL_OK ? "7654321" : antes));
    if (carga && !carga->inteira) return;
    exigir(codigo == ZEL_OK && inicializarConfig() == ZEL_OK);
    exigir(valorConfig(R"(IDE\nNF)"_chave) == "7654321");
}
