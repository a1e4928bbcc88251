<?php
// SPDX-License-Identifier: MIT
// All of the package: require __DIR__ . '/zel_felbor.php';

declare(strict_types=1);

require_once __DIR__ . '/src/Valores.php';
require_once __DIR__ . '/src/Identificacao.php';
require_once __DIR__ . '/src/Autorizacao.php';
require_once __DIR__ . '/src/Chamador.php';
require_once __DIR__ . '/src/Gerado.php';
require_once __DIR__ . '/src/Andamento.php';
require_once __DIR__ . '/src/Cupom.php';
