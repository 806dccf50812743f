// The book's side of recalculation: ordering the formula cells so that every cell is
// computed after the formula cells it reads, and computing them in that order.
//
// This is the interim ordering, to be replaced by the recalculation chain with its
// per-cell dependency information and minimal recalculation: it finds each cell's
// precedents by walking its tokens (cells, ranges, 3-D ranges of this book and the
// definitions of the names it uses), orders by a depth-first walk on an explicit
// stack, and recomputes every formula on each recalculation.
#include <algorithm>
#include <cmath>
#include <vector>

#include "base/Range.h"
#include "book/BookBase.h"
#include "book/Name.h"
#include "book/SheetBase.h"
#include "eval/FormulaEvaluator.h"
#include "extern/ExternSheet.h"
#include "extern/SupBook.h"
#include "formula/FormulaCell.h"

namespace {

using TPostfixPtr = CFormulaBase::TPostfixPtr;

// The book whose chain was rebuilt in the current recalculation: its chain is known
// to hold only live cells.
constinit const CBookBase* s_pFreshBook = nullptr;

struct TSheetRange {
  CSheetBase* pSheet;
  TRange range;
};

// The ranges a formula reads, names followed into their definitions (each name once).
class TPrecedentWalk {
 public:
  TPrecedentWalk(CBookBase* pBook, CFormulaCell* pCell) : m_pBook(pBook), m_pCell(pCell) {}

  void Run(std::vector<TSheetRange>& out) {
    std::vector<std::pair<const CFormula*, bool>> pending;  // formula, relative is offset
    std::vector<int> seenNames;
    pending.emplace_back(m_pCell->GetFormula(),
                         CFormulaBase::IsOffsetType(m_pCell->GetFormulaType()));
    while (!pending.empty()) {
      const auto [pFormula, bOffset] = pending.back();
      pending.pop_back();
      if (pFormula == nullptr) continue;
      TPostfixPtr p(pFormula->GetPostfix());
      const unsigned char* pEnd = pFormula->GetPostfix() + pFormula->GetPostfixLen();
      while (p.Get() < pEnd) {
        const unsigned char cBase = CFormulaBase::TokenBase(p.GetByte());
        const long nLeft = pEnd - p.Get();
        if ((cBase == CFormulaBase::tStr || cBase == CFormulaBase::tExtended) && nLeft < 1) break;
        if (cBase == CFormulaBase::tAttr && nLeft < 3) break;
        const int nSize = p.SizeToken(cBase);
        if (nSize > nLeft) break;
        TPostfixPtr operands = p;
        if (cBase == CFormulaBase::tName) {
          const int nName = operands.GetWord();
          if (std::find(seenNames.begin(), seenNames.end(), nName) == seenNames.end()) {
            seenNames.push_back(nName);
            if (const CName* pName = m_pBook->GetName(nName))
              pending.emplace_back(pName->GetFormula(), true);
          }
        } else if (cBase >= CFormulaBase::tRef && cBase <= CFormulaBase::tArea3d) {
          AddRef(cBase, operands, bOffset, out);
        }
        p.Skip(nSize);
      }
    }
  }

