// CSupSheet: one sheet of a supporting book that formulas refer to, by name.
#pragma once

#include <string>

#include "base/Export.h"
#include "base/ZelObject.h"

class YARVBOOK_API CSupSheet : public CZelObject {
 public:
  CSupSheet() = default;
  explicit CSupSheet(const char16_t* pwszName) { SetSheetName(pwszName); }

  CZelObject* Clone() const override;
  void Copy(const CZelObject* pSrc) override;
  // 0 when the names are equal ignoring case.
  int Compare(const CZelObject* pOther) const override;
  bool IsEmpty() const override { return m_sName.empty(); }

  // The name; empty when none was given.
  const char16_t* GetSheetName() const { return m_sName.c_str(); }
  bool HasSheetName() const { return !m_sName.empty(); }
  // Null stores the empty name. False, keeping the old name, when memory is exhausted.
  bool SetSheetName(const char16_t* pwszName);
  // The same, throwing CZelException when memory is exhausted.
  void SetSheetNameWithException(const char16_t* pwszName);

 private:
  std::u16string m_sName;
};
