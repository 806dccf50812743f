// CFormulaRefIterator: walks a token stream for what the formula depends on: the
// cells and rectangles it reads (on its own sheet, or through an extern-sheet entry),
// the defined names it uses, and the two things that make it depend on more than a
// list of rectangles can say: a volatile function (computed afresh every time) and a
// reference that is only known when the formula runs or that no rectangle of this
// book describes (untrackable).
//
// Memory tokens are walked into rather than skipped: the sub-expression holds the
// same references as the stored range list, and its tokens need no added data.
#pragma once

#include "base/Export.h"
#include "formula/FormulaIterator.h"

class YARVBOOK_API CFormulaRefIterator : public CFormulaIterator {
 public:
  // What one step reports.
  struct TRef {
    enum EKind : unsigned char {
      rkArea = 0,         // rows nRow1..nRow2 by columns nCol1..nCol2
      rkName = 1,         // defined name nName of this book
      rkNameX = 2,        // name nName through extern sheet nExternSheet
      rkVolatile = 3,     // a volatile function or the volatile attribute
      rkUntrackable = 4,  // a run-time reference, a data-table or array link, ...
    };
    EKind eKind = rkArea;
    // -1 for the formula's own sheet; else the extern-sheet index of a 3-D token.
    int nExternSheet = -1;
    int nRow1 = 0, nCol1 = 0, nRow2 = 0, nCol2 = 0;  // in order, inside the grid
    int nName = 0;
  };

  CFormulaRefIterator(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula, EFormulaType type,
                      const TCell& base);

  // Points the walk at the start of another formula (null for none) with base cell
  // nRow, nCol, as the constructor does; the book stays.
  void Reset(CSheetBase* pSheet, CFormula* pFormula, EFormulaType type, int nRow, int nCol);

  // The next dependency; false at the end of the stream. A stream that ends inside
  // a token or holds an unknown code reports untrackable once and then ends.
  bool Next(TRef& ref) { return Next(&ref, 1) != 0; }
  // The next dependencies, the same reports as Next(ref) one by one: fills
  // pRefs[0..n) and returns n, which is less than nMax (nMax > 0) only when the
  // stream has ended.
  int Next(TRef* pRefs, int nMax);

 private:
  // The report of a reporting token whose code is at pCode and whose operands are
  // inside the stream.
  void Decode(const unsigned char* pCode, TRef& ref) const;
};
