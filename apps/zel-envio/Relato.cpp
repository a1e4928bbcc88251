// SPDX-License-Identifier: MIT
#include "Relato.h"

#include "Html.h"
#include "Quadro.h"
#include "mensagem/Resposta.h"

#include <algorithm>

namespace zel::envio {

namespace {

std::string codigoDe(int cStat) {
    return cStat == 0 ? "" : " (" + std::to_string(cStat) + ")";
}

std::string linhaDoFim(const Ficha &antes, Estado para) {
    const std::string quem = tituloDe(antes) + ", " + antes.caixa + ": ";
    switch (para) {
    case Estado::kEntregue:
        return quem + std::string(nomeDe(antes.desfecho)) + codigoDe(antes.cStat);
    case Estado::kRecusado:
        return quem + "recusado" + codigoDe(antes.cStat) + ", precisa de alguém";
    case Estado::kRetirado:
        return quem + "retirado, não enviado";
    case Estado::kPerguntar:
        return quem + "sem resposta, será perguntado à SEFAZ";
    default:
        return {};
    }
}

} // namespace

// What quotes a till's file may quote a person.
void Relato::escrever(const std::string &linha) const {
    if (!linha.empty()) escrever_(semCpf(linha));
}

void Relato::mudou(const Ficha &antes, Estado para) {
    escrever(linhaDoFim(antes, para));
}

void Relato::disse(std::string_view linha) {
    escrever(std::string(linha));
}

void Relato::parou(std::string_view motivo) {
    {
        const std::lock_guard trava(porta_);
        if (parada_ == motivo) return;
        parada_ = motivo;
    }
    escrever("envio parado: " + std::string(motivo));
}

void Relato::respondeu(const ServicoVisto &visto) {
    const bool fora = visto.cStat == 0;
    const std::string qual = visto.cUF + "/" + std::to_string(visto.tpAmb);
    {
        const std::lock_guard trava(porta_);
        ++contadores_.respostas[{visto.servico, visto.cStat}];
        if (!fora) {
            auto &demora = contadores_.demoras[visto.servico];
            const auto classe = std::lower_bound(kDemoras.begin(), kDemoras.end(), visto.demora);
            ++demora.classes.at(static_cast<std::size_t>(classe - kDemoras.begin()));
            demora.soma += visto.demora;
            parada_.clear();
        }
        if (std::exchange(fora_[qual], fora) == fora) return;
    }
    escrever("SEFAZ " + qual +
             (fora ? ": sem resposta de " + visto.servico + ": " + visto.xMotivo
                   : ": responde outra vez"));
}

Contadores Relato::contadores() const {
    const std::lock_guard trava(porta_);
    return contadores_;
}

} // namespace zel::envio
