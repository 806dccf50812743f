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
  TRoundTrip back[2];
  if (!RoundTrip(model, sText, type, base, first, back)) return 0;
  // The parser refuses a prefix of 256 characters or more as written; the unparser
  // writes a book between brackets, so a book named in 254 or 255 characters without
  // them cannot come back. Such texts are outside the round trip.
  for (const TFormulaModel::TExtern& e : model.m_Externs)
    if (e.sBook.size() + e.sSheet1.size() + e.sSheet2.size() + 3 >= 256) return 0;
  for (const TRoundTrip& b : back) {
    const char* pszWhat = !b.bUnparsed           ? "unparse failed"
                          : b.nReparse != 0      ? "text does not parse back"
                          : !(first == b.second) ? "bytes differ"
                                                 : nullptr;
    if (pszWhat) Fail(pszWhat, sText, b.sBack, first, b.second);
  }
  return 0;
}
