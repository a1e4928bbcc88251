// SPDX-License-Identifier: MIT
// The table of classes of IBS and CBS that the shop's accountant fills in, a CSV with ";". Lines of
// three columns, in any order; blank ones and those that begin with "#" are passed over, a decimal
// comma is taken, and so is the mark that spreadsheets put in front of UTF-8.
//
//   CST;cClassTrib;reducao      the heading, may be missing
//   000;000001;0                a class: reduction of the rates in percent, up to 4 decimals
//   200;200003;100              100: rate zero
//   410;410999;-                "-": exempt, immune...: CST and class are written alone
//   ncm;1905;200034             what has this NCM, or one that begins so, is of this class
//   produto;101;200003          this product (cProd) is of this class
#pragma once

#include "base/Recusa.h"
#include "config/Configuracao.h"

#include <string>
#include <string_view>

namespace zel::envio {

// The file's text into ibsCbs.classes, produtos and ncm. A product that has its class already is
// refused: two places would have to agree. A line is named by its number: another file, of a
// secret, may have been named by mistake.
void lerClasses(std::string_view csv, std::string_view arquivo, Configuracao &config,
                Recusas &recusas);

// Every class that something names is in the table, where the plain one (000001) is always.
void conferirClasses(Configuracao &config, Recusas &recusas);

// Class and CST go together: the first three digits of a cClassTrib are its CST (table of
// cClassTrib, Portal Nacional da NF-e).
bool classeDoCst(std::string_view CST, std::string_view cClassTrib);

} // namespace zel::envio
