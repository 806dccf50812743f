// CDependencyGraph: what the recalculation chain knows about a book's formulas,
// kept by formula id rather than on the cells so that the walks run over compact
// arrays. Ids are handed out sheet by sheet, row by row, column by column (the order
// the cells are collected in), so the formulas of one sheet are one run of ids in
// position order, and the sheet's formula region needs only a row table into it.
//
// For each formula: its position, its flags, and its dependency information: the
// rectangles it reads on each sheet of the book and the defined names it uses. From
// these the graph builds the dependency order (depth first, without recursion on the
// machine stack) and, for minimal recalculation, an index from rectangles to the
// formulas that read them, so that the formulas an edit reaches are found without
// visiting the others.
#pragma once

#include <cstdint>
#include <vector>

#include "base/Cell.h"
#include "base/Export.h"
#include "recalc/PodArray.h"
#include "recalc/RefIndex.h"

class YARVBOOK_API CDependencyGraph {
 public:
  // Flags per formula.
  enum EFlag : std::uint8_t {
    dfVolatile = 0x01,        // calls a volatile function: recomputed every time
    dfUntrackable = 0x02,     // reads something no rectangle describes: every time
    dfNeedsRecompute = 0x04,  // the cell's needs-recompute mark, seen at collection
    dfOrdered = 0x08,         // in the order
    dfVisiting = 0x10,        // on the current depth-first path
    dfCircular = 0x20,        // on, or depending on, a cycle
    dfDirty = 0x40,           // chosen for recomputation by the current recalculation
    dfHasDeps = 0x80,         // has dependency information (reads something)
  };
  static constexpr std::uint8_t kAlways = dfVolatile | dfUntrackable;

  // A rectangle a formula reads: sheet index in the book, rows and columns in order.
  struct TRef {
    std::uint16_t wSheet;
    std::uint16_t wRow1, wRow2;
    std::uint8_t cCol1, cCol2;
  };

  CDependencyGraph() = default;
  CDependencyGraph(const CDependencyGraph&) = delete;
  CDependencyGraph& operator=(const CDependencyGraph&) = delete;

  // ---- Collection ------------------------------------------------------------------
  // Forgets everything; the book has nSheets sheets. With bIndexReaders the
  // rectangle index counts the references as they are added, for a BuildDependants
  // to come; without, BuildDependants counts them itself when it is called.
  void Reset(int nSheets, bool bIndexReaders = true);
  // The next formula: sheets in ascending order, inside a sheet row by row and column
  // by column. Returns its id. Throws std::bad_alloc. (The collection calls are
  // inline: they run once per formula or reference of the book.)
  std::uint32_t AddFormula(int nSheet, int nRow, int nCol, std::uint8_t cFlags);
  // Dependency information of the formula added last. Rectangles outside the book's
  // sheets are the caller's to flag untrackable. Throw std::bad_alloc.
  void AddRef(int nSheet, int nRow1, int nCol1, int nRow2, int nCol2);
  // The same for a rectangle known to have its corners in order and inside the grid.
  void AddRefInGrid(int nSheet, int nRow1, int nCol1, int nRow2, int nCol2);
  void AddName(int nName);
  void AddFlags(std::uint8_t cFlags) { m_Flags.back() |= cFlags; }
  // Ends the collection: closes the last formula's references and builds each
  // sheet's formula region. Throws std::bad_alloc.
  void EndCollect();

  // ---- Order -----------------------------------------------------------------------
  // The dependency order: every formula once, precedents before the formulas that
  // read them, circular ones after what they reached. Sets the circular flags.
  // Returns the number of circular formulas. Throws std::bad_alloc.
  int BuildOrder();
  const std::vector<std::uint32_t>& GetOrder() const { return m_Order; }

  // Builds the index from rectangles to the formulas that read them, and the lists of
  // formulas recomputed every time: what minimal recalculation needs, after the
  // order. Throws std::bad_alloc.
  void BuildDependants();
  bool HasDependants() const { return m_bDependants; }

