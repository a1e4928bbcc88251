// SPDX-License-Identifier: MIT
// Sends bytes to a printer, or into a file, in bounded time: whatever the other side does, the call
// ends when its time is over, and reports how far it came.
#pragma once

#include "Estado.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace zel::cupom {

enum class Envio {
    kFeito,
    kDestinoInvalido, // no address
    kArquivo,         // the file was not written; errno
    kAusente,         // no such device, host or network
    kRecusado,        // the device is there and does not take the bytes: in use, no permission
    kTempoEsgotado,   // it did not answer or stopped taking bytes
    kInterrompido,    // it failed or went away half-way
    kParado,          // it says itself why it does not print: Enviado::estado
};

struct Enviado {
    Envio resultado = Envio::kFeito;
    std::size_t bytes = 0; // that the device took; of a socket, that the other side received
    Estado estado = Estado::kNaoDisse; // what a printer said last
};

// `destino`: "tcp://host", "tcp://host:port" ("tcp://[::1]:9100" for IPv6, port 9100 when not
// given), or a path. A path of a character device or a pipe is written to; another one is a file,
// replaced as a whole, but none is made in /dev (other than /dev/shm). SIGPIPE is not raised.
//
// With a `familia` a network printer and a device, where it may be read, are asked for their state:
// before the first byte, none of which is sent to one that cannot print, and, when they answered,
// after the last one.
Enviado enviar(const std::string &destino, std::string_view bytes, std::chrono::milliseconds prazo,
               const FamiliaDeEstado *familia = nullptr);

} // namespace zel::cupom
