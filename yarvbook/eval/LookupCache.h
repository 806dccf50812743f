// CLookupCache: indexes of the lines (first columns or first rows) that lookup
// tables on sheets are searched along, so that the many exact searches of one
// recalculation into one table cost a binary search or a hash probe each instead of
// a scan. Private to the engine.
//
// Indexes live only while a TScope is open; the recalculation chain opens one
// around each recomputation. Inside it the only cell stores are recomputed formula
// results, which CFormulaCell reports through CellChanged: that drops every index
// whose line holds the cell. Outside a scope cells change without notice, so nothing
// is kept and every search scans.
#pragma once

#include <cstdint>
#include <vector>

class CSheetBase;
class TValue;

// A line of cells: (nFirst..nLast, nLine) down a column, or (nLine, nFirst..nLast)
// along a row (bHorizontal).
struct TSheetLine {
  const CSheetBase* pSheet = nullptr;
  bool bHorizontal = false;
  int nLine = 0;
  int nFirst = 0, nLast = -1;

  int Size() const { return nLast - nFirst + 1; }
  bool Holds(const CSheetBase* pCellSheet, int nRow, int nCol) const {
    const int nAlong = bHorizontal ? nCol : nRow;
    return pCellSheet == pSheet && (bHorizontal ? nRow : nCol) == nLine && nAlong >= nFirst &&
           nAlong <= nLast;
  }
  bool operator==(const TSheetLine&) const = default;
};

class CLookupCache {
 public:
  // Shorter lines are scanned: building would cost more than the scans it saves.
  static constexpr int kMinLineSize = 32;
  // Searches of a line that scan before the next one builds its index. A build
  // reads the whole line and sorts it, the cost of a few scans: the few searches of a
  // small edit are cheaper scanned.
  static constexpr int kScansBeforeIndex = 3;
  // Indexes kept at once; the least recently used one goes first. A line has at
  // most 65,536 cells and an index about 16 bytes per usable cell.
  static constexpr int kMaxIndexes = 4;

  // The usable elements of one line (neither empty nor an error) by kind: numbers
  // sorted, texts by the hash of their case-folded form, the first TRUE and FALSE.
  class TIndex {
   public:
    // Reads the line's cells, which must stay unchanged while Find is used. Throws
    // std::bad_alloc.
    void Build(const TSheetLine& line);
    // What a scan of the line in order gives: the offset from the line's first cell
    // of the first usable element e with v.Compare(e) == 0, or -1. v must be
    // indexable.
    int Find(const TValue& v) const;
    // Numbers, texts and logicals; others (Empty, errors, references) never reach
    // an index.
    static bool IsIndexable(const TValue& v);

   private:
    struct TNumber {
      double r;
      int nPos;
    };
    struct TText {
      std::uint64_t nHash;  // HashStringNoCase
      int nPos;
    };
    int FindNumber(const TValue& v) const;
    int FindText(const TValue& v) const;

    TSheetLine m_Line;
    // Distinct values ascending (-0 counted with 0), each at its first position.
    std::vector<TNumber> m_Numbers;
    // By hash, then position; equal hashes are confirmed against the cell.
    std::vector<TText> m_Texts;
    int m_nFirstNaN = -1;                // a NaN compares equal to every number
    int m_anFirstLogical[2] = {-1, -1};  // FALSE, TRUE
  };

  // Keeps indexes from construction to destruction; scopes nest, and both ends
  // forget every index.
  class TScope {
   public:
    TScope();
    ~TScope();
    TScope(const TScope&) = delete;
    TScope& operator=(const TScope&) = delete;
  };

  // The exact search of v along line from an index: true with *pnPos set (offset
  // or -1) when one answered. False when the caller must scan: no scope is open, v
  // is not indexable, the line is short, the line has been searched fewer than
  // kScansBeforeIndex times in this scope (or since its index was dropped), or
  // memory ran out.
  static bool Find(const TSheetLine& line, const TValue& v, int* pnPos);

  // A formula cell got a new value: drops the indexes whose line holds it.
  static void CellChanged(const CSheetBase* pSheet, int nRow, int nCol) {
    if (m_nIndexes != 0) DropIndexesHolding(pSheet, nRow, nCol);
  }

 private:
  static void DropIndexesHolding(const CSheetBase* pSheet, int nRow, int nCol);

  static int m_nIndexes;  // indexes held now, so that CellChanged costs one test without
};
