// TExternFunc: a function supplied from outside the built-in table (by the host, an
// add-in, or the engine's own external set). External functions form a list of their
// own; the parser tries them after the built-ins and writes a call as function 255
// with the function's name attached. "CONVERTK" is registered by the engine.
#pragma once

#include <string>

#include "base/Export.h"
#include "base/ZelObject.h"

class CBookBase;
class CFormulaCell;
class TValue;

class YARVBOOK_API TExternFunc : public CZelObject {
 public:
  static constexpr unsigned char kFlagLocalName = 0x01;  // has a distinct local name

  // Both register at the head of the list. The English name is upper case and
  // outlives the object. With a resource id the local name is loaded by the late
  // initialiser; with a local name it is taken as given (upper-cased).
  TExternFunc(unsigned nResId, const char16_t* pwszName);
  TExternFunc(const char16_t* pwszLocalName, const char16_t* pwszName);
  ~TExternFunc() override;

  // The body: nArgs arguments in consecutive stack slots, result into pArgs[0]. A
  // wrong argument count is the body's to answer (as an error value).
  virtual void Evaluate(TValue* pArgs, int nArgs) = 0;
  // With the calling formula cell (may be null); forwards.
  virtual void Evaluate(TValue* pArgs, int nArgs, CFormulaCell* pCell);

  unsigned GetResourceId() const { return m_nResId; }
  const char16_t* GetName() const { return m_pwszName; }
  const char16_t* GetLocalName() const;
  // English for parse types 1 and 2, else local.
  const char16_t* GetName(int nParseType) const;
  bool HasLocalName() const { return (m_bFlags & kFlagLocalName) != 0; }
  // The book a parsed call was bound in; null until the parser binds one.
  CBookBase* GetOwner() const { return m_pOwner; }
  void SetOwner(CBookBase* pBook) { m_pOwner = pBook; }

  static TExternFunc* GetFirstFunc();
  TExternFunc* GetNextFunc() const { return m_pNextFunc; }
  // The function whose name stands at pwszText (input upper-cased) followed after
  // optional white space by "("; *pnLength gets the name's length. Null when none.
  static TExternFunc* MatchFunc(const char16_t* pwszText, int nParseType, int* pnLength);
  // The function whose name is exactly the nLength units at pwszName; null when none.
  static TExternFunc* FindFunc(const char16_t* pwszName, int nLength, int nParseType);

  struct YARVBOOK_API _CLateInit {
    // Loads the local names of resource-named functions when the host's resource
    // table has changed since the last load.
    static void OnInit();
  };

  static TExternFunc* m_pFirstFunc;

 private:
  void SetLocalName(const char16_t* pwszLocalName);

  unsigned m_nResId;
  const char16_t* m_pwszName;
  std::u16string m_sLocalName;  // empty: the English name serves
  CBookBase* m_pOwner = nullptr;
  unsigned char m_bFlags = 0;
  TExternFunc* m_pNextFunc = nullptr;
};
