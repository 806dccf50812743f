// TRangeIterator: walks the cells of a range, or of a region's bounding range while
// returning only the cells the region contains.
//
//   TRangeIterator it(region, /*bByRow=*/1);
//   if (it.Start())
//     while (it.Next()) Visit(it.Current());
#pragma once

#include "base/Cell.h"
#include "base/Export.h"
#include "base/Range.h"
#include "base/Region.h"

class YARVBOOK_API TRangeIterator {
 public:
  TRangeIterator() = default;
  // bByRow non-zero walks along each row first (column varies fastest); zero walks
  // down each column first.
  TRangeIterator(const TRange& range, int bByRow) { Start(range, bByRow); }
  TRangeIterator(const TRegion& region, int bByRow) { Start(region, bByRow); }

  // Re-targets the iterator and calls Start().
  int Start(const TRange& range, int bByRow);
  int Start(const TRegion& region, int bByRow);
  // Rewinds to just before the first cell. Returns 0 (and Next then yields nothing)
  // unless the range lies inside the grid with first <= last.
  int Start();
  // Moves to the next cell that the region contains; returns 1, or 0 once the walk
  // has left the range.
  int Next();

  // The cell last returned by Next.
  const TCell& Current() const { return m_Current; }
  const TRange& GetRange() const { return m_Range; }
  const TRegion& GetRegion() const { return m_Region; }
  int IsByRow() const { return m_bByRow; }

 private:
  TCell m_Current;
  TRange m_Range;
  TRegion m_Region;  // filter: only cells it contains are returned
  int m_bByRow = 1;
  bool m_bStarted = false;  // set by a successful Start; Next fails without it
};
