// SPDX-License-Identifier: MIT
// What a till in JavaScript would use in place of this library: the node-sped-nfe package builds the
// same items (product, ICMS00, PIS, COFINS) and the text of the document, in memory alone. Says, as
// JSON, how many microseconds one item took: median of the documents, after the compiler is warm.
//   node par.mjs DIRECTORY_OF_NODE_MODULES
import { createRequire } from "node:module";
import { readFileSync } from "node:fs";
import { pathToFileURL } from "node:url";

const raiz = process.argv[2];
const pacote = `${raiz}/node-sped-nfe`;
const versao = JSON.parse(readFileSync(`${pacote}/package.json`, "utf8")).version;
const entrada = createRequire(`${raiz}/`).resolve("node-sped-nfe");
const { Make } = await import(pathToFileURL(entrada));

const ITENS = 100, AQUECIMENTO = 300, MEDIDOS = 700;

const produto = (i) => ({
    cProd: String(i + 1), cEAN: "SEM GTIN", xProd: `Produto ${i + 1}`, NCM: "22021000", CFOP: "5102",
    uCom: "UN", qCom: "2.0000", vUnCom: "10.00", vProd: "20.00", cEANTrib: "SEM GTIN", uTrib: "UN",
    qTrib: "2.0000", vUnTrib: "10.00", indTot: "1",
});
const contribuicao = { CST: "01", vBC: "20.00" };

async function documento() {
    const nota = new Make();
    nota.tagInfNFe({ Id: null, versao: "4.00" }); // the oldest layout that it knows
    nota.tagIde({
        cUF: "43", cNF: "12345678", natOp: "VENDA", mod: "65", serie: "1", nNF: "2",
        dhEmi: "2026-11-25T08:00:00-03:00", tpNF: "1", idDest: "1", cMunFG: "4314902", tpImp: "4",
        tpEmis: "1", tpAmb: "2", finNFe: "1", indFinal: "1", indPres: "1", procEmi: "0", verProc: "1",
    });
    nota.tagEmit({ CNPJ: "11111111111111", xNome: "LOJA", IE: "1234567890", CRT: "3" });
    await nota.tagProd(Array.from({ length: ITENS }, (_, i) => produto(i)));
    for (let i = 0; i < ITENS; i++) {
        nota.tagProdICMS(i, {
            orig: "0", CST: "00", modBC: "3", vBC: "20.00", pICMS: "18.00", vICMS: "3.60",
        });
        nota.tagProdPIS(i, { ...contribuicao, pPIS: "1.65", vPIS: "0.33" });
        nota.tagProdCOFINS(i, { ...contribuicao, pCOFINS: "7.60", vCOFINS: "1.52" });
    }
    return nota.xml();
}

const texto = await documento();
const montados = texto.split("<det ").length - 1;
if (montados !== ITENS || !texto.includes("<vCOFINS>1.52</vCOFINS>")) {
    console.error(`the package built ${montados} of ${ITENS} items`);
    process.exit(1);
}
const tempos = [];
for (let vez = 0; vez < AQUECIMENTO + MEDIDOS; vez++) {
    const inicio = performance.now();
    await documento();
    if (vez >= AQUECIMENTO) tempos.push(performance.now() - inicio);
}
tempos.sort((a, b) => a - b);
console.log(JSON.stringify({
    node: process.version, versao, item_us: (tempos[MEDIDOS / 2] * 1000) / ITENS,
}));
