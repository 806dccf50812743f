#include "eval/FuncTable.h"

#include <iterator>

#include "platform/ResourceIds.h"

namespace {

constexpr unsigned char R = TFuncInfo::tcReference;
constexpr unsigned char V = TFuncInfo::tcValue;

// Argument classes written as a pattern, one letter per argument from the first:
// '-' element-wise (tcDefault), 'R' reference, 'V' value, 'A' array. The last letter
// stands for every later argument, so "R" is a list of references and "-R" a scalar
// followed by references.
constexpr unsigned char ClassOf(char c) {
  return c == 'R'   ? TFuncInfo::tcReference
         : c == 'V' ? TFuncInfo::tcValue
         : c == 'A' ? TFuncInfo::tcArray
                    : TFuncInfo::tcDefault;
}

constexpr unsigned short Args(const char* pszPattern) {
  int nLen = 0;
  while (pszPattern[nLen] != 0) ++nLen;
  if (nLen == 0) return 0;
  unsigned nWord = 0;
  for (int i = 0; i < 8; ++i) {
    const unsigned nClass = ClassOf(pszPattern[i < nLen ? i : nLen - 1]);
    nWord |= nClass << (i < 7 ? 2 * i : 14);
  }
  return static_cast<unsigned short>(nWord);
}

// Scalar arguments only: the default for the mathematical and text functions.
constexpr unsigned short kScalars = 0;
constexpr bool kVolatile = true;

// Built-in number formats proposed by NOW (date and time) and TODAY (date).
constexpr unsigned short kFmtDateTime = 22;
constexpr unsigned short kFmtDate = 14;

}  // namespace

