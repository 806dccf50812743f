// The book's side of the recalculation chain: rebuilding the order of its formula
// cells, recomputing them, and the per-cell needs-recalculation test.
//
// Changed regions: each sheet empties its changed region at the end of every
// RecalcAllFormulas, once the recomputation has read it, and when a recalculation
// finds no formula to compute. Edits made between recalculations collect there.
#include <new>

#include "base/ZelException.h"
#include "book/BookBase.h"
#include "book/Name.h"
#include "book/SheetBase.h"
#include "extern/SupBook.h"
#include "formula/FormulaCell.h"
#include "recalc/RecalcChain.h"

namespace {

void ClearChangedRegions(CBookBase* pBook) {
  for (int s = 0; s < pBook->Sheets(); s++)
    if (CSheetBase* pSheet = pBook->SheetBase(s)) pSheet->ChangedRegion().Clear();
}

}  // namespace

int CBookBase::UpdateFormulasOrder() {
  SetCircularRefs(false);
  SetFormulaOrder(nullptr);
  const bool bFull = (m_cRecalcState & kStOrderInvalidFull) != 0;
  int nCircular = 0;
  try {
    if (!m_pChain) m_pChain = std::make_unique<CRecalcChain>();
    SetFormulaOrder(m_pChain->Build(this, bFull, &nCircular));
  } catch (const std::bad_alloc&) {
    if (m_pChain) m_pChain->Clear();
    return CZelException::errMemory;  // the order stays invalid
  } catch (const CZelException&) {
    if (m_pChain) m_pChain->Clear();
    return CZelException::errMemory;
  }
  if (nCircular > 0) {
    SetCircularRefs(true);
    m_bNotifyCircular = true;
  }
  m_cRecalcState &= static_cast<unsigned char>(~(kStOrderInvalid | kStOrderInvalidFull));
  return 0;
}

void CBookBase::RecalcAllFormulas() {
  const bool bAll = (m_cRecalcState & kStRecalcAll) || !GetMinimalRecalc();
  m_cRecalcState &= static_cast<unsigned char>(~kStRecalcAll);
  m_nLastRecalcPasses = 0;
  if (m_pChain) {
    try {
      m_nLastRecalcPasses = m_pChain->Recompute(this, bAll);
    } catch (const std::bad_alloc&) {
      // Too little memory to choose: ask for everything next time.
      m_cRecalcState |= kStRecalcAll | kStNeedsRecalc;
      return;
    }
  }
  ClearChangedRegions(this);
}

bool CBookBase::RefersTo(const CBookBase* pBook) const {
  if (!pBook || pBook == this) return false;
  for (int i = 0; i < GetNumSupBooks(); i++) {
    const CSupBook* pSupBook = GetSupBook(i);
    if (pSupBook && !pSupBook->IsSelf() && pSupBook->GetSupDataBook() == pBook) return true;
  }
  return false;
}

bool CFormulaCell::GetNeedsRecalc(CBookBase* pBook) const {
  const CRecalcChain* pChain = pBook ? pBook->GetRecalcChain() : nullptr;
  const long nId = pChain ? pChain->FindCell(this) : -1;
  if (nId < 0) return false;  // no dependency information
  const CDependencyGraph& graph = pChain->Graph();
  const auto nCellId = static_cast<std::uint32_t>(nId);
  if (GetNeedsRecompute() || IsCircular() || (graph.GetFlags(nCellId) & CDependencyGraph::kAlways))
    return true;
  const CDependencyGraph::TNameUse *pUse, *pUseEnd;
  graph.GetNames(nCellId, &pUse, &pUseEnd);
  for (; pUse != pUseEnd; pUse++) {
    const CName* pName = pBook->GetName(pUse->nName);
    if (pName && pName->IsChanged()) return true;
  }
  for (const CDependencyGraph::TRef* p = graph.RefsBegin(nCellId); p != graph.RefsEnd(nCellId);
       p++) {
    const CSheetBase* pSheet = pBook->SheetBase(p->wSheet);
    if (pSheet && pSheet->ChangedRegion().TestIntersect(p->wRow1, p->cCol1, p->wRow2, p->cCol2))
      return true;
  }
  return false;
}