 private:
  void AddRef(unsigned char cBase, TPostfixPtr operands, bool bOffsetType,
              std::vector<TSheetRange>& out) const {
    const bool b3d = cBase == CFormulaBase::tRef3d || cBase == CFormulaBase::tArea3d;
    const bool bArea = cBase == CFormulaBase::tArea || cBase == CFormulaBase::tAreaN ||
                       cBase == CFormulaBase::tArea3d;
    if (!b3d && !bArea && cBase != CFormulaBase::tRef && cBase != CFormulaBase::tRefN) return;
    const bool bOffset =
        bOffsetType || cBase == CFormulaBase::tRefN || cBase == CFormulaBase::tAreaN;
    int nSheet1 = m_pCell->GetSheet() ? m_pCell->GetSheet()->GetSheetIndex() : -1;
    int nSheet2 = nSheet1;
    if (b3d) {
      const CExternSheet* pExtern = m_pBook->GetExternSheet(static_cast<short>(operands.GetWord()));
      const CSupBook* pSupBook = pExtern ? m_pBook->GetSupBook(pExtern->GetSupBook()) : nullptr;
      if (pSupBook == nullptr || !pSupBook->IsSelf() || pExtern->IsForNames()) return;
      nSheet1 = pExtern->GetFirstSheet();
      nSheet2 = pExtern->GetLastSheet();
    }
    const TCell base = m_pCell->GetCell();
    auto row = [&](unsigned short wRow, unsigned short wCol) {
      return bOffset && (wCol & CFormulaBase::kRowRelative) ? (wRow + base.row) & 0xFFFF : wRow;
    };
    auto col = [&](unsigned short wCol) {
      const int nCol = wCol & 0xFF;
      return bOffset && (wCol & CFormulaBase::kColRelative) ? (nCol + base.col) & 0xFF : nCol;
    };
    TRange range;
    if (bArea) {
      const unsigned short wRow1 = operands.GetWord(), wRow2 = operands.GetWord();
      const unsigned short wCol1 = operands.GetWord(), wCol2 = operands.GetWord();
      range.Set(row(wRow1, wCol1), col(wCol1), row(wRow2, wCol2), col(wCol2));
    } else {
      const unsigned short wRow = operands.GetWord(), wCol = operands.GetWord();
      range.Set(row(wRow, wCol), col(wCol), row(wRow, wCol), col(wCol));
    }
    for (int s = std::min(nSheet1, nSheet2); s >= 0 && s <= std::max(nSheet1, nSheet2); ++s) {
      if (CSheetBase* pSheet = m_pBook->SheetBase(s)) out.push_back({pSheet, range});
    }
  }

  CBookBase* m_pBook;
  CFormulaCell* m_pCell;
};

// The formula cells of ranges, visiting only the rows and cells that exist.
void AddFormulaCells(const std::vector<TSheetRange>& ranges, std::vector<CFormulaCell*>& out) {
  for (const TSheetRange& sr : ranges) {
    const TRange& r = sr.range;
    const int nRow1 = std::min(r.Row1(), r.Row2());
    const int nRow2 = std::min(std::max(r.Row1(), r.Row2()), sr.pSheet->Rows() - 1);
    const int nCol1 = std::min(r.Col1(), r.Col2());
    for (int nRow = nRow1; nRow <= nRow2; ++nRow) {
      const CRow* pRow = sr.pSheet->Row(nRow);
      if (pRow == nullptr) continue;
      const int nCol2 = std::min(std::max(r.Col1(), r.Col2()), pRow->Cells() - 1);
      for (int nCol = nCol1; nCol <= nCol2; ++nCol) {
        CCell* pCell = pRow->Cell(nCol);
        if (pCell != nullptr && pCell->IsFormula())
          out.push_back(static_cast<CFormulaCell*>(pCell));
      }
    }
  }
}

}  // namespace

