// The sections of the document in progress, by the numbers that the section check takes.
#pragma once

namespace zel {

enum class Secao { kAbertura, kVenda, kTotalizacao, kPagamento, kTransporte, kEncerramento };

} // namespace zel
