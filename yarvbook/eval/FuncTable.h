// The built-in function table: one row per function number with everything the parser
// and the dispatcher need to know without a body: English name, arity, argument and
// result classes, the volatile mark and a proposed value format. A function object
// (TFunc) takes its classes and flags from here when it registers, so a family file
// names only its number, name and arity, and the table is the one place they are kept.
#pragma once

#include "base/Export.h"

struct YARVBOOK_API TFuncInfo {
  // Operand classes of the token stream, two bits each. tcDefault is every argument's
  // class until set otherwise: such an argument is expanded element by element when
  // an array formula is computed. The other three numbers are the token classes of
  // the stream (reference 0x20, value 0x40, array 0x60) and must stay as they are.
  enum ETokenClass : unsigned char { tcDefault = 0, tcReference = 1, tcValue = 2, tcArray = 3 };

  unsigned short nFunc;      // the number a function token carries
  const char16_t* pwszName;  // English name, upper case
  unsigned char nMinArgs;
  unsigned char nMaxArgs;
  unsigned char nResultClass;  // ETokenClass
  // Two bits per argument for arguments 0 to 6; bits 14 and 15 give the class of
  // every argument from the eighth on (the layout of TFunc's argument classes).
  unsigned short wArgsClass;
  bool bVolatile;             // recomputed on every recalculation
  unsigned short nValFormat;  // number-format id proposed for the result, 0 = none

  // The class of argument nArg (any index; from 7 on the shared class).
  ETokenClass GetArgClass(int nArg) const {
    const int nShift = (nArg >= 0 && nArg < 7) ? 2 * nArg : 14;
    return static_cast<ETokenClass>((wArgsClass >> nShift) & 3);
  }
  // A call carries its argument count (tFuncVar) exactly when the arity varies.
  bool IsVarArgs() const { return nMinArgs != nMaxArgs; }
  // The id of the local name in the host's string resources; 0 for the external call
  // (255) and "__ADDIN" (370), which have none.
  unsigned GetResourceId() const;
};

// Function numbers run from 0 to kNumFuncSlots - 1.
constexpr int kNumFuncSlots = 371;
// Calls of external functions carry this number: the function's name comes first as
// an operand. The parser never finds it by name.
constexpr unsigned short kFuncExtern = 255;
// Add-in calls reached through a name.
constexpr unsigned short kFuncAddIn = 370;
constexpr int kNumBuiltinFuncs = 160;

// The rows in ascending number order.
extern YARVBOOK_API const TFuncInfo g_FuncTable[kNumBuiltinFuncs];

// The row of function nFunc, or null when no built-in function has that number.
YARVBOOK_API const TFuncInfo* GetFuncInfo(unsigned nFunc);
