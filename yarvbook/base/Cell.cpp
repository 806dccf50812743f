#include "base/Cell.h"

#include <cstdint>

#include "base/A1Text.h"
#include "platform/Archive.h"

bool TCell::GetText(std::u16string& text) const {
  text.clear();
  return AppendText(text);
}

bool TCell::AppendText(std::u16string& text) const {
  if (!IsValid()) return false;
  text += FormatColNr(col);
  text += FormatRowNr(row);
  return true;
}

bool TCell::SerializeCB(CPelArchive& ar) {
  std::int32_t nRow = row, nCol = col;
  ar.Exchange(nRow).Exchange(nCol);
  row = nRow;
  col = nCol;
  return !ar.IsFailed();
}