int CBookBase::UpdateFormulasOrder() {
  SetCircularRefs(false);
  SetFormulaOrder(nullptr);
  // Every formula cell, its sheet link and chain state reset.
  std::vector<CFormulaCell*> cells;
  for (int s = 0; s < Sheets(); ++s) {
    CSheetBase* pSheet = SheetBase(s);
    for (int r = 0; pSheet != nullptr && r < pSheet->Rows(); ++r) {
      const CRow* pRow = pSheet->Row(r);
      for (int c = 0; pRow != nullptr && c < pRow->Cells(); ++c) {
        CCell* pCell = pRow->Cell(c);
        if (pCell == nullptr || !pCell->IsFormula()) continue;
        auto* pFormulaCell = static_cast<CFormulaCell*>(pCell);
        pFormulaCell->SetCell3D(pSheet, r, c);
        pFormulaCell->SetNext(nullptr);
        pFormulaCell->SetState(
            CFormulaCell::stOrdered | CFormulaCell::stVisiting | CFormulaCell::stCircular, false);
        cells.push_back(pFormulaCell);
      }
    }
  }
  // Depth first over the precedents; a cell goes into the chain after all of them.
  // A precedent met again on the current path closes a cycle: every cell of the path
  // from it up is circular, and so is every cell that depends on a circular one.
  struct TFrame {
    CFormulaCell* pCell;
    std::vector<CFormulaCell*> precedents;
    size_t nNext;
  };
  std::vector<TFrame> stack;
  std::vector<TSheetRange> ranges;
  CFormulaCell* pHead = nullptr;
  CFormulaCell* pTail = nullptr;
  auto enter = [&](CFormulaCell* pCell) {
    pCell->SetState(CFormulaCell::stVisiting);
    ranges.clear();
    TPrecedentWalk(this, pCell).Run(ranges);
    TFrame frame{pCell, {}, 0};
    AddFormulaCells(ranges, frame.precedents);
    stack.push_back(std::move(frame));
  };
  for (CFormulaCell* pStart : cells) {
    if (pStart->IsOrdered()) continue;
    enter(pStart);
    while (!stack.empty()) {
      TFrame& top = stack.back();
      if (top.nNext < top.precedents.size()) {
        CFormulaCell* pNext = top.precedents[top.nNext++];
        if (pNext->HasState(CFormulaCell::stVisiting)) {
          for (auto it = stack.rbegin(); it != stack.rend(); ++it) {
            it->pCell->SetState(CFormulaCell::stCircular);
            if (it->pCell == pNext) break;
          }
        } else if (!pNext->IsOrdered()) {
          enter(pNext);
        } else if (pNext->IsCircular()) {
          top.pCell->SetState(CFormulaCell::stCircular);
        }
        continue;
      }
      CFormulaCell* pCell = top.pCell;
      stack.pop_back();
      pCell->SetState(CFormulaCell::stVisiting, false);
      pCell->SetOrdered();
      if (pCell->IsCircular()) {
        SetCircularRefs(true);
        if (!stack.empty()) stack.back().pCell->SetState(CFormulaCell::stCircular);
      }
      if (pTail != nullptr)
        pTail->SetNext(pCell);
      else
        pHead = pCell;
      pTail = pCell;
    }
  }
  SetFormulaOrder(pHead);
  s_pFreshBook = this;
  m_cRecalcState &= static_cast<unsigned char>(~(kStOrderInvalid | kStOrderInvalidFull));
  return 0;
}

void CBookBase::RecalcAllFormulas() {
  // Rows may have gone since the chain was built; rebuilding keeps it to live cells.
  if (s_pFreshBook != this) UpdateFormulasOrder();
  s_pFreshBook = nullptr;
  const bool bIterate = GetIteration();
  const unsigned nPasses = bIterate ? std::max(1u, GetMaxIterations()) : 1;
  for (unsigned nPass = 0; nPass < nPasses; ++nPass) {
    double rMaxDiff = 0;
    bool bAnyCircular = false;
    for (CFormulaCell* pCell = GetFormulaOrder(); pCell != nullptr; pCell = pCell->GetNext()) {
      if (nPass > 0 && !pCell->IsCircular()) continue;
      if (pCell->IsCircular()) {
        bAnyCircular = true;
        if (!bIterate) {
          TValue zero;
          zero.SetZero();
          pCell->SetRecalcValue(zero);
          continue;
        }
      }
      const bool bWasReal = pCell->IsReal();
      const double rOld = pCell->GetReal();
      CFormulaEvaluator evaluator(this, pCell->GetSheet(), pCell, pCell->GetCell());
      evaluator.Evaluate(pCell);
      if (bWasReal && pCell->IsReal())
        rMaxDiff = std::max(rMaxDiff, std::fabs(pCell->GetReal() - rOld));
    }
    if (!bAnyCircular || !(rMaxDiff > GetMaxChange())) break;
  }
  m_cRecalcState &= static_cast<unsigned char>(~kStRecalcAll);
}
