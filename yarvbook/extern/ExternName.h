// CExternName: a name of a supporting book that formulas refer to (tNameX), with its
// flags and, when known, its definition as a CName.
#pragma once

#include <memory>
#include <string>

#include "base/Export.h"
#include "base/ZelObject.h"

class CName;

class YARVBOOK_API CExternName : public CZelObject {
 public:
  CExternName();
  // The name is the nLength units at pwszName (-1: up to the terminator).
  CExternName(const char16_t* pwszName, int nLength, unsigned short wFlags = 0);
  ~CExternName() override;

  CZelObject* Clone() const override;
  void Copy(const CZelObject* pSrc) override;
  // 0 when the names are equal ignoring case and the flags are equal.
  int Compare(const CZelObject* pOther) const override;

  const char16_t* GetName() const { return m_sName.c_str(); }
  int GetNameLength() const { return static_cast<int>(m_sName.size()); }
  unsigned short GetFlags() const { return m_wFlags; }
  void SetFlags(unsigned short wFlags) { m_wFlags = wFlags; }
  // True when the nLength units at pwszName are this name, ignoring case.
  bool IsNamed(const char16_t* pwszName, int nLength) const;

  // The definition, or null when the supporting book did not give one. Owned.
  CName* GetDefinition() const { return m_pDefinition.get(); }
  void SetDefinition(std::unique_ptr<CName> pDefinition);

 private:
  std::u16string m_sName;
  unsigned short m_wFlags = 0;
  std::unique_ptr<CName> m_pDefinition;
};
