#include "recalc/RecalcChain.h"

#include <algorithm>
#include <cmath>

#include "book/BookBase.h"
#include "book/Name.h"
#include "book/Row.h"
#include "book/SheetBase.h"
#include "eval/FormulaEvaluator.h"
#include "eval/LookupCache.h"
#include "eval/Value.h"
#include "extern/ExternSheet.h"
#include "extern/SupBook.h"
#include "formula/FormulaCell.h"
#include "formula/FormulaRefIterator.h"

namespace {

using TRef = CFormulaRefIterator::TRef;

// Adds what one reference reads to the formula added last. References into other
// books, through unknown extern-sheet entries or to names of other books cannot be
// described by this book's rectangles: the formula is then recomputed every time.
void AddRef(CBookBase* pBook, CSheetBase* pSheet, const TRef& ref, CDependencyGraph& graph) {
  if (ref.nExternSheet < 0) {
    if (pSheet) graph.AddRef(pSheet->GetSheetIndex(), ref.nRow1, ref.nCol1, ref.nRow2, ref.nCol2);
    return;
  }
  const CExternSheet* pExtern = pBook->GetExternSheet(ref.nExternSheet);
  const CSupBook* pSupBook = pExtern ? pBook->GetSupBook(pExtern->GetSupBook()) : nullptr;
  if (!pSupBook || !pSupBook->IsSelf() || pExtern->IsForNames()) {
    graph.AddFlags(CDependencyGraph::dfUntrackable);
    return;
  }
  const int nFirst = std::min(pExtern->GetFirstSheet(), pExtern->GetLastSheet());
  const int nLast = std::max(pExtern->GetFirstSheet(), pExtern->GetLastSheet());
  if (nFirst < 0 || nLast >= pBook->Sheets()) {
    graph.AddFlags(CDependencyGraph::dfUntrackable);
    return;
  }
  for (int s = nFirst; s <= nLast; s++) graph.AddRef(s, ref.nRow1, ref.nCol1, ref.nRow2, ref.nCol2);
}

}  // namespace

void CRecalcChain::Clear() {
  m_Graph.Reset(0);
  std::vector<CFormulaCell*>().swap(m_Cells);
  std::vector<std::uint32_t>().swap(m_Ids);
}

long CRecalcChain::FindCell(const CFormulaCell* pCell) const {
  if (!pCell || !pCell->GetSheet()) return -1;
  const long nId =
      m_Graph.FindFormula(pCell->GetSheet()->GetSheetIndex(), pCell->GetRow(), pCell->GetCol());
  return nId >= 0 && m_Cells[static_cast<size_t>(nId)] == pCell ? nId : -1;
}

void CRecalcChain::CollectDeps(CBookBase* pBook, CSheetBase* pSheet, CFormulaCell* pCell) {
  const TCell base = pCell->GetCell();
  // Names met on the way are expanded into the references of their definitions,
  // each once per formula; their definitions are read at the formula's cell.
  std::vector<int> names;
  auto walk = [&](CFormulaRefIterator& it) {
    TRef ref;
    while (it.Next(ref)) {
      switch (ref.eKind) {
        case TRef::rkArea:
          AddRef(pBook, pSheet, ref, m_Graph);
          break;
        case TRef::rkName:
          if (std::find(names.begin(), names.end(), ref.nName) == names.end())
            names.push_back(ref.nName);
          break;
        case TRef::rkVolatile:
          m_Graph.AddFlags(CDependencyGraph::dfVolatile);
          break;
        case TRef::rkNameX:
        case TRef::rkUntrackable:
          m_Graph.AddFlags(CDependencyGraph::dfUntrackable);
          break;
      }
    }
  };
  CFormulaRefIterator it(pBook, pSheet, pCell->GetFormula(), pCell->GetFormulaType(), base);
  walk(it);
  for (size_t i = 0; i < names.size(); i++) {  // walk may append further names
    m_Graph.AddName(names[i]);
    CName* pName = pBook->GetName(names[i]);
    if (!pName || !pName->GetFormula()) continue;
    CFormulaRefIterator inner(pBook, pSheet, pName->GetFormula(),
                              static_cast<CFormulaBase::EFormulaType>(pName->GetFormulaType()),
                              base);
    walk(inner);
  }
}