// Result class value unless the function can give a reference (IF, CHOOSE, INDEX,
// OFFSET, INDIRECT), which lets the result stand where a reference is wanted.
constexpr TFuncInfo g_FuncTable[kNumBuiltinFuncs] = {
    {0, u"COUNT", 1, 30, V, Args("R"), false, 0},
    {1, u"IF", 2, 3, R, Args("-R"), false, 0},
    {2, u"ISNA", 1, 1, V, kScalars, false, 0},
    {3, u"ISERROR", 1, 1, V, kScalars, false, 0},
    {4, u"SUM", 0, 30, V, Args("R"), false, 0},
    {5, u"AVERAGE", 1, 30, V, Args("R"), false, 0},
    {6, u"MIN", 1, 30, V, Args("R"), false, 0},
    {7, u"MAX", 1, 30, V, Args("R"), false, 0},
    {8, u"ROW", 0, 1, V, Args("R"), false, 0},
    {9, u"COLUMN", 0, 1, V, Args("R"), false, 0},
    {10, u"NA", 0, 0, V, kScalars, false, 0},
    {11, u"NPV", 1, 30, V, Args("-R"), false, 0},
    {12, u"STDEV", 1, 30, V, Args("R"), false, 0},
    {13, u"WON", 1, 2, V, kScalars, false, 0},
    {14, u"FIXED", 1, 3, V, kScalars, false, 0},
    {15, u"SIN", 1, 1, V, kScalars, false, 0},
    {16, u"COS", 1, 1, V, kScalars, false, 0},
    {17, u"TAN", 1, 1, V, kScalars, false, 0},
    {18, u"ATAN", 1, 1, V, kScalars, false, 0},
    {19, u"PI", 0, 0, V, kScalars, false, 0},
    {20, u"SQRT", 1, 1, V, kScalars, false, 0},
    {21, u"EXP", 1, 1, V, kScalars, false, 0},
    {22, u"LN", 1, 1, V, kScalars, false, 0},
    {23, u"LOG10", 1, 1, V, kScalars, false, 0},
    {24, u"ABS", 1, 1, V, kScalars, false, 0},
    {25, u"INT", 1, 1, V, kScalars, false, 0},
    {26, u"SIGN", 1, 1, V, kScalars, false, 0},
    {27, u"ROUND", 2, 2, V, kScalars, false, 0},
    {28, u"LOOKUP", 2, 3, V, Args("-R"), false, 0},
    {29, u"INDEX", 1, 4, R, Args("R-"), false, 0},
    {30, u"REPT", 2, 2, V, kScalars, false, 0},
    {31, u"MID", 3, 3, V, kScalars, false, 0},
    {32, u"LEN", 1, 1, V, kScalars, false, 0},
    {33, u"VALUE", 1, 1, V, kScalars, false, 0},
    {34, u"TRUE", 0, 0, V, kScalars, false, 0},
    {35, u"FALSE", 0, 0, V, kScalars, false, 0},
    {36, u"AND", 1, 30, V, Args("R"), false, 0},
    {37, u"OR", 1, 30, V, Args("R"), false, 0},
    {38, u"NOT", 1, 1, V, kScalars, false, 0},
    {39, u"MOD", 2, 2, V, kScalars, false, 0},
    {46, u"VAR", 1, 30, V, Args("R"), false, 0},
    {48, u"TEXT", 2, 2, V, kScalars, false, 0},
    {56, u"PV", 3, 5, V, kScalars, false, 0},
    {57, u"FV", 3, 5, V, kScalars, false, 0},
    {58, u"NPER", 3, 5, V, kScalars, false, 0},
    {59, u"PMT", 3, 5, V, kScalars, false, 0},
    {60, u"RATE", 3, 6, V, kScalars, false, 0},
    {61, u"MIRR", 3, 3, V, Args("R-"), false, 0},
    {62, u"IRR", 1, 30, V, Args("R-"), false, 0},
    {63, u"RAND", 0, 0, V, kScalars, kVolatile, 0},
    {64, u"MATCH", 2, 3, V, Args("-R-"), false, 0},
    {65, u"DATE", 3, 3, V, kScalars, false, 0},
    {66, u"TIME", 3, 3, V, kScalars, false, 0},
    {67, u"DAY", 1, 1, V, kScalars, false, 0},
    {68, u"MONTH", 1, 1, V, kScalars, false, 0},
    {69, u"YEAR", 1, 1, V, kScalars, false, 0},
    {70, u"WEEKDAY", 1, 2, V, kScalars, false, 0},
    {71, u"HOUR", 1, 1, V, kScalars, false, 0},
    {72, u"MINUTE", 1, 1, V, kScalars, false, 0},
    {73, u"SECOND", 1, 1, V, kScalars, false, 0},
    {74, u"NOW", 0, 0, V, kScalars, kVolatile, kFmtDateTime},
    {76, u"ROWS", 1, 1, V, Args("R"), false, 0},
    {77, u"COLUMNS", 1, 1, V, Args("R"), false, 0},
    {78, u"OFFSET", 3, 5, R, Args("R-"), kVolatile, 0},
    {82, u"SEARCH", 2, 3, V, kScalars, false, 0},
    {86, u"TYPE", 1, 1, V, Args("V"), false, 0},
    {97, u"ATAN2", 2, 2, V, kScalars, false, 0},
    {98, u"ASIN", 1, 1, V, kScalars, false, 0},
    {99, u"ACOS", 1, 1, V, kScalars, false, 0},
    {100, u"CHOOSE", 2, 30, R, Args("-R"), false, 0},
    {101, u"HLOOKUP", 3, 4, V, Args("-R-"), false, 0},
    {102, u"VLOOKUP", 3, 4, V, Args("-R-"), false, 0},
    {105, u"ISREF", 1, 1, V, Args("R"), false, 0},
    {109, u"LOG", 1, 2, V, kScalars, false, 0},
    {111, u"CHAR", 1, 1, V, kScalars, false, 0},
    {112, u"LOWER", 1, 1, V, kScalars, false, 0},
    {113, u"UPPER", 1, 1, V, kScalars, false, 0},
    {114, u"PROPER", 1, 1, V, kScalars, false, 0},
    {115, u"LEFT", 1, 2, V, kScalars, false, 0},
    {116, u"RIGHT", 1, 2, V, kScalars, false, 0},
    {117, u"EXACT", 2, 2, V, kScalars, false, 0},
    {118, u"TRIM", 1, 1, V, kScalars, false, 0},
    {119, u"REPLACE", 4, 4, V, kScalars, false, 0},
    {120, u"SUBSTITUTE", 3, 4, V, kScalars, false, 0},
    {121, u"CODE", 1, 1, V, kScalars, false, 0},
    {124, u"FIND", 2, 3, V, kScalars, false, 0},
    {126, u"ISERR", 1, 1, V, kScalars, false, 0},
    {127, u"ISTEXT", 1, 1, V, kScalars, false, 0},
    {128, u"ISNUMBER", 1, 1, V, kScalars, false, 0},
    {129, u"ISBLANK", 1, 1, V, kScalars, false, 0},
    {130, u"T", 1, 1, V, Args("R"), false, 0},
    {131, u"N", 1, 1, V, Args("R"), false, 0},
    {140, u"DATEVALUE", 1, 1, V, kScalars, false, 0},
    {141, u"TIMEVALUE", 1, 1, V, kScalars, false, 0},
    {142, u"SLN", 3, 3, V, kScalars, false, 0},
    {143, u"SYD", 4, 4, V, kScalars, false, 0},
    {144, u"DDB", 4, 5, V, kScalars, false, 0},
    {148, u"INDIRECT", 1, 2, R, kScalars, kVolatile, 0},
    {162, u"CLEAN", 1, 1, V, kScalars, false, 0},
    {167, u"IPMT", 4, 6, V, kScalars, false, 0},
    {168, u"PPMT", 4, 6, V, kScalars, false, 0},
    {169, u"COUNTA", 1, 30, V, Args("R"), false, 0},
    {183, u"PRODUCT", 1, 30, V, Args("R"), false, 0},
    {184, u"FACT", 1, 1, V, kScalars, false, 0},
    {190, u"ISNONTEXT", 1, 1, V, kScalars, false, 0},
    {193, u"STDEVP", 1, 30, V, Args("R"), false, 0},
    {194, u"VARP", 1, 30, V, Args("R"), false, 0},
    {197, u"TRUNC", 1, 2, V, kScalars, false, 0},
    {198, u"ISLOGICAL", 1, 1, V, kScalars, false, 0},
    {204, u"DOLLAR", 1, 2, V, kScalars, false, 0},
    {205, u"FINDB", 2, 3, V, kScalars, false, 0},
    {206, u"SEARCHB", 2, 3, V, kScalars, false, 0},
    {207, u"REPLACEB", 4, 4, V, kScalars, false, 0},
    {208, u"LEFTB", 1, 2, V, kScalars, false, 0},
    {209, u"RIGHTB", 1, 2, V, kScalars, false, 0},
    {210, u"MIDB", 3, 3, V, kScalars, false, 0},
    {211, u"LENB", 1, 1, V, kScalars, false, 0},
    {212, u"ROUNDUP", 2, 2, V, kScalars, false, 0},
    {213, u"ROUNDDOWN", 2, 2, V, kScalars, false, 0},
    {214, u"ASC", 1, 1, V, kScalars, false, 0},
    {215, u"DBCS", 1, 1, V, kScalars, false, 0},
    {216, u"RANK", 1, 30, V, Args("-R-"), false, 0},
    {219, u"ADDRESS", 2, 5, V, kScalars, false, 0},
    {220, u"DAYS360", 2, 3, V, kScalars, false, 0},
    {221, u"TODAY", 0, 0, V, kScalars, kVolatile, kFmtDate},
    {222, u"VDB", 5, 7, V, kScalars, false, 0},
    {228, u"SUMPRODUCT", 1, 30, V, Args("A"), false, 0},
    {229, u"SINH", 1, 1, V, kScalars, false, 0},
    {230, u"COSH", 1, 1, V, kScalars, false, 0},
    {231, u"TANH", 1, 1, V, kScalars, false, 0},
    {232, u"ASINH", 1, 1, V, kScalars, false, 0},
    {233, u"ACOSH", 1, 1, V, kScalars, false, 0},
    {234, u"ATANH", 1, 1, V, kScalars, false, 0},
    {247, u"DB", 4, 5, V, kScalars, false, 0},
    {kFuncExtern, u"EXTERN.CALL", 1, 30, V, Args("R"), false, 0},
    {261, u"ERROR.TYPE", 1, 1, V, kScalars, false, 0},
    {279, u"EVEN", 1, 1, V, kScalars, false, 0},
    {285, u"FLOOR", 2, 2, V, kScalars, false, 0},
    {288, u"CEILING", 2, 2, V, kScalars, false, 0},
    {298, u"ODD", 1, 1, V, kScalars, false, 0},
    {321, u"SUMSQ", 1, 30, V, Args("R"), false, 0},
    {336, u"CONCATENATE", 1, 30, V, kScalars, false, 0},
    {337, u"POWER", 2, 2, V, kScalars, false, 0},
    {342, u"RADIANS", 1, 1, V, kScalars, false, 0},
    {343, u"DEGREES", 1, 1, V, kScalars, false, 0},
    {344, u"SUBTOTAL", 1, 30, V, Args("-R"), false, 0},
    {345, u"SUMIF", 2, 3, V, Args("R-R"), false, 0},
    {346, u"COUNTIF", 2, 2, V, Args("R-"), false, 0},
    {347, u"COUNTBLANK", 1, 1, V, Args("R"), false, 0},
    {350, u"ISPMT", 4, 4, V, kScalars, false, 0},
    {361, u"AVERAGEA", 1, 30, V, Args("R"), false, 0},
    {362, u"MAXA", 1, 30, V, Args("R"), false, 0},
    {363, u"MINA", 1, 30, V, Args("R"), false, 0},
    {364, u"STDEVPA", 1, 30, V, Args("R"), false, 0},
    {365, u"VARPA", 1, 30, V, Args("R"), false, 0},
    {366, u"STDEVA", 1, 30, V, Args("R"), false, 0},
    {367, u"VARA", 1, 30, V, Args("R"), false, 0},
    {368, u"SUBTOTALA", 1, 30, V, Args("-R"), false, 0},
    {369, u"SUMGENERAL", 1, 30, V, Args("R"), false, 0},
    {kFuncAddIn, u"__ADDIN", 0, 30, V, Args("R"), false, 0},
};

