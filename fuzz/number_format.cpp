// Fuzzes the number-format parser and renderer: the input's first bytes pick a value and
// a parse type, the rest is the format text (UTF-16 code units, two bytes each). Every
// format that parses is rendered, written back and stored, and must read back.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "format/ValFormat.h"
#include "platform/Archive.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
  if (nSize < 9) return 0;
  double r;
  std::memcpy(&r, pData, sizeof r);
  const int nParseType = (pData[8] & 1) ? ptEnglish : ptLocal;
  std::u16string strText;
  for (size_t i = 9; i + 1 < nSize; i += 2)
    strText += static_cast<char16_t>(pData[i] | (pData[i + 1] << 8));
  for (char16_t& c : strText)
    if (c == 0) c = u' ';
  CValFormat format;
  int nPos = -1;
  if (!format.Parse(strText.c_str(), &nPos, nParseType)) {
    if (nPos < 0 || nPos > static_cast<int>(strText.size())) __builtin_trap();
    return 0;
  }
  const double aValues[] = {r, -r, 0, 0.5, 45000.123456, 1e20, -1e-10};
  for (double v : aValues) format.Format(v);
  format.Format(11 < nSize ? r : 1.0, 11);
  format.Format(u"text", 4);
  const std::u16string strBack = format.Unparse(nParseType);
  CValFormat again;
  (void)again.Parse(strBack.c_str(), nullptr, nParseType);
  std::vector<unsigned char> bytes;
  {
    CPelArchive out(bytes);
    if (!format.SerializeCB(out)) __builtin_trap();
  }
  CPelArchive in(bytes.data(), bytes.size());
  CValFormat loaded;
  if (!loaded.SerializeCB(in) || loaded.Compare(format) != 0) __builtin_trap();
  // A damaged record must fail or load, never overrun.
  if (!bytes.empty()) {
    bytes[pData[8] % bytes.size()] ^= pData[nSize - 1];
    CPelArchive damaged(bytes.data(), bytes.size());
    CValFormat junk;
    if (junk.SerializeCB(damaged)) junk.Format(r);
  }
  return 0;
}
