// A host program that embeds libYarvBook through its installed package: one sheet of
// prices and quantities, a total with tax, recalculated after an edit.
#include <yarvbook/yarvbook.h>

#include <cstdio>
#include <string>

namespace {

std::string ToUtf8(const char16_t* pwsz) {
  std::string str;
  for (; pwsz && *pwsz; ++pwsz) str += static_cast<char>(*pwsz < 0x80 ? *pwsz : '?');
  return str;
}

}  // namespace

int main() {
  CBookBase book;
  book.AddToList();
  CSheetBase* pSheet = book.NewSheet(u"Invoice");
  if (!pSheet) return 1;
  pSheet->SetValueFromText(TCell(0, 0), u"12.50");  // A1: unit price
  pSheet->SetValueFromText(TCell(0, 1), u"4");      // B1: quantity
  pSheet->SetValueFromText(TCell(1, 0), u"8%");     // A2: tax rate, shown as a percentage
  int nErrorPos = 0;
  if (pSheet->SetFormula(TCell(2, 0), u"=ROUND(A1*B1*(1+A2),2)", 0, 1, 0, &nErrorPos) != 0) {
    std::fprintf(stderr, "formula does not parse at %d\n", nErrorPos);
    return 1;
  }
  book.Recalc();
  std::printf("libYarvBook %s: total %s\n", YarvBookVersion(),
              ToUtf8(pSheet->GetFormattedText(2, 0)).c_str());

  pSheet->SetValueFromText(TCell(0, 1), u"10");  // change the quantity, recalculate
  book.Recalc();
  const std::string strTotal = ToUtf8(pSheet->GetFormattedText(2, 0));
  std::printf("after the edit: total %s\n", strTotal.c_str());
  return strTotal == "135" ? 0 : 1;
}
