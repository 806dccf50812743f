// TFunc: one built-in worksheet function. Each function is one static object of a
// class derived from TFunc; constructing it registers it under its number (the slot
// table the evaluator dispatches through) and at the head of the list the parser
// finds names in. Arity, argument classes, the volatile mark and a proposed value
// format come from the function table (eval/FuncTable.h) by number.
//
// A number of the table that no family file has registered a body for is filled, on
// the registry's first use, by a pending entry: it parses, unparses and dispatches
// like any function, and every call of it gives #NAME?. A body registered later
// (a family file whose initialiser runs after that first use) takes the slot over.
#pragma once

#include <string>

#include "base/Export.h"
#include "base/ZelObject.h"
#include "eval/FuncTable.h"

class CFormulaCell;
class TValue;

class YARVBOOK_API TFunc : public CZelObject {
 public:
  using ETokenClass = TFuncInfo::ETokenClass;

  // Flag bits.
  static constexpr unsigned char kFlagResultClass = 0x03;  // ETokenClass of the result
  static constexpr unsigned char kFlagLocalName = 0x04;    // has a distinct local name
  static constexpr unsigned char kFlagVarArgs = 0x08;      // the body receives argc
  static constexpr unsigned char kFlagVolatile = 0x10;     // recomputed on every recalculation
  static constexpr unsigned char kFlagPending = 0x20;      // registered without a body

  // Registers the function: numbers below kNumFuncSlots take their slot (a pending
  // entry there is displaced), every registered function goes to the head of the
  // list. A second body for a taken number is not registered and is counted by
  // GetNumDuplicates(). Classes, volatile mark and value format come from the table
  // row of nFunc; the arity given must agree with it (asserted; the registry test
  // checks it too).
  TFunc(unsigned nResId, const char16_t* pwszName, int bVarArgs, unsigned short nFunc,
        unsigned char nMinArgs, unsigned char nMaxArgs);
  // Unregisters.
  ~TFunc() override;

  // The body of a fixed-arity function. The arguments lie in consecutive slots of
  // the evaluator's stack, the first argument first; the result goes into pArgs[0]
  // and the other slots are left for the evaluator to drop. Never fails outward: a
  // failure is an error value in pArgs[0].
  virtual void Evaluate(TValue* pArgs) = 0;
  // With the calling formula cell (may be null). Forwards to Evaluate(pArgs).
  virtual void Evaluate(TValue* pArgs, CFormulaCell* pCell);
  // The body of a function with variable arity (flag kFlagVarArgs); nArgs lies in
  // [min, max]. Forwards to Evaluate(pArgs).
  virtual void Evaluate(TValue* pArgs, int nArgs);
  // Forwards to Evaluate(pArgs, nArgs).
  virtual void Evaluate(TValue* pArgs, int nArgs, CFormulaCell* pCell);
  // Writes the name, English for parse types 1 and 2 and local otherwise, at pDst
  // (no terminator); returns the position behind it. pDst must hold the name.
  virtual char16_t* Unparse(char16_t* pDst, int nArgs, int nParseType) const;

  unsigned GetResourceId() const { return m_nResId; }
  const char16_t* GetName() const { return m_pwszName; }
  // The local name, upper case; the English name until the late initialiser ran or
  // when the host has no distinct text.
  const char16_t* GetLocalName() const;
  // English or local by parse type.
  const char16_t* GetName(int nParseType) const;
  unsigned short GetFuncNumber() const { return m_nFunc; }
  int GetMinArgs() const { return m_nMinArgs; }
  int GetMaxArgs() const { return m_nMaxArgs; }
  unsigned char GetFlags() const { return m_bFlags; }
  bool IsVarArgs() const { return (m_bFlags & kFlagVarArgs) != 0; }
  bool IsVolatile() const { return (m_bFlags & kFlagVolatile) != 0; }
  bool HasLocalName() const { return (m_bFlags & kFlagLocalName) != 0; }
  bool IsPending() const { return (m_bFlags & kFlagPending) != 0; }
  // The number-format id the last evaluation proposes for its result (0 = none).
  unsigned short GetValueFormat() const { return m_nValFormat; }

  // Argument classes: slots 0 to 6 hold arguments 0 to 6, bits 14-15 every later one.
  void InitArgsClass(ETokenClass cls);
  // Sets slot nArg for 0 <= nArg < 7; other indexes are ignored.
  void SetArgClass(int nArg, ETokenClass cls);
  // Slot nArg for 0 <= nArg < 7, bits 14-15 for any other index.
  ETokenClass GetArgClass(int nArg) const;
  void SetArgsClass(ETokenClass c0, ETokenClass c1, ETokenClass c2, ETokenClass c3, ETokenClass c4,
                    ETokenClass c5, ETokenClass c6);
  ETokenClass GetResultClass() const {
    return static_cast<ETokenClass>(m_bFlags & kFlagResultClass);
  }
  void SetResultClass(ETokenClass cls);

