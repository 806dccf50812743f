// Fuzzes the A1 formula parser over the tests' model book: the first byte picks the
// decoding (UTF-8 or raw 16-bit units), the mode (English or local) and whether unknown
// names are created; the text is parsed in several formula types. A parse that succeeds must leave
// a stream that walks exactly to its end with the added data in step, within its bounds; a failure
// must report a code from 1 to 10 at a position inside the text.
#include <cstddef>
#include <cstdint>
#include <string>

#include "../tests/formula/ParserModel.h"

namespace {

std::u16string FromUtf8(const uint8_t* p, size_t n) {
  std::u16string s;
  for (size_t i = 0; i < n;) {
    unsigned c = p[i++];
    int nMore = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
    if (nMore) c &= 0x3F >> nMore;
    for (; nMore > 0 && i < n; nMore--) c = (c << 6) | (p[i++] & 0x3F);
    if (c >= 0x10000) {
      c -= 0x10000;
      s += static_cast<char16_t>(0xD800 + (c >> 10));
      s += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
      s += static_cast<char16_t>(c);
    }
  }
  return s;
}

void CheckStream(const CFormulaParser& parser) {
  CFormula f;
  parser.GetParseResults(&f);
  using FB = CFormulaBase;
  FB::TPostfixPtr p(f.GetPostfix()), a(f.GetAddedData());
  const FB::TPostfixPtr end(f.GetPostfix() + f.GetPostfixLen());
  const FB::TPostfixPtr addedEnd(f.GetAddedData() + f.GetAddedDataLen());
  while (p < end) {
    const unsigned char c = p.GetToken();
    const unsigned char cBase = FB::TokenBase(c);
    if (cBase == FB::tInvalid || cBase == 0) __builtin_trap();
    p.SkipAddedData(c, &a);
    if (addedEnd < a) __builtin_trap();
    p.NextToken(cBase);
  }
  if (p - end != 0 || a - addedEnd != 0) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
  if (nSize < 1) return 0;
  const uint8_t cMode = pData[0];
  std::u16string sText;
  if (cMode & 1) {
    for (size_t i = 1; i + 1 < nSize; i += 2)
      sText += static_cast<char16_t>(pData[i] | (pData[i + 1] << 8));
  } else {
    sText = FromUtf8(pData + 1, nSize - 1);
  }
  for (char16_t& c : sText)
    if (c == 0) c = u' ';
  CModelParser parser(TCell(5, 3));  // fresh per input: created names do not pile up
  parser.SetEnglish((cMode & 2) == 0);
  parser.SetCreateNames((cMode & 4) != 0);
  const CFormulaBase::EFormulaType kTypes[] = {CFormulaBase::ftCell, CFormulaBase::ftShared,
                                               CFormulaBase::ftName, CFormulaBase::ftCondFormat};
  for (CFormulaBase::EFormulaType type : kTypes) {
    const int nResult = parser.Parse(sText.c_str(), type);
    if (nResult == 0) {
      CheckStream(parser);
      continue;
    }
    if (parser.GetError() < 1 || parser.GetError() > 10) __builtin_trap();
    if (parser.GetErrorPos() < 0 || parser.GetErrorPos() > static_cast<int>(sText.size()))
      __builtin_trap();
  }
  return 0;
}