CFormulaCell* CRecalcChain::Build(CBookBase* pBook, bool bFull, int* pnCircular) {
  *pnCircular = 0;
  m_Graph.Reset(pBook->Sheets());
  m_Cells.clear();
  try {
    for (int s = 0; s < pBook->Sheets(); s++) {
      CSheetBase* pSheet = pBook->SheetBase(s);
      if (!pSheet) continue;
      for (int r = 0; r < pSheet->Rows(); r++) {
        const CRow* pRow = pSheet->Row(r);
        if (!pRow) continue;
        for (int c = 0; c < pRow->Cells(); c++) {
          CCell* pCell = pRow->Cell(c);
          if (!pCell || !pCell->IsFormula()) continue;
          auto* pFormulaCell = static_cast<CFormulaCell*>(pCell);
          pFormulaCell->SetCell3D(pSheet, r, c);
          pFormulaCell->SetNext(nullptr);
          pFormulaCell->SetState(
              CFormulaCell::stOrdered | CFormulaCell::stVisiting | CFormulaCell::stCircular, false);
          if (bFull) pFormulaCell->SetNeedsRecompute();
          m_Graph.AddFormula(
              s, r, c, pFormulaCell->GetNeedsRecompute() ? CDependencyGraph::dfNeedsRecompute : 0);
          m_Cells.push_back(pFormulaCell);
          CollectDeps(pBook, pSheet, pFormulaCell);
        }
      }
    }
    m_Graph.EndCollect();
    *pnCircular = m_Graph.BuildOrder();
    m_Graph.BuildDependants();
  } catch (...) {
    Clear();
    throw;
  }
  // Thread the cells in order; the cells keep their ordered and circular marks.
  CFormulaCell* pHead = nullptr;
  CFormulaCell* pTail = nullptr;
  for (const std::uint32_t nId : m_Graph.GetOrder()) {
    CFormulaCell* pCell = m_Cells[nId];
    pCell->SetOrdered();
    if (m_Graph.IsCircular(nId)) pCell->SetState(CFormulaCell::stCircular);
    if (pTail)
      pTail->SetNext(pCell);
    else
      pHead = pCell;
    pTail = pCell;
  }
  return pHead;
}

namespace {
// How far ahead of the cell being computed the recompute loop fetches cells.
constexpr std::size_t kPrefetchCells = 8;
// Formulas with at least this many references have the cells they read fetched ahead.
constexpr std::ptrdiff_t kPrefetchMinRefs = 4;
}  // namespace

void CRecalcChain::PrefetchReads(const CBookBase* pBook, std::uint32_t nId, bool bCells) const {
  // A formula of a few references mostly reads near itself, where the cells are
  // fresh already; fetching would cost more than it saves.
  const CDependencyGraph::TRef* pEnd = m_Graph.RefsEnd(nId);
  if (pEnd - m_Graph.RefsBegin(nId) < kPrefetchMinRefs) return;
  for (const CDependencyGraph::TRef* p = m_Graph.RefsBegin(nId); p != pEnd; p++) {
    const CSheetBase* pSheet = pBook->SheetBase(p->wSheet);
    if (pSheet == nullptr) continue;
    const CRow* pRow = pSheet->Row(p->wRow1);
    if (pRow == nullptr) continue;
    if (bCells)
      __builtin_prefetch(pRow->Cell(p->cCol1));
    else
      __builtin_prefetch(pRow);
  }
}

