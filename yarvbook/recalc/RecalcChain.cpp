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

// Reports a formula's references in batches of this many.
constexpr int kRefBatch = 32;
// Name indexes are 16-bit token operands.
constexpr size_t kNameSlots = 65536;

// Adds what a reference through an extern-sheet entry reads to the formula added
// last. References into other books, through unknown extern-sheet entries or to
// names of other books cannot be described by this book's rectangles: the formula
// is then recomputed every time.
void AddExternRef(CBookBase* pBook, const TRef& ref, CDependencyGraph& graph) {
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
  m_Cells.Release();
  std::vector<std::uint32_t>().swap(m_Ids);
  std::vector<std::uint32_t>().swap(m_NameSeen);
}

long CRecalcChain::FindCell(const CFormulaCell* pCell) const {
  if (!pCell || !pCell->GetSheet()) return -1;
  const long nId =
      m_Graph.FindFormula(pCell->GetSheet()->GetSheetIndex(), pCell->GetRow(), pCell->GetCol());
  return nId >= 0 && m_Cells[static_cast<size_t>(nId)] == pCell ? nId : -1;
}

void CRecalcChain::CollectDeps(CBookBase* pBook, CSheetBase* pSheet, CFormulaCell* pCell,
                               CFormulaRefIterator& it, CFormulaRefIterator::TRef* pRefs) {
  const int nRow = pCell->GetRow();
  const int nCol = pCell->GetCol();
  const int nSheet = pSheet ? pSheet->GetSheetIndex() : -1;
  // Names met on the way are expanded into the references of their definitions,
  // each once per formula; their definitions are read at the formula's cell.
  m_NameScratch.clear();
  const std::uint32_t nStamp = m_Graph.GetCount();
  auto walk = [&]() {
    for (;;) {
      const int n = it.Next(pRefs, kRefBatch);
      for (int i = 0; i < n; i++) {
        const TRef& ref = pRefs[i];
        if (ref.eKind == TRef::rkArea && ref.nExternSheet < 0) {
          if (nSheet >= 0) m_Graph.AddRefInGrid(nSheet, ref.nRow1, ref.nCol1, ref.nRow2, ref.nCol2);
          continue;
        }
        switch (ref.eKind) {
          case TRef::rkArea:
            AddExternRef(pBook, ref, m_Graph);
            break;
          case TRef::rkName:
            // Stamped with the formula's id + 1: each name once per formula. The
            // walk reports name indexes as 16-bit operands.
            if (m_NameSeen.empty()) m_NameSeen.assign(kNameSlots, 0);
            if (m_NameSeen[static_cast<size_t>(ref.nName) & (kNameSlots - 1)] != nStamp) {
              m_NameSeen[static_cast<size_t>(ref.nName) & (kNameSlots - 1)] = nStamp;
              m_NameScratch.push_back(ref.nName);
            }
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
      if (n < kRefBatch) return;
    }
  };
  it.Reset(pSheet, pCell->GetFormula(), pCell->GetFormulaType(), nRow, nCol);
  walk();
  for (size_t i = 0; i < m_NameScratch.size(); i++) {  // walk may append further names
    const int nName = m_NameScratch[i];
    m_Graph.AddName(nName);
    CName* pName = pBook->GetName(nName);
    if (!pName || !pName->GetFormula()) continue;
    it.Reset(pSheet, pName->GetFormula(),
             static_cast<CFormulaBase::EFormulaType>(pName->GetFormulaType()), nRow, nCol);
    walk();
  }
}

CFormulaCell* CRecalcChain::Build(CBookBase* pBook, bool bFull, int* pnCircular) {
  *pnCircular = 0;
  // What minimal recalculation needs is built with the order in minimal mode, and
  // otherwise when first needed: a full recalculation walks the order alone.
  const bool bMinimal = pBook->GetMinimalRecalc();
  m_Graph.Reset(pBook->Sheets(), bMinimal);
  m_Cells.clear();
  std::fill(m_NameSeen.begin(), m_NameSeen.end(), 0);
  try {
    CFormulaRefIterator it(pBook, nullptr, nullptr, CFormulaBase::ftCell, TCell());
    std::vector<TRef> refs(kRefBatch);
    CFormulaCell* pPrev = nullptr;
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
          // The cells are threaded here, while they are at hand, as if the order
          // were that of collection, and marked ordered (every cell ends up in the
          // chain); the few that the order places elsewhere, or finds circular, are
          // put right after it. A second pass over all the cells would fetch each
          // one from memory again.
          if (pFormulaCell->GetSheet() != pSheet || pFormulaCell->GetRow() != r ||
              pFormulaCell->GetCol() != c)
            pFormulaCell->SetCell3D(pSheet, r, c);
          pFormulaCell->SetState(CFormulaCell::stVisiting | CFormulaCell::stCircular, false);
          pFormulaCell->SetState(bFull ? CFormulaCell::stOrdered | CFormulaCell::stNeedsRecalc
                                       : CFormulaCell::stOrdered);
          if (pPrev) pPrev->SetNext(pFormulaCell);
          pPrev = pFormulaCell;
          m_Graph.AddFormula(
              s, r, c, pFormulaCell->GetNeedsRecompute() ? CDependencyGraph::dfNeedsRecompute : 0);
          m_Cells.push_back(pFormulaCell);
          CollectDeps(pBook, pSheet, pFormulaCell, it, refs.data());
        }
      }
    }
    if (pPrev) pPrev->SetNext(nullptr);
    m_Graph.EndCollect();
    *pnCircular = m_Graph.BuildOrder();
    if (bMinimal) m_Graph.BuildDependants();
  } catch (...) {
    Clear();
    throw;
  }
  // Put right what the order does differently from collection: a cell followed by
  // another than the next one collected (the last by none), a circular cell.
  const std::vector<std::uint32_t>& order = m_Graph.GetOrder();
  const std::uint32_t nCount = static_cast<std::uint32_t>(order.size());
  for (std::uint32_t i = 0; i < nCount; i++) {
    const std::uint32_t nId = order[i];
    const std::uint32_t nNext = i + 1 < nCount ? order[i + 1] : nCount;  // nCount: none
    if (nNext != nId + 1) m_Cells[nId]->SetNext(nNext < nCount ? m_Cells[nNext] : nullptr);
    if (m_Graph.IsCircular(nId)) m_Cells[nId]->SetState(CFormulaCell::stCircular);
  }
  CFormulaCell* pHead = nCount > 0 ? m_Cells[order[0]] : nullptr;
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
    if (!m_Graph.HasDependants()) m_Graph.BuildDependants();
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
