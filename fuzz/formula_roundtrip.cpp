// Fuzzes the unparsers against the parsers: the first byte picks the formula type,
// the base cell and the decoding (bytes as Latin-1 or raw 16-bit units). Every text the A1 parser
// accepts is unparsed in A1 and in R1C1, and each text is parsed back in its own
// notation: both must give the first parse's bytes, tokens and added data alike.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "../tests/formula/FormulaModel.h"
#include "formula/Formula.h"
#include "formula/FormulaParser.h"
#include "formula/FormulaR1C1Parser.h"
#include "formula/FormulaR1C1Unparser.h"
#include "formula/FormulaUnparser.h"

namespace {

std::u16string Decode(const uint8_t* p, size_t n, bool bRaw) {
  std::u16string s;
  if (bRaw) {
    for (size_t i = 0; i + 1 < n; i += 2) s += static_cast<char16_t>(p[i] | (p[i + 1] << 8));
  } else {
    for (size_t i = 0; i < n; ++i) s += static_cast<char16_t>(p[i]);
  }
  for (char16_t& c : s) {
    if (c == 0) c = u' ';
  }
  return s;
}

[[noreturn]] void Fail(const char* pszWhat, const std::u16string& sText,
                       const std::u16string& sBack, const CFormula& a, const CFormula& b) {
  std::fprintf(stderr, "%s\n text: %s\n back: %s\n first:  %s\n second: %s\n", pszWhat,
               Narrow(sText).c_str(), Narrow(sBack).c_str(), FormulaHex(a).c_str(),
               FormulaHex(b).c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
  if (nSize < 1 || nSize > 4096) return 0;
  const unsigned cMode = pData[0];
  const auto type = static_cast<CFormulaBase::EFormulaType>((cMode & 0x0F) % 11);
  static const TCell kBases[] = {TCell(0, 0), TCell(4, 2), TCell(65535, 255), TCell(1000, 100)};
  const TCell base = kBases[(cMode >> 4) & 3];
  const std::u16string sText = Decode(pData + 1, nSize - 1, (cMode & 0x40) != 0);

  TFormulaModel model;
  CFormula first;
  {
    CBookModelParser<CFormulaParser> parser(model, nullptr, nullptr, base, true);
    if (parser.Parse(sText.c_str(), type) != 0) return 0;
    parser.GetParseResults(&first);
  }
  for (const bool bR1C1 : {false, true}) {
    std::u16string sBack;
    bool bOk;
    if (bR1C1) {
      CBookModelUnparser<CFormulaR1C1Unparser> u(model, nullptr, nullptr, &first, type, base, 1);
      bOk = u.Unparse(sBack);
    } else {
      CBookModelUnparser<CFormulaUnparser> u(model, nullptr, nullptr, &first, type, base, 1);
      bOk = u.Unparse(sBack);
    }
    CFormula second;
    if (!bOk) Fail("unparse failed", sText, sBack, first, second);
    int nResult;
    if (bR1C1) {
      CBookModelParser<CFormulaR1C1Parser> parser(model, nullptr, nullptr, base, type, 1);
      nResult = parser.Parse(sBack.c_str(), type);
      if (nResult == 0) parser.GetParseResults(&second);
    } else {
      CBookModelParser<CFormulaParser> parser(model, nullptr, nullptr, base, true);
      nResult = parser.Parse(sBack.c_str(), type);
      if (nResult == 0) parser.GetParseResults(&second);
    }
    if (nResult != 0)
      Fail(bR1C1 ? "R1C1 text does not parse" : "A1 text does not parse", sText, sBack, first,
           second);
    if (!(first == second))
      Fail(bR1C1 ? "R1C1 bytes differ" : "A1 bytes differ", sText, sBack, first, second);
  }
  return 0;
}
