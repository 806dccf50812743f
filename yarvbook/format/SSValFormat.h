// CSSValFormat: a built-in number format of a book: a CValFormat with the built-in
// entry's 16-bit code and its alias mark.
#pragma once

#include "base/Export.h"
#include "format/ValFormat.h"

class YARVBOOK_API CSSValFormat : public CValFormat {
 public:
  CSSValFormat() = default;
  CSSValFormat(unsigned short wCode, bool bAlias) : m_wCode(wCode), m_bAlias(bAlias) {}
  CValFormat* Clone() const override { return new CSSValFormat(*this); }

  unsigned short GetCode() const { return m_wCode; }
  bool IsAlias() const { return m_bAlias; }

  // The code of built-in entry n: the entry's own index for 0..26, the entries a file
  // names by number; 0 for the others.
  static unsigned short GetCodeForIndex(int nIndex) {
    return nIndex >= 0 && nIndex <= 26 ? static_cast<unsigned short>(nIndex) : 0;
  }

 private:
  unsigned short m_wCode = 0;
  bool m_bAlias = false;
};
