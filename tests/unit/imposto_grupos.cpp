// SPDX-License-Identifier: MIT
// Every tax group from its key of choice through the template to the totals: a group that one of
// them does not know is sold and refused, or sold and not summed.
#include "apoio/Imposto.h"
#include "imposto/GruposContribuicao.h"
#include "imposto/GruposICMS.h"
#include "imposto/Somas.h"
#include "imposto/ZEL_TrataImposto.h"
#include "secao/Conformidade.h"
#include "secao/Moldes.h"
#include "texto/Numero.h"

#include <set>

namespace zel {

namespace {

struct Tributo {
    std::string_view nome;
    std::span<const Grupo> grupos;
};
const Tributo kTributos[] = {
    {"ICMS", gruposICMS()}, {"PIS", gruposPIS()}, {"COFINS", gruposCOFINS()}};

// What they build is kept although the section check refuses it.
const std::set<std::string_view> kRecusados{"ICMS10", "ICMS30"};
// Adds nothing to the totals: what is summed has another spelling.
const std::set<std::string_view> kForaDasSomas{"ICMSSN900"};

class Grupos : public ComImposto {
protected:
    void SetUp() override {
        ComImposto::SetUp();
        construirMoldes();
        // Sold with every tax in force.
        configurar(R"(IMPOSTO\ICMS\ICMSSN102)", "Orig=0 CSOSN=102");
    }
    void TearDown() override { liberarMoldes(); }

    static void definir(Chave chave, std::string_view valor) {
        ASSERT_EQ(fnRegAlterarValor_ZEL(caminhoDa(chave), valor), ZEL_OK);
    }
    // What a key of the element may hold.
    static std::string_view valorPara(const Elemento &elemento) {
        if (elemento.formato == Formato::kDecimal || elemento.formato == Formato::kValor)
            return "1.00";
        return elemento.nome == "UFST" ? "SP" : "1";
    }
    // The group's own keys filled, and with them the one that chooses it; or all emptied again.
    static void preencher(const Grupo &grupo, bool cheio) {
        for (const Elemento &elemento : grupo.lista())
            if (elemento.chave && elemento.secao.empty())
                definir(*elemento.chave, cheio ? valorPara(elemento) : "");
        definir(*grupo.escolha, cheio ? "1" : "");
    }
    ST_tagZEL vendido() const {
        ST_tagZEL item = newST_tagZEL(false, "VENDA"), imposto("imposto");
        EXPECT_EQ(fnTratarImposto(presets, "T1800", "100.00", "2.0000", imposto), ZEL_OK);
        return item
            .addSubTag(grupo("prod cProd=1 cEAN=1 xProd=a NCM=22011000 CFOP=5102 uCom=UN qCom=1 "
                             "vUnCom=1 vProd=1 cEANTrib=1 uTrib=UN qTrib=1 vUnTrib=1 indTot=1"))
            .addSubTag(std::move(imposto));
    }
};

// Gives every value of the group another amount and says what the totals must have of them.
std::string trocarValores(ST_tagZEL &grupo, bool somado) {
    static constexpr std::string_view kSomados[] = {"vBC",     "vICMS", "vBCST",
                                                    "vICMSST", "vPIS",  "vCOFINS"};
    std::string esperado;
    int quantia = 10;
    for (const std::string_view nome : kSomados) {
        ST_tagZEL *valor = grupo.getSubTag(nome);
        if (valor != nullptr) valor->setValor(formatarMoeda(++quantia));
        // The base of a contribution is summed nowhere.
        const bool conta = valor && somado && (nome != "vBC" || grupo.nome.starts_with("ICMS"));
        esperado += formatarMoeda(conta ? quantia : 0) + " ";
    }
    return esperado;
}

std::string somado(const ST_tagZEL &item) {
    const Somas s = somarItens(std::span(&item, 1));
    std::string texto;
    for (const double soma : {s.baseICMS, s.valorICMS, s.baseST, s.valorST, s.pis, s.cofins})
        texto += formatarMoeda(soma) + " ";
    return texto;
}

TEST_F(Grupos, da_escolha_aos_totais) {
    for (const auto &[tributo, grupos] : kTributos)
        for (const Grupo &linha : grupos) {
            const std::string nome(linha.nome.texto());
            if (!linha.escolha) continue;
            if (tributo == "ICMS") configurar(R"(IMPOSTO\ICMS\ICMSSN102)", "Orig=");
            preencher(linha, true);
            ST_tagZEL item = vendido();
            preencher(linha, false);
            configurar(R"(IMPOSTO\ICMS\ICMSSN102)", "Orig=0 CSOSN=102");
            const ST_tagZEL *tag = item.getSubTag("imposto")->getSubTag(tributo);
            ASSERT_NE(tag, nullptr) << nome << ": no key of choice in src/config/CatalogoTabela.h";
            ASSERT_EQ(tag->getSubTag(0)->nome, nome) << "not the one that its key chooses";
            ASSERT_EQ(verificarSecao(Secao::kVenda, item) == ZEL_OK, !kRecusados.contains(nome))
                << nome << ": not as its template in src/secao/Moldes.cpp has it";
            if (kRecusados.contains(nome)) continue;
            ST_tagZEL &guardado = *item.getSubTag("imposto")->getSubTag(tributo)->getSubTag(0);
            const std::string esperado = trocarValores(guardado, !kForaDasSomas.contains(nome));
            EXPECT_EQ(somado(item), esperado) << nome << ": not summed as its row says";
        }
}

TEST_F(Grupos, todo_molde_tem_a_sua_linha) {
    const ST_tagZEL &imposto = *moldeDaSecao(Secao::kVenda)->getSubTag("imposto");
    for (const auto &[tributo, grupos] : kTributos)
        for (const ST_tagZEL &molde : *imposto.getSubTag(tributo)->subTags)
            EXPECT_NE(procurarGrupo(grupos, molde.nome), nullptr)
                << molde.nome << ": no row in src/imposto/Grupos*.cpp";
}

} // namespace

} // namespace zel
