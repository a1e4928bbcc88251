// What the shared object shows to the loader, read from its own tables: the exported functions are
// those of the header and nothing else, and it needs no library beyond the promised ones.
#include "blackbox/Caixa.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>

namespace {

// A 64-bit ELF file of this machine's byte order, read whole.
class Elf {
public:
    explicit Elf(const char *caminho) {
        std::ifstream arquivo(caminho, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(arquivo), {});
    }

    bool valido() const {
        return bytes_.size() >= sizeof(Elf64_Ehdr) &&
               bytes_.compare(0, SELFMAG, ELFMAG, SELFMAG) == 0 && bytes_[EI_CLASS] == ELFCLASS64;
    }

    // Calls `funcao(entry, string table offset)` for each entry of the section of that type.
    template <typename Entrada, typename Funcao>
    void percorrer(Elf64_Word tipo, Funcao funcao) const {
        const auto cabecalho = ler<Elf64_Ehdr>(0);
        const auto secao = [&](std::size_t i) {
            return ler<Elf64_Shdr>(cabecalho.e_shoff + i * cabecalho.e_shentsize);
        };
        for (std::size_t i = 0; i < cabecalho.e_shnum; ++i) {
            const Elf64_Shdr tabela = secao(i);
            if (tabela.sh_type != tipo) continue;
            const std::size_t nomes = secao(tabela.sh_link).sh_offset;
            for (std::size_t j = 0; j < tabela.sh_size / sizeof(Entrada); ++j)
                funcao(ler<Entrada>(tabela.sh_offset + j * sizeof(Entrada)), nomes);
        }
    }

    std::string nome(std::size_t posicao) const { return bytes_.c_str() + posicao; }

private:
    template <typename Estrutura>
    Estrutura ler(std::size_t posicao) const {
        Estrutura estrutura;
        std::memcpy(&estrutura, bytes_.data() + posicao, sizeof estrutura);
        return estrutura;
    }

    std::string bytes_;
};

} // namespace

// Would catch a function missing from the version script, and an internal symbol that leaks out and
// may then collide with the application's.
TEST(Exportados, simbolos_sao_as_funcoes_do_cabecalho) {
    const Elf elf(ZEL_BIBLIOTECA);
    ASSERT_TRUE(elf.valido());
    std::multiset<std::string> exportados;
    elf.percorrer<Elf64_Sym>(SHT_DYNSYM, [&](const Elf64_Sym &simbolo, std::size_t nomes) {
        // SHN_ABS is the name of the version itself.
        if (simbolo.st_shndx != SHN_UNDEF && simbolo.st_shndx != SHN_ABS)
            exportados.insert(elf.nome(nomes + simbolo.st_name));
    });
    const Caixa caixa;
    const std::vector<std::string> &nomes = caixa.funcoes().nomes();
    EXPECT_EQ(exportados, std::multiset<std::string>(nomes.begin(), nomes.end()));
    EXPECT_EQ(exportados.size(), 47U);
}

// Would catch a dependency that a till would have to install.
TEST(Exportados, precisa_so_das_bibliotecas_prometidas) {
    constexpr std::string_view kPrometidas[] = {
        "libc.so", "libm.so", "libstdc++.so", "libgcc_s.so", "libhpdf", "libnettle.so", "ld-linux"};
    const Elf elf(ZEL_BIBLIOTECA);
    ASSERT_TRUE(elf.valido());
    elf.percorrer<Elf64_Dyn>(SHT_DYNAMIC, [&](const Elf64_Dyn &entrada, std::size_t nomes) {
        if (entrada.d_tag != DT_NEEDED) return;
        const std::string nome = elf.nome(nomes + entrada.d_un.d_val);
        // The sanitizers' runtimes come with a build for tests alone.
        if (nome.starts_with("libasan.") || nome.starts_with("libubsan.")) return;
        EXPECT_TRUE(std::any_of(std::begin(kPrometidas), std::end(kPrometidas),
                                [&](std::string_view p) { return nome.starts_with(p); }))
            << nome;
    });
}
