// Identifiers of the string resources the engine asks the host for. The numbers are
// what a host's localized table is keyed by, so they never change once published.
#pragma once

// Operator texts, looked up by the operators at late initialisation. Union has no
// resource: it is written with the locale's list separator.
constexpr unsigned IDS_OP_RANGE = 12388;         // ":"
constexpr unsigned IDS_OP_INTERSECTION = 12389;  // " "
constexpr unsigned IDS_OP_PERCENT = 12390;       // "%"
constexpr unsigned IDS_OP_UMINUS = 12391;        // "-"
constexpr unsigned IDS_OP_UPLUS = 12392;         // "+"
constexpr unsigned IDS_OP_GT = 12393;            // ">"
constexpr unsigned IDS_OP_LT = 12394;            // "<"
constexpr unsigned IDS_OP_NE = 12395;            // "<>"
constexpr unsigned IDS_OP_GE = 12396;            // ">="
constexpr unsigned IDS_OP_EQ = 12397;            // "="
constexpr unsigned IDS_OP_LE = 12398;            // "<="
constexpr unsigned IDS_OP_CONCAT = 12399;        // "&"
constexpr unsigned IDS_OP_POWER = 12400;         // "^"
constexpr unsigned IDS_OP_DIV = 12401;           // "/"
constexpr unsigned IDS_OP_MUL = 12402;           // "*"
constexpr unsigned IDS_OP_SUB = 12403;           // "-"
constexpr unsigned IDS_OP_ADD = 12404;           // "+"

// Unparser messages, used as printf-style formats: the first takes the function
// number (one "%d"), the second takes nothing.
constexpr unsigned IDS_UNPARSE_UNKNOWN_FUNCTION = 12493;
constexpr unsigned IDS_UNPARSE_FAILURE = 12494;

// Criteria text operators, in the order of the criteria operator codes 6 to 11.
constexpr unsigned IDS_CRIT_BEGINS_WITH = 12553;
constexpr unsigned IDS_CRIT_NOT_BEGINS_WITH = 12554;
constexpr unsigned IDS_CRIT_ENDS_WITH = 12555;
constexpr unsigned IDS_CRIT_NOT_ENDS_WITH = 12556;
constexpr unsigned IDS_CRIT_CONTAINS = 12557;
constexpr unsigned IDS_CRIT_NOT_CONTAINS = 12558;

// Localized built-in number format n (0..63) lives under this base + n. The English
// table has none of them: a missing text, like a text of a single ";", means that the
// built-in format keeps its English template.
constexpr unsigned IDS_LOCAL_BUILTIN_FORMAT_BASE = 12146;
constexpr unsigned IDS_LOCAL_BUILTIN_FORMAT_COUNT = 64;

// The new-sheet name pattern, with exactly one "%d" for the sheet index.
constexpr unsigned IDS_NEW_SHEET_NAME = 12700;

// Month and day names and the AM/PM designators: base + index, months 0 = January,
// days 0 = Sunday.
constexpr unsigned IDS_MONTH_NAME_BASE = 12710;    // 12 entries
constexpr unsigned IDS_MONTH_ABBREV_BASE = 12722;  // 12 entries
constexpr unsigned IDS_DAY_NAME_BASE = 12734;      // 7 entries
constexpr unsigned IDS_DAY_ABBREV_BASE = 12741;    // 7 entries
constexpr unsigned IDS_AM = 12748;
constexpr unsigned IDS_PM = 12749;

// Number-format vocabulary: the word for General and the word lists, each list in
// the order of its token codes (date codes 9..28, time codes 29..42), operators in
// the order "<=", ">=", "<>", "<", "=", ">", colours Black..Color.
constexpr unsigned IDS_FMT_GENERAL = 12800;
constexpr unsigned IDS_FMT_COLOR_BASE = 12801;      // 9 entries
constexpr unsigned IDS_FMT_DATE_CODE_BASE = 12810;  // 20 entries
constexpr unsigned IDS_FMT_TIME_CODE_BASE = 12830;  // 14 entries
constexpr unsigned IDS_FMT_OPERATOR_BASE = 12844;   // 6 entries
constexpr unsigned IDS_FMT_COLOR_COUNT = 9;
constexpr unsigned IDS_FMT_DATE_CODE_COUNT = 20;
constexpr unsigned IDS_FMT_TIME_CODE_COUNT = 14;
constexpr unsigned IDS_FMT_OPERATOR_COUNT = 6;

