// Information family: NA, the IS tests, ISREF, TYPE, ERROR.TYPE and N. They classify
// the argument's value: a reference is read at the formula's base cell (implicit
// intersection), an array by its first element; only ISREF and TYPE look at the
// argument before it is dereferenced.
#include "eval/Func.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"

namespace {

class TFuncNA final : public TFuncNoArgs {
 public:
  TFuncNA() : TFuncNoArgs(IDS_FN_NA, u"NA", 10) {}
  using TFuncNoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override { pArgs->SetError(TValue::errNA); }
};

// The tests that differ only by what they accept. A failed dereference is an error
// value like any other: ISERROR(A1:B2) is TRUE, ISBLANK of it FALSE.
enum class EIsTest {
  isNA,       // #N/A only
  isError,    // every error
  isErr,      // every error but #N/A
  isBlank,    // Empty only: a cell holding the empty text is not blank
  isNumber,   // numbers, not logicals
  isText,     // text, the empty text included
  isNonText,  // everything but text, errors and Empty included
  isLogical,
};

class TFuncIsTest final : public TFuncOneArg {
 public:
  TFuncIsTest(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, EIsTest test)
      : TFuncOneArg(nResId, pwszName, nFunc), m_Test(test) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    pArgs->CheckValue();
    pArgs->SetLogical(Holds(*pArgs));
  }

 private:
  bool Holds(const TValue& val) const {
    switch (m_Test) {
      case EIsTest::isNA:
        return val.IsNAError();
      case EIsTest::isError:
        return val.IsError();
      case EIsTest::isErr:
        return val.IsError() && !val.IsNAError();
      case EIsTest::isBlank:
        return val.IsEmpty();
      case EIsTest::isNumber:
        return val.IsReal();
      case EIsTest::isText:
        return val.IsText();
      case EIsTest::isNonText:
        return !val.IsText();
      case EIsTest::isLogical:
        return val.IsLogical();
    }
    return false;
  }

  const EIsTest m_Test;
};

// ISREF: TRUE for every kind of reference, unions and 3-D ranges included; the
// argument is never read. An error constant such as #REF! is not a reference.
class TFuncIsRef final : public TFuncOneArg {
 public:
  TFuncIsRef() : TFuncOneArg(IDS_FN_ISREF, u"ISREF", 105) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    pArgs->SetLogical(pArgs->IsRef() || pArgs->IsRegion() || pArgs->IsRange3d());
  }
};

// TYPE: 64 for an array as given; otherwise by the dereferenced value. Empty counts
// as a number, so TYPE of a blank cell is 1.
class TFuncType final : public TFuncOneArg {
 public:
  TFuncType() : TFuncOneArg(IDS_FN_TYPE, u"TYPE", 86) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (pArgs->IsArrayVal()) {
      pArgs->SetValue(64);
      return;
    }
    pArgs->CheckValue();
    int nType = 1;
    if (pArgs->IsText())
      nType = 2;
    else if (pArgs->IsLogical())
      nType = 4;
    else if (pArgs->IsError())
      nType = 16;
    pArgs->SetValue(nType);
  }
};

// ERROR.TYPE: the internal error code (1 #NULL! to 8 #FORMULA!); #N/A for anything
// that is not an error.
class TFuncErrorType final : public TFuncOneArg {
 public:
  TFuncErrorType() : TFuncOneArg(IDS_FN_ERROR_TYPE, u"ERROR.TYPE", 261) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    pArgs->CheckValue();
    if (!pArgs->IsError()) {
      pArgs->SetError(TValue::errNA);
      return;
    }
    pArgs->SetValue(static_cast<int>(pArgs->GetError()));
  }
};

// N: a number stays, a logical gives 1 or 0, text and Empty give 0 (numeric text
// too: N does not convert), an error stays the result.
class TFuncN final : public TFuncOneArg {
 public:
  TFuncN() : TFuncOneArg(IDS_FN_N, u"N", 131) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckValue() || pArgs->IsReal()) return;
    pArgs->SetValue(pArgs->IsLogical() && pArgs->GetLogical() ? 1 : 0);
  }
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncIsTest s_IsNA(IDS_FN_ISNA, u"ISNA", 2, EIsTest::isNA);
TFuncIsTest s_IsError(IDS_FN_ISERROR, u"ISERROR", 3, EIsTest::isError);
TFuncNA s_NA;
TFuncType s_Type;
TFuncIsRef s_IsRef;
TFuncIsTest s_IsErr(IDS_FN_ISERR, u"ISERR", 126, EIsTest::isErr);
TFuncIsTest s_IsText(IDS_FN_ISTEXT, u"ISTEXT", 127, EIsTest::isText);
TFuncIsTest s_IsNumber(IDS_FN_ISNUMBER, u"ISNUMBER", 128, EIsTest::isNumber);
TFuncIsTest s_IsBlank(IDS_FN_ISBLANK, u"ISBLANK", 129, EIsTest::isBlank);
TFuncN s_N;
TFuncIsTest s_IsNonText(IDS_FN_ISNONTEXT, u"ISNONTEXT", 190, EIsTest::isNonText);
TFuncIsTest s_IsLogical(IDS_FN_ISLOGICAL, u"ISLOGICAL", 198, EIsTest::isLogical);
TFuncErrorType s_ErrorType;

}  // namespace
