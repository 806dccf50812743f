// CBookIteratorForEvaluate: the walk the evaluator uses to read a range. Beside the
// plain walk it can pass over rows that are hidden (what SUBTOTAL's 101-111 forms
// and AGGREGATE ignore: hidden rows, never hidden columns) and over cell objects that
// hold no value (formatted empty positions), so an aggregate sees values only.
#pragma once

#include "base/Export.h"
#include "book/BookIterator.h"

class YARVBOOK_API CBookIteratorForEvaluate : public CBookIterator {
 public:
  enum EFlag : int {
    flSkipHiddenRows = 1,  // rows hidden or of height 0 are passed over
    flValuesOnly = 2,      // cells holding the empty value are passed over
  };

  CBookIteratorForEvaluate(CSheetBase* pSheet, const TRange& range, int nFlags);

 protected:
  bool IsRowAccepted(int nRow) const override;
  bool IsCellAccepted(const CCell* pCell, int nRow, int nCol) const override;

 private:
  int m_nFlags;
};