  // ---- Queries ---------------------------------------------------------------------
  std::uint32_t GetCount() const { return static_cast<std::uint32_t>(m_Flags.size()); }
  std::uint8_t GetFlags(std::uint32_t nId) const { return m_Flags[nId]; }
  bool IsCircular(std::uint32_t nId) const { return (m_Flags[nId] & dfCircular) != 0; }
  int GetSheet(std::uint32_t nId) const;
  int GetRow(std::uint32_t nId) const { return static_cast<int>(m_Key[nId] >> 8); }
  int GetCol(std::uint32_t nId) const { return static_cast<int>(m_Key[nId] & 0xFF); }
  // The id of the formula at a position, or -1.
  long FindFormula(int nSheet, int nRow, int nCol) const;
  // The references of a formula.
  const TRef* RefsBegin(std::uint32_t nId) const { return m_Refs.data() + m_RefStart[nId]; }
  const TRef* RefsEnd(std::uint32_t nId) const { return m_Refs.data() + m_RefStart[nId + 1]; }
  // A defined name a formula uses. Few formulas use names, so they are kept as
  // pairs, by id, rather than with a start per formula.
  struct TNameUse {
    std::uint32_t nId;
    std::int32_t nName;
  };
  // The names formula nId uses: [*pBegin, *pEnd).
  void GetNames(std::uint32_t nId, const TNameUse** pBegin, const TNameUse** pEnd) const;

  // ---- Minimal recalculation -------------------------------------------------------
  // Marks dirty every formula that reads a cell of the rectangle, and queues it.
  void MarkReaders(int nSheet, int nRow1, int nCol1, int nRow2, int nCol2);
  // Marks and queues one formula (when not marked yet).
  void MarkDirty(std::uint32_t nId) {
    if (m_Flags[nId] & dfDirty) return;
    m_Flags[nId] |= dfDirty;
    m_Queue.push_back(nId);
  }
  // Marks the formulas recomputed every time (volatile, untrackable, circular), and
  // once the ones marked for recomputation when they were collected.
  void MarkAlways();
  // Marks the formulas that use defined name nName.
  void MarkNameUsers(int nName);
  // Follows the marks: a marked formula changes its own cell, so every formula that
  // reads it is marked too, until nothing new is reached.
  void Propagate();
  // The marked formulas in dependency order, marks cleared. Throws std::bad_alloc.
  void TakeDirty(std::vector<std::uint32_t>& ids);
  bool HasDirty() const { return !m_Dirty.empty() || !m_Queue.empty(); }

 private:
  struct TSheet {
    std::uint32_t nFirst = 0;  // the sheet's ids are nFirst..nEnd-1
    std::uint32_t nEnd = 0;
    // Row table: ids of row r are m_RowFirst[r]..m_RowFirst[r + 1]-1 (absolute ids),
    // for rows 0..(size - 2); rows past it hold no formula.
    std::vector<std::uint32_t> rowFirst;
    // Column table for tall rectangles, built when the order first walks one on
    // this sheet: ids of column c, by row, are colIds[colStart[c]..colStart[c + 1]).
    mutable std::vector<std::uint32_t> colStart;
    mutable std::vector<std::uint32_t> colIds;
    CRefIndex readers;  // rectangles read on this sheet -> reading formulas
  };

  // One step of the depth-first walk: a formula and where its walk over the formula
  // cells of its references stands. Kept small: a deep walk holds one per formula on
  // its path.
  struct TFrame {
    std::uint32_t nId;
    std::uint32_t nRef;     // the next reference to walk
    std::uint32_t j, jEnd;  // the slice of ids (or colIds) being walked
    // The rectangle being walked is reference nRef - 1: its rows (or columns) still
    // to come run to wLineEnd, wLine being the one walked; the other coordinate's
    // bounds are wLo..wHi.
    std::uint16_t wLine, wLineEnd;
    std::uint16_t wLo, wHi;
    bool bByColumn;
  };

  // Builds the column table of a sheet that holds formulas. Throws std::bad_alloc.
  void BuildColumns(const TSheet& sheet) const;
  // The id of the formula at row nRow (a row of the sheet's row table), column nCol,
  // or -1.
  long FindInRow(const TSheet& sheet, int nRow, int nCol) const;
  // The next formula cell that the frame's formula reads; false when there is none.
  bool NextPrecedent(TFrame& frame, std::uint32_t& nId) const;
  // Sets j..jEnd to the ids of line nLine of the frame's current reference.
  void SetLine(TFrame& frame) const;
  // Calls fn(nPrec) for each formula cell in the rectangles nId reads, in the order
  // the depth-first walk meets them, until fn returns false; returns false then.
  template <class F>
  bool ForEachPrecedent(std::uint32_t nId, F&& fn) const;
  // Orders nId, of sheet wSheet, at once when no precedent needs a walk: each one is
  // ordered and not circular, or reads nothing (it is appended first, as the walk
  // would). Returns false, having appended only such precedents, when nId needs the
  // walk. Every formula with a smaller id must be ordered; bAnyCircular tells whether
  // one of them is circular.
  bool OrderSettled(std::uint32_t nId, std::uint16_t wSheet, bool bAnyCircular);
  // Orders the precedents of nRoot, depth first with stack as the path: each
  // formula cell in the rectangles it reads is ordered (its own precedents first)
  // and appended unless circular. A formula met again on the path, or one already
  // circular, makes every formula on the path circular and ends the walk. Returns
  // false when nRoot is circular.
  bool SetDependentCellsOrder(std::uint32_t nRoot, TPodArray<TFrame>& stack);
  // A formula's flags are final when it is appended.
  void Append(std::uint32_t nId) {
    m_Flags[nId] |= dfOrdered;
    m_Pos[nId] = static_cast<std::uint32_t>(m_Order.size());
    m_Order.push_back(nId);
    if (m_Flags[nId] & dfCircular) m_nCircular++;
  }