  // ---- Registry ---------------------------------------------------------------------
  // Every lookup below first completes the registry: pending entries for the table's
  // unregistered numbers, and the local names (reloaded when the host's resource
  // table has changed since).

  // The function under nFunc, or null (a number of kNumFuncSlots or more, or none).
  static TFunc* GetFunc(unsigned nFunc);
  // The same for computing: the local names are not brought up to date.
  static TFunc* GetFuncToEvaluate(unsigned nFunc);
  // The head of the list of registered functions (newest first; GetNextFunc walks it).
  static TFunc* GetFirstFunc();
  TFunc* GetNextFunc() const { return m_pNextFunc; }

  // The parser's lookup: the function whose name (English for parse types 1 and 2,
  // else local) stands at pwszText, the input compared upper-cased, followed after
  // optional white space by "(". TRUE and FALSE also match without "(" when no name
  // character follows; *pbCall tells which. Function 255 is never found. On success
  // *pnLength is the length of the name (not the white space or the parenthesis).
  // Returns null when nothing matches.
  static TFunc* MatchFunc(const char16_t* pwszText, int nParseType, int* pnLength, bool* pbCall);
  // The function whose name is exactly the nLength units at pwszName, compared
  // upper-cased; null when none (255 never).
  static TFunc* FindFunc(const char16_t* pwszName, int nLength, int nParseType);

  // How many registered functions have no body yet.
  static int GetNumPending();
  // Bodies not registered because their number was taken by another body.
  static int GetNumDuplicates() { return m_nDuplicates; }

  // Loads the local names from the host's string resources.
  struct YARVBOOK_API _CLateInit {
    // Runs the load when it has not run for the current resource table.
    static void OnInit();
  };

  static TFunc* m_pFunc[kNumFuncSlots];
  static TFunc* m_pFirstFunc;

 protected:
  // A pending entry for a table row: arity and flags from the row, kFlagPending set;
  // registers only into an empty slot.
  explicit TFunc(const TFuncInfo& info);

 private:
  void Register();
  void Unregister();
  void ApplyTableRow();
  static void CompleteRegistry();
  static void LoadLocalNames();

  unsigned m_nResId;
  const char16_t* m_pwszName;
  std::u16string m_sLocalName;  // empty: the English name serves
  unsigned short m_nFunc;
  unsigned char m_nMinArgs;
  unsigned char m_nMaxArgs;

 protected:
  unsigned short m_nValFormat = 0;  // set by a body that proposes a format

 private:
  unsigned short m_wArgsClass = 0;
  unsigned char m_bFlags = 0;
  TFunc* m_pNextFunc = nullptr;

  static int m_nDuplicates;
};

// The arity classes. A family class derives from one of them and writes Evaluate.
template <unsigned char nArgs>
class YARVBOOK_API TFuncNArgs : public TFunc {
 public:
  TFuncNArgs(unsigned nResId, const char16_t* pwszName, unsigned short nFunc)
      : TFunc(nResId, pwszName, 0, nFunc, nArgs, nArgs) {}
};

using TFuncNoArgs = TFuncNArgs<0>;
using TFuncOneArg = TFuncNArgs<1>;
using TFuncTwoArgs = TFuncNArgs<2>;
using TFuncThreeArgs = TFuncNArgs<3>;
using TFuncFourArgs = TFuncNArgs<4>;

// Fixed arity given by the family.
class YARVBOOK_API TFuncFixedArgs : public TFunc {
 public:
  TFuncFixedArgs(unsigned nResId, const char16_t* pwszName, unsigned short nFunc,
                 unsigned char nArgs)
      : TFunc(nResId, pwszName, 0, nFunc, nArgs, nArgs) {}
};

// Variable arity: the dispatcher calls Evaluate(pArgs, nArgs). A call through the
// fixed-arity slot stands for the minimum count.
class YARVBOOK_API TFuncVarArgs : public TFunc {
 public:
  TFuncVarArgs(unsigned nResId, const char16_t* pwszName, unsigned short nFunc,
               unsigned char nMinArgs, unsigned char nMaxArgs)
      : TFunc(nResId, pwszName, 1, nFunc, nMinArgs, nMaxArgs) {}
  using TFunc::Evaluate;
  void Evaluate(TValue* pArgs) override { Evaluate(pArgs, GetMinArgs()); }
  void Evaluate(TValue* pArgs, int nArgs) override = 0;
};
