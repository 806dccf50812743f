#include "base/Region.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <map>
#include <utility>
#include <vector>

namespace {

using TRangeList = std::vector<TRange>;

// Appends range minus cut to out, in TRange::Subtract's piece order.
void AppendDifference(const TRange& range, const TRange& cut, TRangeList& out) {
  TRegion pieces;
  range.Subtract(cut, pieces);
  out.insert(out.end(), pieces.RangesPt(), pieces.RangesPt() + pieces.Ranges());
}

// A rectangle in 64-bit half-open coordinates, so that sweeps never overflow at the
// edges of int; y runs along the sweep, x across it.
struct TSpan {
  long long y1, x1, y2, x2;  // y2 and x2 exclusive
};

// Covers the cells of spans with non-overlapping rectangles: the sweep axis is cut
// into bands at every span edge; in each band the covered intervals are merged, and
// an interval that continues unchanged into the next band extends its rectangle.
std::vector<TSpan> SweepCover(std::vector<TSpan> spans) {
  std::vector<TSpan> out;
  std::vector<long long> edges;
  edges.reserve(spans.size() * 2);
  for (const TSpan& s : spans) {
    edges.push_back(s.y1);
    edges.push_back(s.y2);
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  std::sort(spans.begin(), spans.end(), [](const TSpan& a, const TSpan& b) { return a.y1 < b.y1; });

  std::vector<TSpan> active;                                  // spans crossing the current band
  std::map<std::pair<long long, long long>, long long> open;  // interval -> first band y
  std::vector<std::pair<long long, long long>> intervals;
  std::size_t nNext = 0;
  for (std::size_t k = 0; k < edges.size(); ++k) {
    const long long y = edges[k];
    std::erase_if(active, [y](const TSpan& s) { return s.y2 <= y; });
    while (nNext < spans.size() && spans[nNext].y1 == y) active.push_back(spans[nNext++]);

    intervals.clear();
    for (const TSpan& s : active) intervals.emplace_back(s.x1, s.x2);
    std::sort(intervals.begin(), intervals.end());
    std::size_t nMerged = 0;
    for (const auto& iv : intervals) {
      if (nMerged > 0 && iv.first <= intervals[nMerged - 1].second) {
        intervals[nMerged - 1].second = std::max(intervals[nMerged - 1].second, iv.second);
      } else {
        intervals[nMerged++] = iv;
      }
    }
    intervals.resize(nMerged);

    // Close the rectangles whose interval does not continue, open the new intervals.
    for (auto it = open.begin(); it != open.end();) {
      if (std::binary_search(intervals.begin(), intervals.end(), it->first)) {
        ++it;
        continue;
      }
      out.push_back({it->second, it->first.first, y, it->first.second});
      it = open.erase(it);
    }
    for (const auto& iv : intervals) open.emplace(iv, y);
  }
  return out;  // the last edge has no band above it, so nothing is left open
}

// Builds the cover along rows (bTransposed false: bands of rows) or along columns.
TRangeList CoverOf(const TRange* pRanges, int nCount, bool bTransposed) {
  std::vector<TSpan> spans;
  spans.reserve(static_cast<std::size_t>(nCount));
  for (int i = 0; i < nCount; ++i) {
    TRange r = pRanges[i];
    r.Normalize();
    if (bTransposed) {
      spans.push_back({r.first.col, r.first.row, r.last.col + 1LL, r.last.row + 1LL});
    } else {
      spans.push_back({r.first.row, r.first.col, r.last.row + 1LL, r.last.col + 1LL});
    }
  }
  TRangeList out;
  for (const TSpan& s : SweepCover(std::move(spans))) {
    const int a1 = static_cast<int>(s.y1), b1 = static_cast<int>(s.x1);
    const int a2 = static_cast<int>(s.y2 - 1), b2 = static_cast<int>(s.x2 - 1);
    out.push_back(bTransposed ? TRange(b1, a1, b2, a2) : TRange(a1, b1, a2, b2));
  }
  std::sort(out.begin(), out.end(),
            [](const TRange& a, const TRange& b) { return TRange::CompareBottomRight(a, b) < 0; });
  return out;
}

}  // namespace

TRegion::TRegion(TRegion&& other) noexcept
    : m_nCount(std::exchange(other.m_nCount, 0)),
      m_pRanges(std::exchange(other.m_pRanges, nullptr)) {}

TRegion& TRegion::operator=(const TRange& range) {
  Assign(1, &range);
  return *this;
}

TRegion& TRegion::operator=(const TRegion& other) {
  if (this != &other) Assign(other.m_nCount, other.m_pRanges);
  return *this;
}

TRegion& TRegion::operator=(TRegion&& other) noexcept {
  if (this != &other) {
    Clear();
    m_nCount = std::exchange(other.m_nCount, 0);
    m_pRanges = std::exchange(other.m_pRanges, nullptr);
  }
  return *this;
}

TRegion::~TRegion() { Clear(); }

void TRegion::Assign(int nCount, const TRange* pRanges) {
  TRange* pNew = nCount > 0 ? new TRange[nCount] : nullptr;
  std::copy(pRanges, pRanges + std::max(nCount, 0), pNew);
  delete[] m_pRanges;
  m_pRanges = pNew;
  m_nCount = std::max(nCount, 0);
}

void TRegion::Add(int nCount, const TRange* pRanges) {
  if (nCount <= 0) return;
  if (nCount > std::numeric_limits<int>::max() - m_nCount) throw std::bad_array_new_length();
  TRange* pNew = new TRange[m_nCount + nCount];
  std::copy(m_pRanges, m_pRanges + m_nCount, pNew);
  std::copy(pRanges, pRanges + nCount, pNew + m_nCount);  // before the old array goes
  delete[] m_pRanges;
  m_pRanges = pNew;
  m_nCount += nCount;
}

void TRegion::RemoveAt(int i) {
  if (i < 0 || i >= m_nCount) return;
  if (m_nCount == 1) {
    Clear();
    return;
  }
  std::copy(m_pRanges + i + 1, m_pRanges + m_nCount, m_pRanges + i);
  --m_nCount;
}

void TRegion::Clear() {
  delete[] m_pRanges;
  m_pRanges = nullptr;
  m_nCount = 0;
}

bool TRegion::GetText(std::u16string& text) const {
  text.clear();
  for (int i = 0; i < m_nCount; ++i) {
    if (i > 0) text += u',';
    if (!m_pRanges[i].AppendText(text)) {
      text.clear();
      return false;
    }
  }
  return !text.empty();
}

bool TRegion::Contains(const TCell& cell) const {
  return std::any_of(m_pRanges, m_pRanges + m_nCount,
                     [&](const TRange& r) { return r.Contains(cell); });
}

bool TRegion::Contains(const TRange& range) const {
  return std::any_of(m_pRanges, m_pRanges + m_nCount,
                     [&](const TRange& r) { return r.Contains(range); });
}

bool TRegion::Contains(const TRegion& other) const {
  return std::all_of(other.m_pRanges, other.m_pRanges + other.m_nCount,
                     [&](const TRange& r) { return Contains(r); });
}

bool TRegion::ContainsExact(const TRange& range) const {
  for (int i = 0; i < m_nCount; ++i) {
    TRegion rest;
    if (!range.SubtractEx(m_pRanges[i], rest)) continue;
    for (int j = 0; j < rest.Ranges(); ++j) {
      if (!Contains(rest.Range(j))) return false;
    }
    return true;
  }
  return false;
}

bool TRegion::ContainsExact(const TRegion& other) const {
  return std::all_of(other.m_pRanges, other.m_pRanges + other.m_nCount,
                     [&](const TRange& r) { return ContainsExact(r); });
}

bool TRegion::CheckIntersect(const TRange& range) const {
  return std::any_of(m_pRanges, m_pRanges + m_nCount,
                     [&](const TRange& r) { return r.CheckIntersect(range); });
}

bool TRegion::CheckIntersect(const TRegion& other) const {
  return std::any_of(other.m_pRanges, other.m_pRanges + other.m_nCount,
                     [&](const TRange& r) { return CheckIntersect(r); });
}

bool TRegion::IsRangesIntersect() const {
  for (int i = 0; i < m_nCount; ++i) {
    for (int j = i + 1; j < m_nCount; ++j) {
      if (m_pRanges[i].CheckIntersect(m_pRanges[j])) return true;
    }
  }
  return false;
}

bool TRegion::IsRow() const {
  return m_nCount > 0 &&
         std::all_of(m_pRanges, m_pRanges + m_nCount, [](const TRange& r) { return r.IsRow(); });
}

bool TRegion::IsColumn() const {
  return m_nCount > 0 &&
         std::all_of(m_pRanges, m_pRanges + m_nCount, [](const TRange& r) { return r.IsColumn(); });
}

bool TRegion::ContainsRow() const {
  return std::any_of(m_pRanges, m_pRanges + m_nCount, [](const TRange& r) { return r.IsRow(); });
}

bool TRegion::ContainsColumn() const {
  return std::any_of(m_pRanges, m_pRanges + m_nCount, [](const TRange& r) { return r.IsColumn(); });
}

bool TRegion::IsRangesMixed() const {
  if (m_nCount < 2) return false;
  if (!ContainsRow() && !ContainsColumn()) return false;
  return !IsRow() && !IsColumn();
}

TRegion TRegion::GetEntireRow() const {
  TRegion out(*this);
  for (int i = 0; i < out.m_nCount; ++i) out.m_pRanges[i].SetCols(0, kMaxCol);
  return out;
}

TRegion TRegion::GetEntireColumn() const {
  TRegion out(*this);
  for (int i = 0; i < out.m_nCount; ++i) out.m_pRanges[i].SetRows(0, kMaxRow);
  return out;
}

TRange TRegion::GetBoundaryRange() const {
  if (m_nCount == 0) return TRange();
  TRange bounds = m_pRanges[0];
  for (int i = 1; i < m_nCount; ++i) bounds.Union(bounds, m_pRanges[i]);
  return bounds;
}

// The results are built in a scratch list and stored last, which makes aliasing of
// this with either operand harmless.
bool TRegion::Intersect(const TRegion& region, const TRange& range) {
  TRangeList out;
  for (int i = 0; i < region.m_nCount; ++i) {
    TRange r;
    if (r.Intersect(region.m_pRanges[i], range)) out.push_back(r);
  }
  Assign(static_cast<int>(out.size()), out.data());
  return m_nCount > 0;
}

bool TRegion::Intersect(const TRegion& region, const TRegion& other) {
  TRangeList out;
  for (int i = 0; i < region.m_nCount; ++i) {
    for (int j = 0; j < other.m_nCount; ++j) {
      TRange r;
      if (r.Intersect(region.m_pRanges[i], other.m_pRanges[j])) out.push_back(r);
    }
  }
  Assign(static_cast<int>(out.size()), out.data());
  return m_nCount > 0;
}

bool TRegion::Intersect(const TRegion& region, const TCell& cell) {
  return Intersect(region, TRange(cell));
}

bool TRegion::Subtract(const TRegion& region, const TRange& range) {
  TRangeList out;
  for (int i = 0; i < region.m_nCount; ++i) AppendDifference(region.m_pRanges[i], range, out);
  Assign(static_cast<int>(out.size()), out.data());
  return m_nCount > 0;
}

bool TRegion::Subtract(const TRegion& region, const TRegion& other) {
  TRangeList work(region.m_pRanges, region.m_pRanges + region.m_nCount);
  TRangeList next;
  for (int j = 0; j < other.m_nCount && !work.empty(); ++j) {
    next.clear();
    for (const TRange& r : work) AppendDifference(r, other.m_pRanges[j], next);
    work.swap(next);
  }
  Assign(static_cast<int>(work.size()), work.data());
  return m_nCount > 0;
}

bool TRegion::Subtract(const TRange& range, const TRange& other) {
  TRangeList out;
  AppendDifference(range, other, out);
  Assign(static_cast<int>(out.size()), out.data());
  return m_nCount > 0;
}

void TRegion::OffsetRows(int nFrom, int nTo, int nDelta) {
  for (int i = 0; i < m_nCount; ++i) m_pRanges[i].OffsetRows(nFrom, nTo, nDelta);
}

TRegion& TRegion::operator+=(const TCell& cell) {
  for (int i = 0; i < m_nCount; ++i) m_pRanges[i] += cell;
  return *this;
}

TRegion& TRegion::operator-=(const TCell& cell) {
  for (int i = 0; i < m_nCount; ++i) m_pRanges[i] -= cell;
  return *this;
}

TRegion TRegion::operator+(const TCell& cell) const {
  TRegion out(*this);
  out += cell;
  return out;
}

TRegion TRegion::operator-(const TCell& cell) const {
  TRegion out(*this);
  out -= cell;
  return out;
}

void TRegion::Sort(PFNCOMPARE pfnCompare) {
  std::stable_sort(m_pRanges, m_pRanges + m_nCount,
                   [pfnCompare](const TRange& a, const TRange& b) { return pfnCompare(a, b) < 0; });
}

bool TRegion::IsSquare(TSize& size) const {
  size = TSize();
  if (m_nCount == 0) return false;
  const TRange bounds = GetBoundaryRange();
  TRegion cover(*this);
  cover.CompressRanges();
  long long nCells = 0;
  for (int i = 0; i < cover.m_nCount; ++i) nCells += cover.m_pRanges[i].CellCount();
  if (nCells != bounds.CellCount()) return false;
  size = TSize(bounds.Cols(), bounds.Rows());
  return true;
}

void TRegion::Combine() {
  if (m_nCount < 2) return;
  TRangeList work(m_pRanges, m_pRanges + m_nCount);
  std::vector<bool> live(work.size(), true);
  const int n = m_nCount;
  for (int i = 0; i + 1 < n; ++i) {
    if (!live[i]) continue;
    // Range i grows with every join, so ranges already passed over may fit it now:
    // the scan starts again from the beginning after each join.
    for (int j = 0; j < n; ++j) {
      if (j == i || !live[j] || !work[i].Combine(work[j])) continue;
      live[j] = false;
      j = -1;
    }
  }
  TRangeList out;
  for (int i = 0; i < n; ++i) {
    if (live[i]) out.push_back(work[i]);
  }
  if (static_cast<int>(out.size()) != m_nCount) Assign(static_cast<int>(out.size()), out.data());
}

void TRegion::AddIteratingCell(const TCell& cell) {
  if (Contains(cell)) return;
  TRange piece(cell);
  int nAbsorber = -1;
  for (int i = m_nCount - 1; i >= 0; --i) {
    if (!m_pRanges[i].Combine(piece)) continue;
    if (nAbsorber >= 0) RemoveAt(nAbsorber);  // it lay after i, so i keeps its place
    nAbsorber = i;
    piece = m_pRanges[i];
  }
  if (nAbsorber < 0) Add(piece);
}

bool TRegion::MergeToRegion(int nIndex) {
  if (nIndex < 0 || nIndex >= m_nCount) return false;
  const TRange original = m_pRanges[nIndex];
  TRange grow = original;
  for (int i = m_nCount - 1; i >= 0; --i) {
    if (i == nIndex) continue;
    const TRange& r = m_pRanges[i];
    const bool bSameRows = r.first.row == grow.first.row && r.last.row == grow.last.row;
    const bool bSameCols = r.first.col == grow.first.col && r.last.col == grow.last.col;
    if (!bSameRows && !bSameCols) continue;
    // With equal rows (or columns) the ranges join into their bounding rectangle
    // exactly when they overlap or touch, which the grown copy detects.
    TRange grown = grow;
    grown.SafeInflate(1, 1);
    if (!grown.CheckIntersect(r)) continue;
    grow.Union(grow, r);
    RemoveAt(i);
    if (i < nIndex) --nIndex;
  }
  m_pRanges[nIndex] = grow;
  return grow != original;
}

void TRegion::Compress(int nStart) {
  bool bMerged = true;
  while (bMerged) {
    bMerged = false;
    for (int i = std::max(nStart, 0); i < m_nCount; ++i) {
      if (MergeToRegion(i)) bMerged = true;
    }
  }
}

void TRegion::CompressRanges() {
  if (m_nCount == 0) return;
  TRangeList byRows = CoverOf(m_pRanges, m_nCount, false);
  TRangeList byCols = CoverOf(m_pRanges, m_nCount, true);
  const TRangeList& best = byCols.size() < byRows.size() ? byCols : byRows;
  Assign(static_cast<int>(best.size()), best.data());
}
