// SPDX-License-Identifier: MIT
#include "fluxo/Vigia.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>

namespace zel::envio {

namespace {

// Takes what there is to read, which nobody looks at: the directories are.
void esvaziar(int fd) {
    alignas(inotify_event) std::array<char, 4096> lixo;
    while (read(fd, lixo.data(), lixo.size()) > 0) {
    }
}

} // namespace

Vigia::Vigia(const std::vector<std::string> &pastas)
    : eventos_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      chamada_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    for (const auto &pasta : pastas)
        inotify_add_watch(eventos_.fd(), pasta.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO);
}

void Vigia::esperar(Milissegundos tempo) {
    std::array<pollfd, 2> quem{{{eventos_.fd(), POLLIN, 0}, {chamada_.fd(), POLLIN, 0}}};
    const auto limite = std::clamp<Milissegundos::rep>(tempo.count(), 0, 60 * kSegundo);
    poll(quem.data(), quem.size(), static_cast<int>(limite));
    for (const auto &este : quem)
        if ((este.revents & POLLIN) != 0) esvaziar(este.fd);
}

void Vigia::acordar() const {
    const std::uint64_t um = 1;
    [[maybe_unused]] const auto escrito = write(chamada_.fd(), &um, sizeof um);
}

} // namespace zel::envio
