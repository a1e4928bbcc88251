#include "ZEL_FelborFramework.h"
#include "documento/ZEL_Digest.h"
#include "util/Latin1.h"

#include <gtest/gtest.h>

using namespace zel;

// The document taken from the wrong place, or its bytes changed on the way. The digest
// was computed apart, over the UTF-8 text of infNFe with xmlns in front and nItem in double quotes.
TEST(Digest, is_the_same_however_the_document_is_wrapped) {
    constexpr std::string_view kNfe =
        "<NFe xmlns=\"urn:n\"><infNFe Id=\"NFe1\" versao=\"3.10\"><emit><xNome>Pão &amp; Cia"
        "</xNome></emit><det nItem='1'><a>1</a></det></infNFe>"_l1;
    const std::string nfe(kNfe);
    const std::string assinatura = "<Signature><x>1</x></Signature></NFe>";
    for (const std::string &xml :
         {nfe + "</NFe>", nfe + assinatura, "<?xml version=\"1.0\"?>" + nfe + assinatura,
          "<enviNFe><idLote>1</idLote>" + nfe + assinatura + "</enviNFe>",
          "<enviNFe>" + nfe + "</NFe></enviNFe>"}) {
        std::string digest;
        EXPECT_EQ(fnGerarDigestValue(xml, digest), ZEL_OK) << xml;
        EXPECT_EQ(digest, "FBFUQdZijVXNc2cxuJ9xHnx0Chc=") << xml;
    }
}

TEST(Digest, unreadable_documents_are_refused) {
    for (const std::string_view xml : {"", "texto", "<NFe>", "<NFe></NFe>", "<?xml?><x/>",
                                       "<enviNFe></enviNFe>", "<?xml?><NFe><a></NFe>"}) {
        std::string digest = "intacto";
        EXPECT_EQ(fnGerarDigestValue(xml, digest), ZEL_RECUSADO) << xml;
        EXPECT_EQ(digest, "intacto");
    }
}
