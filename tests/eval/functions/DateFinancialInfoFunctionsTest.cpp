// Date, financial and information functions through formula text: the DATE year rule
// and argument limits, field readers at the edges of the serial range, WEEKDAY's
// types, the pinned clock behind NOW and TODAY, the financial functions checked
// against each other (a payment's present value is the loan, interest and principal
// make the payment, IRR zeroes NPV), the classification of values, and the arity
// edges of every function of the family.
#include "../EvalFixture.h"
#include "platform/Clock.h"

namespace {

using DateFinancialInfoTest = EvalTest;

// Years 0 to 1899 count from 1900; the fields are 16-bit and carry over.
// clang-format off
constexpr TEvalCase kDate[] = {
    {"=DATE(1900,1,1)", "1"}, {"=DATE(0,1,1)", "1"},  // the same day as 1900
    {"=DATE(1899,12,31)", "693962"},  // 31 December 3799
    {"=DATE(1900,2,29)", "60"},  // the leap day of 1900
    {"=DATE(9999,12,31)", "2958465"},
    {"=DATE(9999,12,32)", "#NUM!"},  // one past the last valid day
    {"=DATE(32767,1,1)", "#NUM!"},  // a short, but no valid date
    {"=DATE(32768,1,1)", "#VALUE!"},  // not a short
    {"=DATE(2020,-32769,1)", "#VALUE!"},
    {"=DATE(\"x\",1/0,1)", "#VALUE!"},  // the first failing argument wins
};
// clang-format on

// The time fields read rounded to the second; the date fields do not round.
// clang-format off
constexpr TEvalCase kFields[] = {
    {"=YEAR(2958465.9)", "9999"}, {"=YEAR(2958466)", "#NUM!"}, {"=DAY(0)", "0"},  // 0 January 1900
    {"=DAY(-0.0001)", "#NUM!"}, {"=DAY(59.9999)", "28"},
    {"=HOUR(0.9999999)", "0"},  // 23:59:59.991 rounds up to midnight
    {"=SECOND(0.5+0.4/86400)", "0"}, {"=SECOND(0.5+0.6/86400)", "1"},
};
// clang-format on

// 5 January 2020 is a Sunday, the 6th a Monday.
constexpr TEvalCase kWeekday[] = {
    {"=WEEKDAY(43835)", "1"},       {"=WEEKDAY(43835,2)", "7"},     {"=WEEKDAY(43835,3)", "6"},
    {"=WEEKDAY(43836,2)", "1"},     {"=WEEKDAY(43836,3)", "0"},     {"=WEEKDAY(43835,)", "1"},
    {"=WEEKDAY(43835,4)", "#NUM!"}, {"=WEEKDAY(43835,0)", "#NUM!"}, {"=WEEKDAY(-1,1)", "#NUM!"},
};

// TIME keeps fractions and drops whole days; hours stop at 32767, the total at 0.
// clang-format off
constexpr TEvalCase kTimeAndText[] = {
    {"=TIME(32767,0,0)", "0.291666666666667"}, {"=TIME(32768,0,0)", "#NUM!"},
    {"=TIME(1,-60,0)", "0"}, {"=TIME(1,-61,0)", "#NUM!"},
    {"=TIME(0,1E+307,1E+308)", "#NUM!"},  // the total overflows
    {"=TIMEVALUE(\"6:00 PM\")", "0.75"}, {"=DATEVALUE(\"3/1/1900 6:00\")", "61"},
    {"=DATEVALUE(61)", "#VALUE!"},  // only text is read
    {"=DAYS360(0,31)", "30"},  // day 0 counts as 31 December 1899
    {"=DAYS360(-1,31)", "#NUM!"},
};
// clang-format on

TEST_F(DateFinancialInfoTest, DateAndTime) {
  ExpectAll(kDate);
  ExpectAll(kFields);
  ExpectAll(kWeekday);
  ExpectAll(kTimeAndText);
}

// NOW and TODAY read the platform clock and follow it on the next recalculation.
TEST_F(DateFinancialInfoTest, NowAndTodayFollowTheClock) {
  SYSTEMTIME pinned = {2020, 1, 3, 15, 18, 0, 0, 0};  // 15 January 2020, 18:00
  SetClockOverride(&pinned);
  EXPECT_EQ("43845.75", Eval("=NOW()", "A1"));
  EXPECT_EQ("43845", Eval("=TODAY()", "A2"));
  pinned.wDay = 16;
  SetClockOverride(&pinned);
  m_pBook->Recalc();
  EXPECT_EQ("43846.75", Text("A1"));
  EXPECT_EQ("43846", Text("A2"));
  SetClockOverride(nullptr);
}

// Identities between the functions, in advance and in arrears, over positive,
// negative and tiny rates.
constexpr TEvalCase kFinanceIdentities[] = {
    {"=ABS(PV(0.05,12,PMT(0.05,12,1000))-1000)<1E-9", "TRUE"},
    {"=ABS(PV(-0.05,12,PMT(-0.05,12,1000,50,1),50,1)-1000)<1E-9", "TRUE"},
    {"=ABS(FV(0.01,NPER(0.01,-50,1000,200),-50,1000)-200)<1E-9", "TRUE"},
    {"=ABS(PMT(RATE(24,-50,1000),24,1000)+50)<1E-9", "TRUE"},
    {"=ABS(PMT(RATE(24,-50,1000,0,1),24,1000,0,1)+50)<1E-9", "TRUE"},
    {"=ABS(IPMT(0.1,2,5,1000)+PPMT(0.1,2,5,1000)-PMT(0.1,5,1000))<1E-9", "TRUE"},
    {"=ABS(IPMT(0.1,3,5,1000,0,1)+PPMT(0.1,3,5,1000,0,1)-PMT(0.1,5,1000,0,1))<1E-9", "TRUE"},
    {"=ABS(PMT(1E-12,10,1000)+100)<1E-6", "TRUE"},  // the series below 1e-8
    {"=ABS(NPV(IRR({-100,30,40,50}),{30,40,50})-100)<1E-7", "TRUE"},
    {"=ABS(IRR({-100,30,40,50},-0.5)-IRR({-100,30,40,50}))<1E-9", "TRUE"},
    {"=ABS(VDB(2400,300,10,0,3)-VDB(2400,300,10,0,1.5)-VDB(2400,300,10,1.5,3))<1E-9", "TRUE"},
    {"=RATE(10,-100,500,,,)=RATE(10,-100,500)", "TRUE"},  // omitted guess is 0.1
    {"=DDB(2400,300,10,1,)", "480"},                      // omitted factor is 2
};

// Bad inputs, each with why it is bad.
// clang-format off
constexpr TEvalCase kFinanceErrors[] = {
    {"=SLN(100,10,0)", "#DIV/0!"},  // no life
    {"=ISPMT(0.1,1,0,100)", "#DIV/0!"},  // no periods
    {"=PMT(0,0,100)", "#NUM!"},  // no periods
    {"=FV(1,2000,-1)", "#NUM!"},  // overflows
    {"=RATE(10,-100,-1000)", "#NUM!"},  // all paid out: no rate solves it
    {"=IRR({-1,2},\"x\")", "#VALUE!"},  // the guess is no number
    {"=IRR({-1,2},0.1,1)", "#VALUE!"},  // nothing follows the guess
    {"=IRR(B1:B2)", "#DIV/0!"},  // an error in the list
    {"=NPV(\"x\",1/0)", "#VALUE!"},  // the rate fails first
    {"=MIRR({-100,200},1/0,0.1)", "#DIV/0!"},  // a rate is an error
    {"=MIRR({100,200},0.1,0.1)", "#DIV/0!"},  // nothing paid
    {"=VDB(2400,300,10,5,4)", "#NUM!"},  // start after end
    {"=VDB(2400,300,10,0,11)", "#NUM!"},  // end after life
    {"=DB(1000,100,6,8)", "#NUM!"},  // past the year after life
    {"=SYD(1000,100,5,6)", "#NUM!"},  // past life
};
// clang-format on

TEST_F(DateFinancialInfoTest, Financial) {
  SetNumber("B1", -1);
  ASSERT_EQ(0, m_pSheet->SetError(At("B2"), TValue::errDiv0));
  ExpectAll(kFinanceIdentities);
  ExpectAll(kFinanceErrors);
}

// A1 empty, A2 the empty text, A3 #FORMULA!, A4 TRUE.
TEST_F(DateFinancialInfoTest, Information) {
  SetText("A2", u"");
  ASSERT_EQ(0, m_pSheet->SetError(At("A3"), TValue::errFormula));
  ASSERT_EQ(0, m_pSheet->SetLogical(At("A4"), 1));
  // clang-format off
  constexpr TEvalCase kCases[] = {
      {"=TYPE(A1)", "1"}, {"=TYPE({1,2})", "64"}, {"=TYPE(1/0)", "16"}, {"=TYPE(A4)", "4"},
      {"=ERROR.TYPE(A3)", "8"}, {"=ERROR.TYPE(5)", "#N/A"}, {"=ISBLANK(A1)", "TRUE"},
      {"=ISBLANK(A2)", "FALSE"}, {"=ISTEXT(A2)", "TRUE"}, {"=ISNONTEXT(A1)", "TRUE"},
      {"=ISERR(A3)", "TRUE"}, {"=ISNA(A3)", "FALSE"}, {"=ISREF(Sheet2:Sheet3!A1)", "TRUE"},
      {"=ISREF(A1:A2 A2)", "TRUE"}, {"=N(A4)", "1"}, {"=N(\"5\")", "0"}, {"=N(A3)", "#FORMULA!"},
  };
  // clang-format on
  ExpectAll(kCases);
}

constexpr TArity kArity[] = {
    {"DATE", 3, 3},      {"TIME", 3, 3},     {"DAY", 1, 1},    {"MONTH", 1, 1},
    {"YEAR", 1, 1},      {"WEEKDAY", 1, 2},  {"HOUR", 1, 1},   {"MINUTE", 1, 1},
    {"SECOND", 1, 1},    {"NOW", 0, 0},      {"TODAY", 0, 0},  {"DATEVALUE", 1, 1},
    {"TIMEVALUE", 1, 1}, {"DAYS360", 2, 3},  {"PV", 3, 5},     {"FV", 3, 5},
    {"NPER", 3, 5},      {"PMT", 3, 5},      {"RATE", 3, 6},   {"IRR", 1, 30},
    {"NPV", 1, 30},      {"MIRR", 3, 3},     {"IPMT", 4, 6},   {"PPMT", 4, 6},
    {"ISPMT", 4, 4},     {"DB", 4, 5},       {"DDB", 4, 5},    {"SLN", 3, 3},
    {"SYD", 4, 4},       {"VDB", 5, 7},      {"TYPE", 1, 1},   {"ERROR.TYPE", 1, 1},
    {"ISBLANK", 1, 1},   {"ISNUMBER", 1, 1}, {"ISTEXT", 1, 1}, {"ISNONTEXT", 1, 1},
    {"ISLOGICAL", 1, 1}, {"ISREF", 1, 1},    {"ISERR", 1, 1},  {"N", 1, 1},
};

TEST_F(DateFinancialInfoTest, ArityEdges) { ExpectArity(kArity); }

}  // namespace
