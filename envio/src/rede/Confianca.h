// SPDX-License-Identifier: MIT
// Who may vouch for a server's certificate, read once for all connections of a process: a copy of
// the system's list for each till would take more memory than all the rest of it.
#pragma once

#include "assinatura/OpenSsl.h"

#include <memory>
#include <mutex>
#include <string>

namespace zel::envio {

// Several threads may use one object.
class Confianca {
public:
    // PEM; empty: the system's, where OpenSSL looks for them.
    explicit Confianca(std::string arquivo) : arquivo_(std::move(arquivo)) {}

    // Null when they cannot be read. A file that was written since is read anew.
    std::shared_ptr<X509_STORE> autoridades();

private:
    const std::string arquivo_;
    std::mutex porta_;
    std::string marca_; // of the file as it was read
    std::shared_ptr<X509_STORE> lidas_;
};

} // namespace zel::envio
