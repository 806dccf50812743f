// CRecalcChain: the book's recalculation chain: the formula cells of the book in
// dependency order (also threaded through the cells' next pointers, head in the
// book), with the dependency graph that ordered them and that finds, in minimal
// mode, the formulas an edit reaches. The book owns one; it is rebuilt whenever the
// order of formulas has been invalidated.
#pragma once

#include <cstdint>
#include <vector>

#include "base/Export.h"
#include "formula/FormulaRefIterator.h"
#include "recalc/DependencyGraph.h"
#include "recalc/PodArray.h"

class CBookBase;
class CFormulaCell;
class CSheetBase;

class YARVBOOK_API CRecalcChain {
 public:
  CRecalcChain() = default;
  CRecalcChain(const CRecalcChain&) = delete;
  CRecalcChain& operator=(const CRecalcChain&) = delete;

  // Collects every formula cell of pBook (setting its sheet link and clearing its
  // chain marks; with bFull marking it for recomputation), gathers its dependency
  // information, orders the cells and threads them through their next pointers. In
  // minimal mode it also builds what finds the cells an edit reaches; otherwise the
  // first minimal Recompute does.
  // Returns the first cell of the chain (null for none). *pnCircular gets the number
  // of circular cells. Throws std::bad_alloc; the chain is then empty.
  CFormulaCell* Build(CBookBase* pBook, bool bFull, int* pnCircular);
  // Forgets the cells (they may be deleted after this).
  void Clear();

  // Recomputes what needs it: every cell with bAll, else the cells that the sheets'
  // changed regions, the changed names and the always-recomputed cells reach.
  // Circular cells are set to 0, or iterated when the book's iteration option is on.
  // Returns the number of passes run. Throws std::bad_alloc.
  unsigned Recompute(CBookBase* pBook, bool bAll);

  CDependencyGraph& Graph() { return m_Graph; }
  const CDependencyGraph& Graph() const { return m_Graph; }
  // The cell with id nId.
  CFormulaCell* GetCell(std::uint32_t nId) const { return m_Cells[nId]; }
  // The id of pCell in the last build, or -1.
  long FindCell(const CFormulaCell* pCell) const;
  bool IsEmpty() const { return m_Cells.empty(); }
  // Cells recomputed by the last Recompute, passes not counted twice.
  std::uint32_t GetLastRecomputed() const { return m_nLastRecomputed; }

 private:
  // The dependency information of the cell added last: its formula's references,
  // names (with the references of their definitions) and marks.
  // it is the walker, pointed at each formula in turn; pRefs has room for a batch
  // of its reports.
  void CollectDeps(CBookBase* pBook, CSheetBase* pSheet, CFormulaCell* pCell,
                   CFormulaRefIterator& it, CFormulaRefIterator::TRef* pRefs);
  // Asks the processor for what cell nId's formula will read (the first cell of each
  // reference): the row objects, or with bCells the cells themselves.
  void PrefetchReads(const CBookBase* pBook, std::uint32_t nId, bool bCells) const;

  CDependencyGraph m_Graph;
  TPodArray<CFormulaCell*> m_Cells;  // by id; not owned
  std::vector<std::uint32_t> m_Ids;  // scratch: the cells of one recomputation
  std::vector<int> m_NameScratch;    // scratch: the names one formula uses
  // Scratch by name index: the id + 1 of the last formula that met the name. Made
  // when a build first meets a name.
  std::vector<std::uint32_t> m_NameSeen;
  std::uint32_t m_nLastRecomputed = 0;
};
