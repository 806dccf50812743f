// Parse throughput of the A1 formula parser over a mix of typical cell formulas:
// references and ranges, nested functions, strings, 3-D references, constants.
#include <benchmark/benchmark.h>

#include <string>

#include "formula/FormulaParser.h"

namespace {

const TParseFunc kFuncs[] = {
    {u"SUM", nullptr, 4, 0, 30, 2, 0x5555, false, true},
    {u"IF", nullptr, 1, 2, 3, 2, 0xAAAA, false, true},
    {u"AVERAGE", nullptr, 5, 1, 30, 2, 0x5555, false, true},
    {u"ROUND", nullptr, 27, 2, 2, 2, 0xAAAA, false, false},
    {u"VLOOKUP", nullptr, 102, 3, 4, 2, 0xAAA9, false, true},
    {u"CONCATENATE", nullptr, 336, 1, 30, 2, 0xAAAA, false, true},
    {u"MAX", nullptr, 7, 1, 30, 2, 0x5555, false, true},
    {u"AND", nullptr, 36, 1, 30, 2, 0x5555, false, true},
};

class CBenchParser : public CFormulaParser {
 public:
  CBenchParser() : CFormulaParser(nullptr, nullptr, TCell(10, 2)) {
    for (const TParseFunc& f : kFuncs) m_Index.Add(&f, false);
  }

 protected:
  const TParseFunc* FindFunction(const char16_t* p, int nLen) override {
    return m_Index.Find(p, nLen);
  }
  int FindSheet(const char16_t* p, int nLen) override {
    return (nLen == 6 && p[0] == u'S' && p[5] >= u'1' && p[5] <= u'3') ? p[5] - u'1' : -1;
  }
  int FindExternSheet(const TExternPrefix& x, bool) override { return x.nSheet1Len; }

 private:
  CParseFuncIndex m_Index;
};

// 30 to 60 characters each.
const char16_t* const kFormulas[] = {
    u"SUM(A1:A100)+AVERAGE(B1:B100)*$C$1-D5/2",
    u"IF(A1>100,\"High\",IF(A1>50,\"Medium\",\"Low\"))",
    u"VLOOKUP(A2,Sheet2!$A$1:$D$500,3,FALSE)",
    u"ROUND(SUM(Sheet1:Sheet3!B2:B20)*1.075,2)",
    u"CONCATENATE(A1,\" \",B1,\" (\",C1,\")\")",
    u"IF(AND(B2>=0,B2<=100),B2/100,0)+MAX(C2:C40)",
    u"(A1+B1+C1+D1+E1)/5-Sheet2!F1^2+$G$1*12.5%",
    u"SUM(A1,B2,C3,D4,E5)-ROUND(F6*0.15,0)&\"x\"",
};

void BM_ParseMix(benchmark::State& state) {
  CBenchParser parser;
  size_t i = 0;
  for (auto _ : state) {
    const int nResult = parser.Parse(kFormulas[i], CFormulaBase::ftCell);
    benchmark::DoNotOptimize(nResult);
    if (nResult != 0) state.SkipWithError("parse failed");
    i = (i + 1) % std::size(kFormulas);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_ParseMix);

}  // namespace
