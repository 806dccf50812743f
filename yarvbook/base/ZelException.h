// CZelException: the one exception the engine throws. Exhausted memory and a full
// record pool are the only causes; everything else fails through return values.
#pragma once

#include "base/Export.h"

class YARVBOOK_API CZelException {
 public:
  // Error numbers carried by the exception.
  enum EError : int {
    errNone = 0,
    errMemory = 3,  // memory exhausted or a record pool full
  };

  CZelException() = default;
  explicit CZelException(int nErrorNum) : m_nErrorNum(nErrorNum) {}

  int get_ErrorNum() const { return m_nErrorNum; }
  void set_ErrorNum(int nErrorNum) { m_nErrorNum = nErrorNum; }

  // Throws CZelException(errMemory). Out of line so that call sites stay small.
  [[noreturn]] static void ThrowMemory();

 private:
  int m_nErrorNum = errNone;
};