namespace {

static_assert(g_FuncTable[kNumBuiltinFuncs - 1].nFunc == kFuncAddIn, "every row is filled");

// Strictly ascending numbers below the slot count, and no arity a call could not
// carry.
constexpr bool IsWellFormed() {
  for (unsigned i = 0; i < std::size(g_FuncTable); ++i) {
    const TFuncInfo& info = g_FuncTable[i];
    if (info.nFunc >= kNumFuncSlots) return false;
    if (i > 0 && g_FuncTable[i - 1].nFunc >= info.nFunc) return false;
    if (info.nMinArgs > info.nMaxArgs || info.nMaxArgs > 30) return false;
  }
  return true;
}
static_assert(IsWellFormed(), "function rows ascend by number and have sound arities");

// Row index by function number, -1 for numbers without a function.
struct TSlotIndex {
  short anRow[kNumFuncSlots];
};

constexpr TSlotIndex MakeSlotIndex() {
  TSlotIndex index{};
  for (short& nRow : index.anRow) nRow = -1;
  for (unsigned i = 0; i < std::size(g_FuncTable); ++i)
    index.anRow[g_FuncTable[i].nFunc] = static_cast<short>(i);
  return index;
}
constexpr TSlotIndex kSlotIndex = MakeSlotIndex();

}  // namespace

unsigned TFuncInfo::GetResourceId() const {
  return nFunc == kFuncAddIn || nFunc == kFuncExtern ? 0 : IdsForFunction(nFunc);
}

const TFuncInfo* GetFuncInfo(unsigned nFunc) {
  if (nFunc >= kNumFuncSlots || kSlotIndex.anRow[nFunc] < 0) return nullptr;
  return &g_FuncTable[kSlotIndex.anRow[nFunc]];
}