// Local names of the built-in functions: the base plus the function number, so every
// number 0..370 has its slot. "__ADDIN" has no local name (resource id 0).
constexpr unsigned kIdsFunctionBase = 13000;
constexpr unsigned IdsForFunction(unsigned nFunc) { return kIdsFunctionBase + nFunc; }
constexpr unsigned IDS_FN_COUNT = kIdsFunctionBase + 0;
constexpr unsigned IDS_FN_IF = kIdsFunctionBase + 1;
constexpr unsigned IDS_FN_ISNA = kIdsFunctionBase + 2;
constexpr unsigned IDS_FN_ISERROR = kIdsFunctionBase + 3;
constexpr unsigned IDS_FN_SUM = kIdsFunctionBase + 4;
constexpr unsigned IDS_FN_AVERAGE = kIdsFunctionBase + 5;
constexpr unsigned IDS_FN_MIN = kIdsFunctionBase + 6;
constexpr unsigned IDS_FN_MAX = kIdsFunctionBase + 7;
constexpr unsigned IDS_FN_ROW = kIdsFunctionBase + 8;
constexpr unsigned IDS_FN_COLUMN = kIdsFunctionBase + 9;
constexpr unsigned IDS_FN_NA = kIdsFunctionBase + 10;
constexpr unsigned IDS_FN_NPV = kIdsFunctionBase + 11;
constexpr unsigned IDS_FN_STDEV = kIdsFunctionBase + 12;
constexpr unsigned IDS_FN_WON = kIdsFunctionBase + 13;
constexpr unsigned IDS_FN_FIXED = kIdsFunctionBase + 14;
constexpr unsigned IDS_FN_SIN = kIdsFunctionBase + 15;
constexpr unsigned IDS_FN_COS = kIdsFunctionBase + 16;
constexpr unsigned IDS_FN_TAN = kIdsFunctionBase + 17;
constexpr unsigned IDS_FN_ATAN = kIdsFunctionBase + 18;
constexpr unsigned IDS_FN_PI = kIdsFunctionBase + 19;
constexpr unsigned IDS_FN_SQRT = kIdsFunctionBase + 20;
constexpr unsigned IDS_FN_EXP = kIdsFunctionBase + 21;
constexpr unsigned IDS_FN_LN = kIdsFunctionBase + 22;
constexpr unsigned IDS_FN_LOG10 = kIdsFunctionBase + 23;
constexpr unsigned IDS_FN_ABS = kIdsFunctionBase + 24;
constexpr unsigned IDS_FN_INT = kIdsFunctionBase + 25;
constexpr unsigned IDS_FN_SIGN = kIdsFunctionBase + 26;
constexpr unsigned IDS_FN_ROUND = kIdsFunctionBase + 27;
constexpr unsigned IDS_FN_LOOKUP = kIdsFunctionBase + 28;
constexpr unsigned IDS_FN_INDEX = kIdsFunctionBase + 29;
constexpr unsigned IDS_FN_REPT = kIdsFunctionBase + 30;
constexpr unsigned IDS_FN_MID = kIdsFunctionBase + 31;
constexpr unsigned IDS_FN_LEN = kIdsFunctionBase + 32;
constexpr unsigned IDS_FN_VALUE = kIdsFunctionBase + 33;
constexpr unsigned IDS_FN_TRUE = kIdsFunctionBase + 34;
constexpr unsigned IDS_FN_FALSE = kIdsFunctionBase + 35;
constexpr unsigned IDS_FN_AND = kIdsFunctionBase + 36;
constexpr unsigned IDS_FN_OR = kIdsFunctionBase + 37;
constexpr unsigned IDS_FN_NOT = kIdsFunctionBase + 38;
constexpr unsigned IDS_FN_MOD = kIdsFunctionBase + 39;
constexpr unsigned IDS_FN_VAR = kIdsFunctionBase + 46;
constexpr unsigned IDS_FN_TEXT = kIdsFunctionBase + 48;
constexpr unsigned IDS_FN_PV = kIdsFunctionBase + 56;
constexpr unsigned IDS_FN_FV = kIdsFunctionBase + 57;
constexpr unsigned IDS_FN_NPER = kIdsFunctionBase + 58;
constexpr unsigned IDS_FN_PMT = kIdsFunctionBase + 59;
constexpr unsigned IDS_FN_RATE = kIdsFunctionBase + 60;
constexpr unsigned IDS_FN_MIRR = kIdsFunctionBase + 61;
constexpr unsigned IDS_FN_IRR = kIdsFunctionBase + 62;
constexpr unsigned IDS_FN_RAND = kIdsFunctionBase + 63;
constexpr unsigned IDS_FN_MATCH = kIdsFunctionBase + 64;
constexpr unsigned IDS_FN_DATE = kIdsFunctionBase + 65;
constexpr unsigned IDS_FN_TIME = kIdsFunctionBase + 66;
constexpr unsigned IDS_FN_DAY = kIdsFunctionBase + 67;
constexpr unsigned IDS_FN_MONTH = kIdsFunctionBase + 68;
constexpr unsigned IDS_FN_YEAR = kIdsFunctionBase + 69;
constexpr unsigned IDS_FN_WEEKDAY = kIdsFunctionBase + 70;
constexpr unsigned IDS_FN_HOUR = kIdsFunctionBase + 71;
constexpr unsigned IDS_FN_MINUTE = kIdsFunctionBase + 72;
constexpr unsigned IDS_FN_SECOND = kIdsFunctionBase + 73;
constexpr unsigned IDS_FN_NOW = kIdsFunctionBase + 74;
constexpr unsigned IDS_FN_ROWS = kIdsFunctionBase + 76;
constexpr unsigned IDS_FN_COLUMNS = kIdsFunctionBase + 77;
constexpr unsigned IDS_FN_OFFSET = kIdsFunctionBase + 78;
constexpr unsigned IDS_FN_SEARCH = kIdsFunctionBase + 82;
constexpr unsigned IDS_FN_TYPE = kIdsFunctionBase + 86;
constexpr unsigned IDS_FN_ATAN2 = kIdsFunctionBase + 97;
constexpr unsigned IDS_FN_ASIN = kIdsFunctionBase + 98;
constexpr unsigned IDS_FN_ACOS = kIdsFunctionBase + 99;
constexpr unsigned IDS_FN_CHOOSE = kIdsFunctionBase + 100;
constexpr unsigned IDS_FN_HLOOKUP = kIdsFunctionBase + 101;
constexpr unsigned IDS_FN_VLOOKUP = kIdsFunctionBase + 102;
constexpr unsigned IDS_FN_ISREF = kIdsFunctionBase + 105;
constexpr unsigned IDS_FN_LOG = kIdsFunctionBase + 109;
constexpr unsigned IDS_FN_CHAR = kIdsFunctionBase + 111;
constexpr unsigned IDS_FN_LOWER = kIdsFunctionBase + 112;
constexpr unsigned IDS_FN_UPPER = kIdsFunctionBase + 113;
constexpr unsigned IDS_FN_PROPER = kIdsFunctionBase + 114;
constexpr unsigned IDS_FN_LEFT = kIdsFunctionBase + 115;
constexpr unsigned IDS_FN_RIGHT = kIdsFunctionBase + 116;
constexpr unsigned IDS_FN_EXACT = kIdsFunctionBase + 117;
constexpr unsigned IDS_FN_TRIM = kIdsFunctionBase + 118;
constexpr unsigned IDS_FN_REPLACE = kIdsFunctionBase + 119;
constexpr unsigned IDS_FN_SUBSTITUTE = kIdsFunctionBase + 120;
constexpr unsigned IDS_FN_CODE = kIdsFunctionBase + 121;
constexpr unsigned IDS_FN_FIND = kIdsFunctionBase + 124;
constexpr unsigned IDS_FN_ISERR = kIdsFunctionBase + 126;
constexpr unsigned IDS_FN_ISTEXT = kIdsFunctionBase + 127;
constexpr unsigned IDS_FN_ISNUMBER = kIdsFunctionBase + 128;
constexpr unsigned IDS_FN_ISBLANK = kIdsFunctionBase + 129;
constexpr unsigned IDS_FN_T = kIdsFunctionBase + 130;
constexpr unsigned IDS_FN_N = kIdsFunctionBase + 131;
constexpr unsigned IDS_FN_DATEVALUE = kIdsFunctionBase + 140;
constexpr unsigned IDS_FN_TIMEVALUE = kIdsFunctionBase + 141;
constexpr unsigned IDS_FN_SLN = kIdsFunctionBase + 142;
constexpr unsigned IDS_FN_SYD = kIdsFunctionBase + 143;
constexpr unsigned IDS_FN_DDB = kIdsFunctionBase + 144;
constexpr unsigned IDS_FN_INDIRECT = kIdsFunctionBase + 148;
constexpr unsigned IDS_FN_CLEAN = kIdsFunctionBase + 162;
constexpr unsigned IDS_FN_IPMT = kIdsFunctionBase + 167;
constexpr unsigned IDS_FN_PPMT = kIdsFunctionBase + 168;
constexpr unsigned IDS_FN_COUNTA = kIdsFunctionBase + 169;
constexpr unsigned IDS_FN_PRODUCT = kIdsFunctionBase + 183;
constexpr unsigned IDS_FN_FACT = kIdsFunctionBase + 184;
constexpr unsigned IDS_FN_ISNONTEXT = kIdsFunctionBase + 190;
constexpr unsigned IDS_FN_STDEVP = kIdsFunctionBase + 193;
constexpr unsigned IDS_FN_VARP = kIdsFunctionBase + 194;
constexpr unsigned IDS_FN_TRUNC = kIdsFunctionBase + 197;
constexpr unsigned IDS_FN_ISLOGICAL = kIdsFunctionBase + 198;
constexpr unsigned IDS_FN_DOLLAR = kIdsFunctionBase + 204;
constexpr unsigned IDS_FN_FINDB = kIdsFunctionBase + 205;
constexpr unsigned IDS_FN_SEARCHB = kIdsFunctionBase + 206;
constexpr unsigned IDS_FN_REPLACEB = kIdsFunctionBase + 207;
constexpr unsigned IDS_FN_LEFTB = kIdsFunctionBase + 208;
constexpr unsigned IDS_FN_RIGHTB = kIdsFunctionBase + 209;
constexpr unsigned IDS_FN_MIDB = kIdsFunctionBase + 210;
constexpr unsigned IDS_FN_LENB = kIdsFunctionBase + 211;
constexpr unsigned IDS_FN_ROUNDUP = kIdsFunctionBase + 212;
constexpr unsigned IDS_FN_ROUNDDOWN = kIdsFunctionBase + 213;
constexpr unsigned IDS_FN_ASC = kIdsFunctionBase + 214;
constexpr unsigned IDS_FN_DBCS = kIdsFunctionBase + 215;
constexpr unsigned IDS_FN_RANK = kIdsFunctionBase + 216;
constexpr unsigned IDS_FN_ADDRESS = kIdsFunctionBase + 219;
constexpr unsigned IDS_FN_DAYS360 = kIdsFunctionBase + 220;
constexpr unsigned IDS_FN_TODAY = kIdsFunctionBase + 221;
constexpr unsigned IDS_FN_VDB = kIdsFunctionBase + 222;
constexpr unsigned IDS_FN_SUMPRODUCT = kIdsFunctionBase + 228;
constexpr unsigned IDS_FN_SINH = kIdsFunctionBase + 229;
constexpr unsigned IDS_FN_COSH = kIdsFunctionBase + 230;
constexpr unsigned IDS_FN_TANH = kIdsFunctionBase + 231;
constexpr unsigned IDS_FN_ASINH = kIdsFunctionBase + 232;
constexpr unsigned IDS_FN_ACOSH = kIdsFunctionBase + 233;
constexpr unsigned IDS_FN_ATANH = kIdsFunctionBase + 234;
constexpr unsigned IDS_FN_DB = kIdsFunctionBase + 247;
constexpr unsigned IDS_FN_ERROR_TYPE = kIdsFunctionBase + 261;
constexpr unsigned IDS_FN_EVEN = kIdsFunctionBase + 279;
constexpr unsigned IDS_FN_FLOOR = kIdsFunctionBase + 285;
constexpr unsigned IDS_FN_CEILING = kIdsFunctionBase + 288;
constexpr unsigned IDS_FN_ODD = kIdsFunctionBase + 298;
constexpr unsigned IDS_FN_SUMSQ = kIdsFunctionBase + 321;
constexpr unsigned IDS_FN_CONCATENATE = kIdsFunctionBase + 336;
constexpr unsigned IDS_FN_POWER = kIdsFunctionBase + 337;
constexpr unsigned IDS_FN_RADIANS = kIdsFunctionBase + 342;
constexpr unsigned IDS_FN_DEGREES = kIdsFunctionBase + 343;
constexpr unsigned IDS_FN_SUBTOTAL = kIdsFunctionBase + 344;
constexpr unsigned IDS_FN_SUMIF = kIdsFunctionBase + 345;
constexpr unsigned IDS_FN_COUNTIF = kIdsFunctionBase + 346;
constexpr unsigned IDS_FN_COUNTBLANK = kIdsFunctionBase + 347;
constexpr unsigned IDS_FN_ISPMT = kIdsFunctionBase + 350;
constexpr unsigned IDS_FN_AVERAGEA = kIdsFunctionBase + 361;
constexpr unsigned IDS_FN_MAXA = kIdsFunctionBase + 362;
constexpr unsigned IDS_FN_MINA = kIdsFunctionBase + 363;
constexpr unsigned IDS_FN_STDEVPA = kIdsFunctionBase + 364;
constexpr unsigned IDS_FN_VARPA = kIdsFunctionBase + 365;
constexpr unsigned IDS_FN_STDEVA = kIdsFunctionBase + 366;
constexpr unsigned IDS_FN_VARA = kIdsFunctionBase + 367;
constexpr unsigned IDS_FN_SUBTOTALA = kIdsFunctionBase + 368;
constexpr unsigned IDS_FN_SUMGENERAL = kIdsFunctionBase + 369;
// The one built-in external function.
constexpr unsigned IDS_FN_CONVERTK = 13400;

