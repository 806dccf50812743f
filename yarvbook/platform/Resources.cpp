// The English resource table and the host's replacement table. The host's entries
// are searched first; an entry there with an empty text is a real (empty) text, not
// a miss, so that a host can clear a local function name.
#include "platform/Resources.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/ResourceIds.h"

namespace {

constexpr TResourceEntry kEnglishEntries[] = {
    {IDS_OP_RANGE, u":"},
    {IDS_OP_INTERSECTION, u" "},
    {IDS_OP_PERCENT, u"%"},
    {IDS_OP_UMINUS, u"-"},
    {IDS_OP_UPLUS, u"+"},
    {IDS_OP_GT, u">"},
    {IDS_OP_LT, u"<"},
    {IDS_OP_NE, u"<>"},
    {IDS_OP_GE, u">="},
    {IDS_OP_EQ, u"="},
    {IDS_OP_LE, u"<="},
    {IDS_OP_CONCAT, u"&"},
    {IDS_OP_POWER, u"^"},
    {IDS_OP_DIV, u"/"},
    {IDS_OP_MUL, u"*"},
    {IDS_OP_SUB, u"-"},
    {IDS_OP_ADD, u"+"},
    {IDS_UNPARSE_UNKNOWN_FUNCTION, u"Unknown function %d"},
    {IDS_UNPARSE_FAILURE, u"The formula cannot be shown"},
    {IDS_CRIT_BEGINS_WITH, u"begins with"},
    {IDS_CRIT_NOT_BEGINS_WITH, u"does not begin with"},
    {IDS_CRIT_ENDS_WITH, u"ends with"},
    {IDS_CRIT_NOT_ENDS_WITH, u"does not end with"},
    {IDS_CRIT_CONTAINS, u"contains"},
    {IDS_CRIT_NOT_CONTAINS, u"does not contain"},
    {IDS_NEW_SHEET_NAME, u"Sheet%d"},
    {IDS_MONTH_NAME_BASE + 0, u"January"},
    {IDS_MONTH_NAME_BASE + 1, u"February"},
    {IDS_MONTH_NAME_BASE + 2, u"March"},
    {IDS_MONTH_NAME_BASE + 3, u"April"},
    {IDS_MONTH_NAME_BASE + 4, u"May"},
    {IDS_MONTH_NAME_BASE + 5, u"June"},
    {IDS_MONTH_NAME_BASE + 6, u"July"},
    {IDS_MONTH_NAME_BASE + 7, u"August"},
    {IDS_MONTH_NAME_BASE + 8, u"September"},
    {IDS_MONTH_NAME_BASE + 9, u"October"},
    {IDS_MONTH_NAME_BASE + 10, u"November"},
    {IDS_MONTH_NAME_BASE + 11, u"December"},
    {IDS_MONTH_ABBREV_BASE + 0, u"Jan"},
    {IDS_MONTH_ABBREV_BASE + 1, u"Feb"},
    {IDS_MONTH_ABBREV_BASE + 2, u"Mar"},
    {IDS_MONTH_ABBREV_BASE + 3, u"Apr"},
    {IDS_MONTH_ABBREV_BASE + 4, u"May"},
    {IDS_MONTH_ABBREV_BASE + 5, u"Jun"},
    {IDS_MONTH_ABBREV_BASE + 6, u"Jul"},
    {IDS_MONTH_ABBREV_BASE + 7, u"Aug"},
    {IDS_MONTH_ABBREV_BASE + 8, u"Sep"},
    {IDS_MONTH_ABBREV_BASE + 9, u"Oct"},
    {IDS_MONTH_ABBREV_BASE + 10, u"Nov"},
    {IDS_MONTH_ABBREV_BASE + 11, u"Dec"},
    {IDS_DAY_NAME_BASE + 0, u"Sunday"},
    {IDS_DAY_NAME_BASE + 1, u"Monday"},
    {IDS_DAY_NAME_BASE + 2, u"Tuesday"},
    {IDS_DAY_NAME_BASE + 3, u"Wednesday"},
    {IDS_DAY_NAME_BASE + 4, u"Thursday"},
    {IDS_DAY_NAME_BASE + 5, u"Friday"},
    {IDS_DAY_NAME_BASE + 6, u"Saturday"},
    {IDS_DAY_ABBREV_BASE + 0, u"Sun"},
    {IDS_DAY_ABBREV_BASE + 1, u"Mon"},
    {IDS_DAY_ABBREV_BASE + 2, u"Tue"},
    {IDS_DAY_ABBREV_BASE + 3, u"Wed"},
    {IDS_DAY_ABBREV_BASE + 4, u"Thu"},
    {IDS_DAY_ABBREV_BASE + 5, u"Fri"},
    {IDS_DAY_ABBREV_BASE + 6, u"Sat"},
    {IDS_AM, u"AM"},
    {IDS_PM, u"PM"},
    {IDS_FMT_GENERAL, u"General"},
    {IDS_FMT_COLOR_BASE + 0, u"Black"},
    {IDS_FMT_COLOR_BASE + 1, u"Blue"},
    {IDS_FMT_COLOR_BASE + 2, u"Cyan"},
    {IDS_FMT_COLOR_BASE + 3, u"Green"},
    {IDS_FMT_COLOR_BASE + 4, u"Magenta"},
    {IDS_FMT_COLOR_BASE + 5, u"Red"},
    {IDS_FMT_COLOR_BASE + 6, u"White"},
    {IDS_FMT_COLOR_BASE + 7, u"Yellow"},
    {IDS_FMT_COLOR_BASE + 8, u"Color"},
    {IDS_FMT_DATE_CODE_BASE + 0, u"mmmmm"},
    {IDS_FMT_DATE_CODE_BASE + 1, u"mmmm"},
    {IDS_FMT_DATE_CODE_BASE + 2, u"mmm"},
    {IDS_FMT_DATE_CODE_BASE + 3, u"mm"},
    {IDS_FMT_DATE_CODE_BASE + 4, u"m"},
    {IDS_FMT_DATE_CODE_BASE + 5, u"aaaa"},
    {IDS_FMT_DATE_CODE_BASE + 6, u"dddd"},
    {IDS_FMT_DATE_CODE_BASE + 7, u"aaa"},
    {IDS_FMT_DATE_CODE_BASE + 8, u"ddd"},
    {IDS_FMT_DATE_CODE_BASE + 9, u"dd"},
    {IDS_FMT_DATE_CODE_BASE + 10, u"d"},
    {IDS_FMT_DATE_CODE_BASE + 11, u"yyyy"},
    {IDS_FMT_DATE_CODE_BASE + 12, u"yy"},
    {IDS_FMT_DATE_CODE_BASE + 13, u"cy"},
    {IDS_FMT_DATE_CODE_BASE + 14, u"jy"},
    {IDS_FMT_DATE_CODE_BASE + 15, u"g"},
    {IDS_FMT_DATE_CODE_BASE + 16, u"ee"},
    {IDS_FMT_DATE_CODE_BASE + 17, u"e"},
    {IDS_FMT_DATE_CODE_BASE + 18, u"hw"},
    {IDS_FMT_DATE_CODE_BASE + 19, u"hnw"},
    {IDS_FMT_TIME_CODE_BASE + 0, u"hh"},
    {IDS_FMT_TIME_CODE_BASE + 1, u"h"},
    {IDS_FMT_TIME_CODE_BASE + 2, u"mm"},
    {IDS_FMT_TIME_CODE_BASE + 3, u"m"},
    {IDS_FMT_TIME_CODE_BASE + 4, u"ss"},
    {IDS_FMT_TIME_CODE_BASE + 5, u"s"},
    {IDS_FMT_TIME_CODE_BASE + 6, u"AM/PM"},
    {IDS_FMT_TIME_CODE_BASE + 7, u"AM/PM"},
    {IDS_FMT_TIME_CODE_BASE + 8, u"AM/PM"},
    {IDS_FMT_TIME_CODE_BASE + 9, u"\u4E0A\u5348/\u4E0B\u5348"},
    {IDS_FMT_TIME_CODE_BASE + 10, u"AMS/PMS"},
    {IDS_FMT_TIME_CODE_BASE + 11, u"AMC/PMC"},
    {IDS_FMT_TIME_CODE_BASE + 12, u"AMSS/PMSS"},
    {IDS_FMT_TIME_CODE_BASE + 13, u"A/P"},
    {IDS_FMT_OPERATOR_BASE + 0, u"<="},
    {IDS_FMT_OPERATOR_BASE + 1, u">="},
    {IDS_FMT_OPERATOR_BASE + 2, u"<>"},
    {IDS_FMT_OPERATOR_BASE + 3, u"<"},
    {IDS_FMT_OPERATOR_BASE + 4, u"="},
    {IDS_FMT_OPERATOR_BASE + 5, u">"},
    {IDS_FN_COUNT, u"COUNT"},
    {IDS_FN_IF, u"IF"},
    {IDS_FN_ISNA, u"ISNA"},
    {IDS_FN_ISERROR, u"ISERROR"},
    {IDS_FN_SUM, u"SUM"},
    {IDS_FN_AVERAGE, u"AVERAGE"},
    {IDS_FN_MIN, u"MIN"},
    {IDS_FN_MAX, u"MAX"},
    {IDS_FN_ROW, u"ROW"},
    {IDS_FN_COLUMN, u"COLUMN"},
    {IDS_FN_NA, u"NA"},
    {IDS_FN_NPV, u"NPV"},
    {IDS_FN_STDEV, u"STDEV"},
    {IDS_FN_WON, u"WON"},
    {IDS_FN_FIXED, u"FIXED"},
    {IDS_FN_SIN, u"SIN"},
    {IDS_FN_COS, u"COS"},
    {IDS_FN_TAN, u"TAN"},
    {IDS_FN_ATAN, u"ATAN"},
    {IDS_FN_PI, u"PI"},
    {IDS_FN_SQRT, u"SQRT"},
    {IDS_FN_EXP, u"EXP"},
    {IDS_FN_LN, u"LN"},
    {IDS_FN_LOG10, u"LOG10"},
    {IDS_FN_ABS, u"ABS"},
    {IDS_FN_INT, u"INT"},
    {IDS_FN_SIGN, u"SIGN"},
    {IDS_FN_ROUND, u"ROUND"},
    {IDS_FN_LOOKUP, u"LOOKUP"},
    {IDS_FN_INDEX, u"INDEX"},
    {IDS_FN_REPT, u"REPT"},
    {IDS_FN_MID, u"MID"},
    {IDS_FN_LEN, u"LEN"},
    {IDS_FN_VALUE, u"VALUE"},
    {IDS_FN_TRUE, u"TRUE"},
    {IDS_FN_FALSE, u"FALSE"},
    {IDS_FN_AND, u"AND"},
    {IDS_FN_OR, u"OR"},
    {IDS_FN_NOT, u"NOT"},
    {IDS_FN_MOD, u"MOD"},
    {IDS_FN_VAR, u"VAR"},
    {IDS_FN_TEXT, u"TEXT"},
    {IDS_FN_PV, u"PV"},
    {IDS_FN_FV, u"FV"},
    {IDS_FN_NPER, u"NPER"},
    {IDS_FN_PMT, u"PMT"},
    {IDS_FN_RATE, u"RATE"},
    {IDS_FN_MIRR, u"MIRR"},
    {IDS_FN_IRR, u"IRR"},
    {IDS_FN_RAND, u"RAND"},
    {IDS_FN_MATCH, u"MATCH"},
    {IDS_FN_DATE, u"DATE"},
    {IDS_FN_TIME, u"TIME"},
    {IDS_FN_DAY, u"DAY"},
    {IDS_FN_MONTH, u"MONTH"},
    {IDS_FN_YEAR, u"YEAR"},
    {IDS_FN_WEEKDAY, u"WEEKDAY"},
    {IDS_FN_HOUR, u"HOUR"},
    {IDS_FN_MINUTE, u"MINUTE"},
    {IDS_FN_SECOND, u"SECOND"},
    {IDS_FN_NOW, u"NOW"},
    {IDS_FN_ROWS, u"ROWS"},
    {IDS_FN_COLUMNS, u"COLUMNS"},
    {IDS_FN_OFFSET, u"OFFSET"},
    {IDS_FN_SEARCH, u"SEARCH"},
    {IDS_FN_TYPE, u"TYPE"},
    {IDS_FN_ATAN2, u"ATAN2"},
    {IDS_FN_ASIN, u"ASIN"},
    {IDS_FN_ACOS, u"ACOS"},
    {IDS_FN_CHOOSE, u"CHOOSE"},
    {IDS_FN_HLOOKUP, u"HLOOKUP"},
    {IDS_FN_VLOOKUP, u"VLOOKUP"},
    {IDS_FN_ISREF, u"ISREF"},
    {IDS_FN_LOG, u"LOG"},
    {IDS_FN_CHAR, u"CHAR"},
    {IDS_FN_LOWER, u"LOWER"},
    {IDS_FN_UPPER, u"UPPER"},
    {IDS_FN_PROPER, u"PROPER"},
    {IDS_FN_LEFT, u"LEFT"},
    {IDS_FN_RIGHT, u"RIGHT"},
    {IDS_FN_EXACT, u"EXACT"},
    {IDS_FN_TRIM, u"TRIM"},
    {IDS_FN_REPLACE, u"REPLACE"},
    {IDS_FN_SUBSTITUTE, u"SUBSTITUTE"},
    {IDS_FN_CODE, u"CODE"},
    {IDS_FN_FIND, u"FIND"},
    {IDS_FN_ISERR, u"ISERR"},
    {IDS_FN_ISTEXT, u"ISTEXT"},
    {IDS_FN_ISNUMBER, u"ISNUMBER"},
    {IDS_FN_ISBLANK, u"ISBLANK"},
    {IDS_FN_T, u"T"},
    {IDS_FN_N, u"N"},
    {IDS_FN_DATEVALUE, u"DATEVALUE"},
    {IDS_FN_TIMEVALUE, u"TIMEVALUE"},
    {IDS_FN_SLN, u"SLN"},
    {IDS_FN_SYD, u"SYD"},
    {IDS_FN_DDB, u"DDB"},
    {IDS_FN_INDIRECT, u"INDIRECT"},
    {IDS_FN_CLEAN, u"CLEAN"},
    {IDS_FN_IPMT, u"IPMT"},
    {IDS_FN_PPMT, u"PPMT"},
    {IDS_FN_COUNTA, u"COUNTA"},
    {IDS_FN_PRODUCT, u"PRODUCT"},
    {IDS_FN_FACT, u"FACT"},
    {IDS_FN_ISNONTEXT, u"ISNONTEXT"},
    {IDS_FN_STDEVP, u"STDEVP"},
    {IDS_FN_VARP, u"VARP"},
    {IDS_FN_TRUNC, u"TRUNC"},
    {IDS_FN_ISLOGICAL, u"ISLOGICAL"},
    {IDS_FN_DOLLAR, u"DOLLAR"},
    {IDS_FN_FINDB, u"FINDB"},
    {IDS_FN_SEARCHB, u"SEARCHB"},
    {IDS_FN_REPLACEB, u"REPLACEB"},
    {IDS_FN_LEFTB, u"LEFTB"},
    {IDS_FN_RIGHTB, u"RIGHTB"},
    {IDS_FN_MIDB, u"MIDB"},
    {IDS_FN_LENB, u"LENB"},
    {IDS_FN_ROUNDUP, u"ROUNDUP"},
    {IDS_FN_ROUNDDOWN, u"ROUNDDOWN"},
    {IDS_FN_ASC, u"ASC"},
    {IDS_FN_DBCS, u"DBCS"},
    {IDS_FN_RANK, u"RANK"},
    {IDS_FN_ADDRESS, u"ADDRESS"},
    {IDS_FN_DAYS360, u"DAYS360"},
    {IDS_FN_TODAY, u"TODAY"},
    {IDS_FN_VDB, u"VDB"},
    {IDS_FN_SUMPRODUCT, u"SUMPRODUCT"},
    {IDS_FN_SINH, u"SINH"},
    {IDS_FN_COSH, u"COSH"},
    {IDS_FN_TANH, u"TANH"},
    {IDS_FN_ASINH, u"ASINH"},
    {IDS_FN_ACOSH, u"ACOSH"},
    {IDS_FN_ATANH, u"ATANH"},
    {IDS_FN_DB, u"DB"},
    {IDS_FN_ERROR_TYPE, u"ERROR.TYPE"},
    {IDS_FN_EVEN, u"EVEN"},
    {IDS_FN_FLOOR, u"FLOOR"},
    {IDS_FN_CEILING, u"CEILING"},
    {IDS_FN_ODD, u"ODD"},
    {IDS_FN_SUMSQ, u"SUMSQ"},
    {IDS_FN_CONCATENATE, u"CONCATENATE"},
    {IDS_FN_POWER, u"POWER"},
    {IDS_FN_RADIANS, u"RADIANS"},
    {IDS_FN_DEGREES, u"DEGREES"},
    {IDS_FN_SUBTOTAL, u"SUBTOTAL"},
    {IDS_FN_SUMIF, u"SUMIF"},
    {IDS_FN_COUNTIF, u"COUNTIF"},
    {IDS_FN_COUNTBLANK, u"COUNTBLANK"},
    {IDS_FN_ISPMT, u"ISPMT"},
    {IDS_FN_AVERAGEA, u"AVERAGEA"},
    {IDS_FN_MAXA, u"MAXA"},
    {IDS_FN_MINA, u"MINA"},
    {IDS_FN_STDEVPA, u"STDEVPA"},
    {IDS_FN_VARPA, u"VARPA"},
    {IDS_FN_STDEVA, u"STDEVA"},
    {IDS_FN_VARA, u"VARA"},
    {IDS_FN_SUBTOTALA, u"SUBTOTALA"},
    {IDS_FN_SUMGENERAL, u"SUMGENERAL"},
    {IDS_FN_CONVERTK, u"CONVERTK"},
};

// Built on first use: a function-local static cannot be reached before it exists,
// whatever the start order of translation units.
const std::unordered_map<unsigned, const char16_t*>& EnglishTable() {
  static const std::unordered_map<unsigned, const char16_t*> s_Table = [] {
    std::unordered_map<unsigned, const char16_t*> table;
    table.reserve(std::size(kEnglishEntries));
    for (const TResourceEntry& entry : kEnglishEntries) table.emplace(entry.nId, entry.pwszText);
    return table;
  }();
  return s_Table;
}

// The host's table, copied. Rebuilt as a whole by SetResourceTable, so the texts
// handed out stay put until then.
std::unordered_map<unsigned, std::u16string>& HostTable() {
  static std::unordered_map<unsigned, std::u16string> s_Table;
  return s_Table;
}

unsigned g_nResourceGeneration = 0;

}  // namespace

const char16_t* LoadResourceString(unsigned nId) {
  const auto& host = HostTable();
  if (auto it = host.find(nId); it != host.end()) return it->second.c_str();
  const auto& english = EnglishTable();
  if (auto it = english.find(nId); it != english.end()) return it->second;
  return nullptr;
}

int LoadStringW(unsigned nId, char16_t* pBuf, int nMax) {
  if (pBuf == nullptr || nMax <= 0) return 0;
  const char16_t* pwszText = LoadResourceString(nId);
  int n = 0;
  if (pwszText != nullptr)
    while (n < nMax - 1 && pwszText[n] != 0) {
      pBuf[n] = pwszText[n];
      ++n;
    }
  pBuf[n] = 0;
  return n;
}

void SetResourceTable(const TResourceEntry* pEntries, int nCount) {
  auto& host = HostTable();
  host.clear();
  if (pEntries != nullptr)
    for (int i = 0; i < nCount; ++i)
      if (pEntries[i].pwszText != nullptr)
        host.emplace(pEntries[i].nId, pEntries[i].pwszText);  // the first of equal ids wins
  ++g_nResourceGeneration;
}

unsigned GetResourceGeneration() { return g_nResourceGeneration; }