unsigned CRecalcChain::Recompute(CBookBase* pBook, bool bAll) {
  m_nLastRecomputed = 0;
  if (m_Cells.empty()) return 0;
  if (!bAll) {
    for (int s = 0; s < pBook->Sheets() && !bAll; s++) {
      const CSheetBase* pSheet = pBook->SheetBase(s);
      if (!pSheet) continue;
      const CChangedRegion& changed = pSheet->ChangedRegion();
      if (changed.IsOverflow()) {
        bAll = true;
        break;
      }
      for (int i = 0; i < changed.GetSize(); i++)
        m_Graph.MarkReaders(s, changed[i].Row1(), changed[i].Col1(), changed[i].Row2(),
                            changed[i].Col2());
    }
    m_Graph.MarkAlways();
    for (int n = 1; n <= pBook->GetNumNames(); n++) {
      const CName* pName = pBook->GetName(n);
      if (pName && pName->IsChanged()) m_Graph.MarkNameUsers(n);
    }
    m_Graph.TakeDirty(m_Ids);  // clears the marks even when bAll took over
  }
  const std::vector<std::uint32_t>& ids = bAll ? m_Graph.GetOrder() : m_Ids;
  m_nLastRecomputed = static_cast<std::uint32_t>(ids.size());
  // Lookup indexes may be kept while only recomputed results change the cells.
  const CLookupCache::TScope lookupScope;

  const bool bIterate = pBook->GetIteration();
  const unsigned nMaxPasses = std::max(1u, pBook->GetMaxIterations());
  const double rMaxChange = pBook->GetMaxChange();
  unsigned nPasses = 0;
  bool bFirst = true;
  for (;;) {
    double rLargest = 0;
    bool bAnyCircular = false;
    const std::size_t nIds = ids.size();
    for (std::size_t i = 0; i < nIds; i++) {
      // The cells lie wherever they were made: fetch a few ahead, and the token
      // stream of the next but one, so that their first touch does not stall.
      if (i + kPrefetchCells < nIds) __builtin_prefetch(m_Cells[ids[i + kPrefetchCells]]);
      if (i + 2 < nIds && bFirst) {
        const CFormula* pAhead = m_Cells[ids[i + 2]]->GetFormula();
        if (pAhead != nullptr) __builtin_prefetch(pAhead->GetPostfix());
      }
      // The cells a formula reads: row objects two steps ahead, cells one step.
      if (bFirst && i + 2 * kPrefetchCells < nIds)
        PrefetchReads(pBook, ids[i + 2 * kPrefetchCells], false);
      if (bFirst && i + kPrefetchCells < nIds) PrefetchReads(pBook, ids[i + kPrefetchCells], true);
      CFormulaCell* pCell = m_Cells[ids[i]];
      const bool bCircular = pCell->IsCircular();
      // After the first pass only circular cells can still change: every other cell
      // was computed after all it reads.
      if (!bFirst && !bCircular) continue;
      bAnyCircular |= bCircular;
      if (bCircular && !bIterate) {
        TValue zero;
        zero.SetZero();
        pCell->SetRecalcValue(zero);
        pCell->SetNeedsRecompute(false);
        continue;
      }
      // A cell not computed yet reads as 0, so a new cycle iterates from there.
      // Only an iteration needs the change.
      const bool bWasNumber = bIterate && (pCell->IsReal() || pCell->IsEmpty());
      const double rOld = bWasNumber ? pCell->GetReal() : 0.0;
      CFormulaEvaluator evaluator(pBook, pCell);
      evaluator.Evaluate(pCell);
      if (bWasNumber && pCell->IsReal())
        rLargest = std::max(rLargest, std::fabs(pCell->GetReal() - rOld));
      pCell->SetNeedsRecompute(false);
    }
    nPasses++;
    bFirst = false;
    if (!bIterate || !bAnyCircular || nPasses >= nMaxPasses || !(rLargest > rMaxChange)) break;
  }
  return nPasses;
}
