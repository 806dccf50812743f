// TRegion: an ordered list of ranges, a selection or reference made of several
// rectangles. Ranges stay in insertion order and may overlap unless an operation
// says otherwise. The array is kept at exactly the count: regions are small, and
// every Add reallocates. Operations that rebuild a whole region (CompressRanges,
// Combine, Subtract) work on a scratch list and store the result once.
#pragma once

#include <string>

#include "base/Cell.h"
#include "base/Export.h"
#include "base/Range.h"
#include "base/Rect.h"

class YARVBOOK_API TRegion {
 public:
  using PFNCOMPARE = int (*)(const TRange& a, const TRange& b);

  TRegion() = default;
  explicit TRegion(const TRange& range) { Add(range); }
  TRegion(const TRegion& other) { Add(other.m_nCount, other.m_pRanges); }
  TRegion(TRegion&& other) noexcept;
  TRegion& operator=(const TRange& range);
  TRegion& operator=(const TRegion& other);
  TRegion& operator=(TRegion&& other) noexcept;
  virtual ~TRegion();

  int Ranges() const { return m_nCount; }
  bool IsEmpty() const { return m_nCount == 0; }
  // The i-th range; i must lie in 0..Ranges()-1.
  const TRange& Range(int i) const { return m_pRanges[i]; }
  TRange& Range(int i) { return m_pRanges[i]; }
  // The array of Ranges() ranges, owned by the region; null when empty. Valid until
  // the region next changes its count.
  const TRange* RangesPt() const { return m_pRanges; }
  TRange* RangesPt() { return m_pRanges; }

  void Add(const TRange& range) { Add(1, &range); }
  // Appends nCount ranges from pRanges (which may point into this region).
  void Add(int nCount, const TRange* pRanges);
  void Add(const TCell& cell1, const TCell& cell2) { Add(TRange(cell1, cell2)); }
  void Add(const TCell& cell) { Add(TRange(cell)); }
  void Add(const TRegion& other) { Add(other.m_nCount, other.m_pRanges); }
  // Removes the i-th range, shifting the later ones down; ignored when i is out of range.
  void RemoveAt(int i);
  // Frees the array; the region becomes empty.
  void Clear();

  // Replaces text with the ranges' A1 texts joined with ",". False, with text empty,
  // for an empty region or when a range has a corner outside the grid.
  bool GetText(std::u16string& text) const;

  // True if some range holds the cell.
  bool Contains(const TCell& cell) const;
  // True if one single range holds the whole range (several ranges that only cover
  // it together do not count).
  bool Contains(const TRange& range) const;
  // True if every range of other passes Contains; true for an empty other.
  bool Contains(const TRegion& other) const;
  bool ContainsExact(const TCell& cell) const { return Contains(cell); }
  // Takes the first range that intersects range (none: false), cuts it out of range,
  // and is true when every remaining piece lies whole in a single range of this.
  bool ContainsExact(const TRange& range) const;
  // Every range of other passes ContainsExact; true for an empty other.
  bool ContainsExact(const TRegion& other) const;

  bool CheckIntersect(const TCell& cell) const { return Contains(cell); }
  bool CheckIntersect(const TRange& range) const;
  bool CheckIntersect(const TRegion& other) const;
  // True when two of this region's own ranges overlap; false with fewer than two.
  bool IsRangesIntersect() const;

  // Non-empty, and every range is a whole-row range (IsRow) or whole-column range.
  bool IsRow() const;
  bool IsColumn() const;
  // At least one whole-row (whole-column) range.
  bool ContainsRow() const;
  bool ContainsColumn() const;
  // With more than one range: whole rows or whole columns mixed with other shapes.
  bool IsRangesMixed() const;

  // A copy with every range widened to columns 0..255.
  TRegion GetEntireRow() const;
  // A copy with every range widened to rows 0..65535.
  TRegion GetEntireColumn() const;
  // Bounding rectangle of all ranges; A1:A1 for an empty region.
  TRange GetBoundaryRange() const;

  // This becomes the non-empty intersections of each of region's ranges with the
  // second operand, in region's order. True when anything is left. Either operand
  // may be this region.
  bool Intersect(const TRegion& region, const TRange& range);
  bool Intersect(const TRegion& region, const TRegion& other);
  bool Intersect(const TRegion& region, const TCell& cell);
  bool Intersect(const TRange& range) { return Intersect(*this, range); }

  // Differences: each range of the minuend is cut by TRange::Subtract and the pieces
  // are appended in order (for a region subtrahend, by each of its ranges in turn).
  // The result replaces this; true when anything is left. Operands may alias this.
  bool Subtract(const TRange& range) { return Subtract(*this, range); }
  bool Subtract(const TRegion& other) { return Subtract(*this, other); }
  bool Subtract(const TRegion& region, const TRange& range);
  bool Subtract(const TRegion& region, const TRegion& other);
  bool Subtract(const TRange& range, const TRange& other);

  // Applied to every range.
  void OffsetRows(int nFrom, int nTo, int nDelta);
  TRegion& operator+=(const TCell& cell);
  TRegion& operator-=(const TCell& cell);
  TRegion operator+(const TCell& cell) const;
  TRegion operator-(const TCell& cell) const;

  // Stable sort with one of TRange's comparators (CompareBottom, CompareRight,
  // CompareBottomRight): a before b when pfnCompare(a, b) < 0.
  void Sort(PFNCOMPARE pfnCompare);

  // True when the region's cells form exactly one rectangle; size gets its extent
  // (cx columns, cy rows). False for an empty region (size 0, 0).
  bool IsSquare(TSize& size) const;

  // Joins edge-adjacent ranges of equal extent (TRange::Combine), each range in turn
  // absorbing the later ones it can, until none joins; survivors keep their order.
  void Combine();
  // Adds one cell so that a region built cell by cell stays compact: the cell is
  // joined to the last range that can take it, and the grown range to earlier ones.
  // A cell already in the region is not added again.
  void AddIteratingCell(const TCell& cell);
  // Absorbs into the range at nIndex every range with the same rows (or the same
  // columns) that touches or overlaps it, removing the absorbed ranges. True when the
  // range changed. nIndex must lie in 0..Ranges()-1.
  bool MergeToRegion(int nIndex);
  // MergeToRegion on the ranges from nStart onward until no further merge happens.
  void Compress(int nStart = 0);
  // Replaces the ranges with a non-overlapping cover of exactly the same cells in as
  // few pieces as a row-band and a column-band sweep find, sorted by first row and
  // then first column.
  void CompressRanges();

 private:
  // Replaces the contents with n ranges (taken before the old array is freed).
  void Assign(int nCount, const TRange* pRanges);

  int m_nCount = 0;
  TRange* m_pRanges = nullptr;  // owned; exactly m_nCount ranges, null when empty
};
