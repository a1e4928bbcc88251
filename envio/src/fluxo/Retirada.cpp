// SPDX-License-Identifier: MIT
// Documents that their till takes back, and those that it sends again after that.
#include "fluxo/Fluxo.h"

#include "fluxo/Destinos.h"

#include <utility>

namespace zel::envio {

namespace {

// What has the place of a document that was taken back: it says so, or has its number since.
std::optional<Ficha> quemTomouOLugar(Fila &fila, const Ficha &ficha) {
    if (ficha.tipo != Tipo::kNfce) return {};
    if (auto outra = substituta(fila, ficha)) return outra;
    std::optional<Ficha> achada;
    for (Ficha &esta : fila.porNumero(ficha.cnpj, ficha.tpAmb, ficha.serie, ficha.numero))
        if (esta.id > ficha.id && esta.estado != Estado::kRetirado &&
            esta.estado != Estado::kRecusado)
            achada = std::move(esta);
    return achada;
}

std::string comoEsta(const Ficha &ficha) {
    if (ficha.estado != Estado::kEntregue) return std::string(nomeDe(ficha.estado));
    return std::string(nomeDe(ficha.desfecho)) + ", protocolo " + ficha.protocolo;
}

} // namespace

bool Fluxo::retirar(std::int64_t id, const std::string &motivo) {
    const auto ficha = meios_.fila.ficha(id);
    if (!ficha) return false;
    if (ficha->estado == Estado::kRetirado) return true;
    if (jaSaiu(meios_.fila, *ficha)) return false;
    const bool pode = ficha->estado != Estado::kPerguntar || nuncaSaiu(meios_.fila, *ficha);
    return pode && passa(ficha->estado, Estado::kRetirado) &&
           mudar(*ficha, Estado::kRetirado, {.motivo = motivo});
}

std::optional<std::string> Fluxo::reenviar(std::int64_t id) {
    const auto ficha = meios_.fila.ficha(id);
    if (!ficha) return {};
    const bool assinada = !meios_.fila.mensagem(id).empty();
    const bool recusada = ficha->estado == Estado::kRecusado && !assinada;
    if (ficha->estado != Estado::kRetirado && !recusada) return {};
    if (const auto outra = quemTomouOLugar(meios_.fila, *ficha))
        return std::string(recusada ? "foi recusada" : "foi retirada pelo caixa") + ", e a nota " +
               std::to_string(outra->numero) + " (" + outra->chave +
               ") tomou o seu lugar: " + comoEsta(*outra) + "; não a emita outra vez";
    mudar(*ficha, assinada ? Estado::kAssinado : Estado::kAchado, {.motivo = "", .proximo = 0});
    return {};
}

} // namespace zel::envio