  std::vector<TSheet> m_Sheets;
  TPodArray<std::uint32_t> m_Key;  // row << 8 | col, by id
  TPodArray<std::uint8_t> m_Flags;
  TPodArray<std::uint32_t> m_RefStart;  // by id, one more than formulas
  TPodArray<TRef> m_Refs;
  std::vector<TNameUse> m_Names;           // by id
  std::vector<std::uint32_t> m_Order;      // ids in dependency order
  TPodArray<std::uint32_t> m_Pos;          // place in m_Order, by id
  int m_nCircular = 0;                     // circular formulas in m_Order
  std::vector<std::uint32_t> m_AlwaysIds;  // volatile, untrackable, circular
  // Formulas that still carry the needs-recompute mark of their collection, until
  // the next minimal recalculation finds them by their flags.
  std::uint32_t m_nPending = 0;
  // The rectangle indexes count the references as they are added, from Reset (with
  // bIndexReaders) until BuildDependants.
  bool m_bCounting = true;
  bool m_bDependants = false;  // BuildDependants has run since Reset
  // (name, id) pairs sorted by name.
  std::vector<std::uint64_t> m_NameUsers;
  std::vector<std::uint32_t> m_Queue;  // marked, not yet followed
  std::vector<std::uint32_t> m_Dirty;  // marked and followed
};

inline std::uint32_t CDependencyGraph::AddFormula(int nSheet, int nRow, int nCol,
                                                  std::uint8_t cFlags) {
  const std::uint32_t nId = GetCount();
  if (nId > 0) m_RefStart.push_back(static_cast<std::uint32_t>(m_Refs.size()));
  m_Key.push_back(static_cast<std::uint32_t>(nRow) << 8 | static_cast<std::uint32_t>(nCol));
  m_Flags.push_back(cFlags);
  TSheet& sheet = m_Sheets[static_cast<size_t>(nSheet)];
  if (sheet.nFirst == sheet.nEnd) sheet.nFirst = nId;
  sheet.nEnd = nId + 1;
  return nId;
}

inline void CDependencyGraph::AddRef(int nSheet, int nRow1, int nCol1, int nRow2, int nCol2) {
  auto Clamp = [](int n, int nMax) { return n < 0 ? 0 : n > nMax ? nMax : n; };
  const int nRowLo = Clamp(nRow1 < nRow2 ? nRow1 : nRow2, kMaxRow);
  const int nRowHi = Clamp(nRow1 < nRow2 ? nRow2 : nRow1, kMaxRow);
  const int nColLo = Clamp(nCol1 < nCol2 ? nCol1 : nCol2, kMaxCol);
  const int nColHi = Clamp(nCol1 < nCol2 ? nCol2 : nCol1, kMaxCol);
  m_Refs.push_back({static_cast<std::uint16_t>(nSheet), static_cast<std::uint16_t>(nRowLo),
                    static_cast<std::uint16_t>(nRowHi), static_cast<std::uint8_t>(nColLo),
                    static_cast<std::uint8_t>(nColHi)});
  m_Flags.back() |= dfHasDeps;
  if (m_bCounting && static_cast<size_t>(nSheet) < m_Sheets.size())
    m_Sheets[static_cast<size_t>(nSheet)].readers.Count(nRowLo, nRowHi);
}

inline void CDependencyGraph::AddRefInGrid(int nSheet, int nRow1, int nCol1, int nRow2, int nCol2) {
  m_Refs.push_back({static_cast<std::uint16_t>(nSheet), static_cast<std::uint16_t>(nRow1),
                    static_cast<std::uint16_t>(nRow2), static_cast<std::uint8_t>(nCol1),
                    static_cast<std::uint8_t>(nCol2)});
  m_Flags.back() |= dfHasDeps;
  if (m_bCounting && static_cast<size_t>(nSheet) < m_Sheets.size())
    m_Sheets[static_cast<size_t>(nSheet)].readers.Count(nRow1, nRow2);
}

inline void CDependencyGraph::AddName(int nName) {
  m_Names.push_back({GetCount() - 1, nName});
  m_Flags.back() |= dfHasDeps;
}
