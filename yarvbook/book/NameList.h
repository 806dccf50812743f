// CNameList: a book's table of defined names, 1-based as tName tokens index it. The
// book owns one and forwards AddName, DeleteName, FindName, GetName and GetNumNames
// to it. Index 0 never names an entry.
#pragma once

#include "base/Export.h"
#include "base/ZelObArray.h"

class CName;

class YARVBOOK_API CNameList {
 public:
  CNameList() = default;
  CNameList(const CNameList&) = delete;
  CNameList& operator=(const CNameList&) = delete;

  // Frees every name.
  void Clear() { m_Names.Clear(); }

  int GetNumNames() const { return m_Names.GetSize(); }
  // The name at 1-based nIndex, or null outside 1..GetNumNames().
  CName* GetName(int nIndex) const;
  // Takes pName over and returns its index. When CZelException (memory) is thrown,
  // pName is still the caller's.
  int AddName(CName* pName);
  // Deletes the name at nIndex; later names move down by one. False outside the table.
  bool DeleteName(int nIndex);
  // The index of the name spelt by the nLength units at pwszName (-1: to the
  // terminator), ignoring case, for a formula on sheet nSheet: a name of that sheet
  // first, then a book-level name. 0 when none.
  int FindName(const char16_t* pwszName, int nLength, int nSheet) const;
  // The same for a zero-terminated name.
  int FindName(const char16_t* pwszName, int nSheet) const {
    return FindName(pwszName, -1, nSheet);
  }
  // Resets the changed mark of every name (the end of a recalculation).
  void ResetChanged();

 private:
  CZelObArray m_Names;  // CName, owned; slot i holds name i + 1
};
