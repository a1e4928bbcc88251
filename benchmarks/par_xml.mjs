// SPDX-License-Identifier: MIT
// What a sending program in JavaScript would begin with, on the documents that zel_documentos left:
// fast-xml-parser reads the till's document and writes it again (no rule of a translation yet), and
// xml-crypto signs the translated one as the layout has it (C14N, SHA-1, RSA-2048). Says, as JSON,
// the milliseconds of processor time of each, the median after the compiler is warm.
//   node par_xml.mjs DIRECTORY_OF_NODE_MODULES DIRECTORY_OF_SAMPLES ITEMS...
import { generateKeyPairSync } from "node:crypto";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";

const [raiz, amostras, ...tamanhos] = process.argv.slice(2);
const pedir = createRequire(`${raiz}/`);
const { XMLParser, XMLBuilder } = pedir("fast-xml-parser");
const { SignedXml } = pedir("xml-crypto");
const versao = (pacote) => JSON.parse(readFileSync(`${raiz}/${pacote}/package.json`, "utf8")).version;

const opcoes = { ignoreAttributes: false, preserveOrder: true, parseTagValue: false };
const leitor = new XMLParser(opcoes);
const escritor = new XMLBuilder(opcoes);
const { privateKey } = generateKeyPairSync("rsa", {
    modulusLength: 2048, privateKeyEncoding: { type: "pkcs8", format: "pem" },
    publicKeyEncoding: { type: "spki", format: "pem" },
});
const NORMAL = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";

function assinar(xml) {
    const assinatura = new SignedXml({
        privateKey, canonicalizationAlgorithm: NORMAL,
        signatureAlgorithm: "http://www.w3.org/2000/09/xmldsig#rsa-sha1",
    });
    assinatura.addReference({
        xpath: "//*[local-name(.)='infNFe']", digestAlgorithm: "http://www.w3.org/2000/09/xmldsig#sha1",
        transforms: ["http://www.w3.org/2000/09/xmldsig#enveloped-signature", NORMAL],
    });
    assinatura.computeSignature(xml, { location: { reference: "/*", action: "append" } });
    return assinatura.getSignedXml();
}

function mediana(trabalho) {
    const tempos = [];
    const fim = performance.now() + 4000;
    for (let vez = 0; vez < 10 || (vez < 200 && performance.now() < fim); vez++) {
        const antes = process.cpuUsage();
        trabalho();
        const { user, system } = process.cpuUsage(antes);
        tempos.push((user + system) / 1000);
    }
    const quentes = tempos.slice(Math.floor(tempos.length / 3)).sort((a, b) => a - b);
    return quentes[quentes.length >> 1];
}

const medidos = {};
for (const itens of tamanhos) {
    const doCaixa = readFileSync(`${amostras}/caixa-${itens}.xml`, "latin1");
    const traduzida = readFileSync(`${amostras}/traduzida-${itens}.xml`, "utf8");
    if (escritor.build(leitor.parse(doCaixa)).split("<det ").length - 1 !== Number(itens)
        || !assinar(traduzida).includes("<DigestValue>")) {
        console.error("the packages did not do their work");
        process.exit(1);
    }
    medidos[itens] = {
        ler_e_escrever: mediana(() => escritor.build(leitor.parse(doCaixa))),
        assinar: mediana(() => assinar(traduzida)),
    };
}
console.log(JSON.stringify({
    node: process.version, leitor: versao("fast-xml-parser"), assinatura: versao("xml-crypto"), medidos,
}));
