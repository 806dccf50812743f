// CChangedRangesArray: a growable array of TChangedRange, the storage of a changed
// region. Indexes are not checked beyond debug assertions: the region that owns the
// array walks only what it stored.
#pragma once

#include <cassert>
#include <cstddef>
#include <vector>

#include "base/Export.h"
#include "recalc/ChangedRange.h"

class YARVBOOK_API CChangedRangesArray {
 public:
  CChangedRangesArray() = default;

  int GetSize() const { return static_cast<int>(m_Ranges.size()); }
  TChangedRange& operator[](int i) {
    assert(i >= 0 && i < GetSize() && "changed range index");
    return m_Ranges[static_cast<std::size_t>(i)];
  }
  const TChangedRange& operator[](int i) const {
    assert(i >= 0 && i < GetSize() && "changed range index");
    return m_Ranges[static_cast<std::size_t>(i)];
  }
  // Makes room for nCount rectangles in all without changing the contents.
  void GrowBuf(int nCount) { m_Ranges.reserve(static_cast<std::size_t>(nCount)); }
  // Opens nCount default rectangles at nIndex (0..GetSize()); later ones move up.
  void Insert(int nIndex, int nCount);
  // Removes nCount rectangles from nIndex; later ones move down.
  void Delete(int nIndex, int nCount);
  // Empties the array and gives its storage back.
  void Clear() { std::vector<TChangedRange>().swap(m_Ranges); }

 private:
  std::vector<TChangedRange> m_Ranges;
};
