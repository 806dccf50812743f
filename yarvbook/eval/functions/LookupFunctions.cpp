// Reference family: ROWS, COLUMNS. Both measure their argument as it was given (a
// reference, a 3-D range or an array) without reading any cell.
#include "base/Range3d.h"
#include "eval/Func.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

// ROWS and COLUMNS differ by the dimension only. A single value is one row and one
// column; a multi-area reference has no extent and gives #REF!.
class TFuncExtent final : public TFuncOneArg {
 public:
  TFuncExtent(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bRows)
      : TFuncOneArg(nResId, pwszName, nFunc), m_bRows(bRows) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (pArgs->IsError()) return;
    if (pArgs->IsRegion()) {
      pArgs->SetError(TValue::errRef);
      return;
    }
    int nExtent;
    if (pArgs->IsRange3d()) {
      CBookBase* pBook = nullptr;
      TRange3d range;
      pArgs->GetValue(&pBook, &range);
      nExtent = m_bRows ? range.Rows() : range.Cols();
    } else {
      nExtent = m_bRows ? pArgs->Rows() : pArgs->Cols();
    }
    pArgs->SetValue(nExtent);
  }

 private:
  const bool m_bRows;
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncExtent s_Rows(IDS_FN_ROWS, u"ROWS", 76, /*bRows=*/true);
TFuncExtent s_Columns(IDS_FN_COLUMNS, u"COLUMNS", 77, /*bRows=*/false);

}  // namespace
