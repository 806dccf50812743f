#include "base/Cell.h"

#include <cstdint>

#include "platform/Archive.h"

bool TCell::GetText(std::u16string& text) const {
  text.clear();
  return AppendText(text);
}

bool TCell::AppendText(std::u16string& text) const {
  if (!IsValid()) return false;
  if (col >= 26) text += static_cast<char16_t>(u'A' + col / 26 - 1);
  text += static_cast<char16_t>(u'A' + col % 26);
  char16_t wszDigits[8];
  int n = 0;
  for (int nValue = row + 1; nValue != 0; nValue /= 10) {
    wszDigits[n++] = static_cast<char16_t>(u'0' + nValue % 10);
  }
  while (n > 0) text += wszDigits[--n];
  return true;
}

bool TCell::SerializeCB(CPelArchive& ar) {
  std::int32_t nRow = row, nCol = col;
  ar.Exchange(nRow).Exchange(nCol);
  row = nRow;
  col = nCol;
  return !ar.IsFailed();
}
