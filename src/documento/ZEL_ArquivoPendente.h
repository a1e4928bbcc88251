// A file that changes together with the configuration. Its new content waits complete under a name
// of its own while the configuration is saved, then takes the file's place; the saved configuration
// is the moment at which the change happens. A process that dies in between leaves the waiting
// file, and the next one asks whether it belongs to the configuration it finds: put in place, or
// dropped.
#pragma once

#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "util/Arquivo.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zel {

// The values that the changed keys hold now, for putting them back.
std::vector<Alteracao> valoresAtuais(std::span<const Alteracao> alteracoes);

struct Espera;

class ArquivoPendente {
public:
    // File names in the data directory.
    constexpr ArquivoPendente(std::string_view nome, std::string_view nomePendente, Acesso acesso)
        : nome_(nome), nomePendente_(nomePendente), acesso_(acesso) {}

    std::string caminho() const;

    Leitura lerPendente(std::string &conteudo) const;

    // What waits could not be read: until `resolver` has, nothing may be written over it.
    void duvidar() { resto_ = Resto::kDesconhecido; }

    // Finishes what an earlier failure of this process left; call before any other change of the
    // file. 1 or -52.
    int limpar();

    // Settles what a dead process left: `pertence(conteudo)` tells whether the waiting content
    // belongs to the configuration. Afterwards nothing waits. 1 or -52.
    template <class Pertence>
    int resolver(Pertence pertence) {
        std::string conteudo;
        switch (lerPendente(conteudo)) {
        case Leitura::kInexistente:
            resto_ = Resto::kNada;
            break;
        case Leitura::kFalha:
            duvidar();
            break;
        case Leitura::kLido:
            resto_ = pertence(conteudo) ? Resto::kConfirmado : Resto::kAbandonado;
        }
        return limpar();
    }

private:
    friend int confirmarJuntos(std::span<const Espera> esperas,
                               std::span<const Alteracao> alteracoes);

    // What is left to do: find out, drop the waiting file, put it in place, flush the directory
    // behind that.
    enum class Resto { kNada, kDesconhecido, kAbandonado, kConfirmado, kADescarregar };

    std::string caminhoPendente() const;
    int escrever(std::string_view conteudo);
    int tomarLugar();
    static int escreverTodos(std::span<const Espera> esperas);
    static void concluirTodos(std::span<const Espera> esperas);
    static void julgarTodos(std::span<const Espera> esperas, Resto resto);

    std::string_view nome_;
    std::string_view nomePendente_;
    Acesso acesso_;
    Resto resto_ = Resto::kNada;
};

// A file and what it is to hold.
struct Espera {
    ArquivoPendente &arquivo;
    std::string_view conteudo;
    // A later process judges it by the next one of the commit: in place before that one is.
    bool julgadoPeloSeguinte = false;
};

// Changes files and configuration together; the files take their places in the order given. 1; -1,
// -40, -52 with all of it as it was.
int confirmarJuntos(std::span<const Espera> esperas, std::span<const Alteracao> alteracoes);

} // namespace zel
