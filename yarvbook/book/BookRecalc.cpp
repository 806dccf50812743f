// The book's side of the recalculation chain: building the dependency-ordered list of
// formula cells and walking it. A book holds formula cells only once formula cells
// can be entered; until then the chain is empty, and these are the whole of both
// operations for an empty chain.
#include "book/BookBase.h"

int CBookBase::UpdateFormulasOrder() {
  SetCircularRefs(false);
  SetFormulaOrder(nullptr);
  m_cRecalcState &= static_cast<unsigned char>(~(kStOrderInvalid | kStOrderInvalidFull));
  return 0;
}

void CBookBase::RecalcAllFormulas() { m_cRecalcState &= static_cast<unsigned char>(~kStRecalcAll); }
