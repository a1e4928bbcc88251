// SPDX-License-Identifier: MIT
// Documents of tests in a queue of their own.
#pragma once

#include "fila/Fila.h"

#include "apoio/PastaTemporaria.h"
#include "apoio/Trecho.h"

#include <gtest/gtest.h>
#include <string>

namespace zel::envio::ensaio {

inline constexpr const char *kLoja = "12345678000195";
inline constexpr Momento kHora = 3600 * 1000;
inline constexpr Momento kMeioDia = 1790000000000;

inline std::string chaveDe(std::int64_t numero, int serie = 1) {
    const std::string n = std::to_string(numero), s = std::to_string(serie);
    const std::string chave = "352609" + std::string(kLoja) + "65" +
                              std::string(3 - s.size(), '0') + s + std::string(9 - n.size(), '0') +
                              n + "11234567";
    return chave + std::string(44 - chave.size(), '0');
}

inline Achado nota(std::int64_t numero, const std::string &caixa = "/caixas/1/") {
    Achado achado;
    achado.caixa = caixa;
    achado.origem = "NFCe_" + std::to_string(numero) + ".xml";
    achado.tipo = Tipo::kNfce;
    achado.original = "<NFe>" + std::to_string(numero) + "</NFe>";
    achado.chave = chaveDe(numero);
    achado.cnpj = kLoja;
    achado.serie = 1;
    achado.numero = achado.ultimo = numero;
    achado.tpAmb = 2;
    achado.tpEmis = 1;
    achado.dhEmi = "2026-09-21T12:00:00-03:00";
    achado.total = 1234;
    return achado;
}

inline Achado pedido(Tipo tipo, std::int64_t numero, std::int64_t ultimo = 0) {
    Achado achado = nota(numero);
    achado.tipo = tipo;
    achado.original = "<Pedido>" + std::to_string(numero) + '-' + std::to_string(ultimo);
    achado.ultimo = ultimo == 0 ? numero : ultimo;
    if (tipo == Tipo::kInutilizacao) achado.chave.clear();
    return achado;
}

inline Resposta resposta(int cStat, Desfecho desfecho) {
    Resposta r;
    r.cStat = cStat;
    r.xMotivo = "motivo " + std::to_string(cStat);
    r.desfecho = desfecho;
    return r;
}

class ComFila {
public:
    ComFila() { reabrir(); }
    std::string caminho() const { return pasta_ / "fila/"; }
    void reabrir() {
        fila.reset();
        fila = Fila::abrir(caminho(), recusas);
        EXPECT_TRUE(recusas.nenhuma()) << recusas.texto();
    }
    std::int64_t achar(const Achado &achado) { return *fila->achar(achado, kMeioDia, recusas); }
    // Along a way that the table has.
    void levar(std::int64_t id, Estado a, const std::optional<Resposta> &com = {}) {
        static constexpr Estado kCaminho[] = {Estado::kAchado, Estado::kTraduzido,
                                              Estado::kAssinado, Estado::kEnviado,
                                              Estado::kRespondido};
        const auto agora = [&] { return fila->ficha(id)->estado; };
        for (std::size_t i = 0; agora() != a && !passa(agora(), a) && i + 1 < 5; ++i)
            if (agora() == kCaminho[i])
                fila->mudar(id, kCaminho[i], kCaminho[i + 1], {}, kMeioDia, recusas);
        Mudanca mudanca;
        mudanca.resposta = com;
        if (agora() != a) fila->mudar(id, agora(), a, mudanca, kMeioDia, recusas);
        EXPECT_EQ(agora(), a);
        EXPECT_TRUE(recusas.nenhuma()) << recusas.texto();
    }

    Recusas recusas;
    std::unique_ptr<Fila> fila;

private:
    PastaTemporaria pasta_;
};

} // namespace zel::envio::ensaio