// The ranges must stay apart: a host table keyed by these numbers has one text each.
static_assert(IDS_LOCAL_BUILTIN_FORMAT_BASE + IDS_LOCAL_BUILTIN_FORMAT_COUNT <= IDS_OP_RANGE);
static_assert(IDS_CRIT_NOT_CONTAINS < IDS_NEW_SHEET_NAME &&
              IDS_NEW_SHEET_NAME < IDS_MONTH_NAME_BASE);
static_assert(IDS_MONTH_NAME_BASE + 12 <= IDS_MONTH_ABBREV_BASE);
static_assert(IDS_MONTH_ABBREV_BASE + 12 <= IDS_DAY_NAME_BASE);
static_assert(IDS_DAY_NAME_BASE + 7 <= IDS_DAY_ABBREV_BASE);
static_assert(IDS_DAY_ABBREV_BASE + 7 <= IDS_AM && IDS_PM < IDS_FMT_GENERAL);
static_assert(IDS_FMT_COLOR_BASE + IDS_FMT_COLOR_COUNT <= IDS_FMT_DATE_CODE_BASE);
static_assert(IDS_FMT_DATE_CODE_BASE + IDS_FMT_DATE_CODE_COUNT <= IDS_FMT_TIME_CODE_BASE);
static_assert(IDS_FMT_TIME_CODE_BASE + IDS_FMT_TIME_CODE_COUNT <= IDS_FMT_OPERATOR_BASE);
static_assert(IDS_FMT_OPERATOR_BASE + IDS_FMT_OPERATOR_COUNT <= kIdsFunctionBase);
static_assert(IdsForFunction(370) < IDS_FN_CONVERTK);
