// The dependency graph on random formula layouts against brute force: the order
// puts precedents first, the circular marks are exactly the formulas that reach a
// cycle, and the formulas an edit marks are exactly those that read it, directly or
// through other marked formulas.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "recalc/DependencyGraph.h"

namespace {

struct TModelRef {
  int nSheet, nRow1, nCol1, nRow2, nCol2;
  bool Holds(int nSheetAt, int nRow, int nCol) const {
    return nSheetAt == nSheet && nRow >= nRow1 && nRow <= nRow2 && nCol >= nCol1 && nCol <= nCol2;
  }
};

struct TModelFormula {
  int nSheet, nRow, nCol;
  std::vector<TModelRef> refs;
};

// Formulas on two sheets of 30 x 8 cells, each reading a few cells or rectangles
// (rarely a tall one, so both walks of the formula region are used).
std::vector<TModelFormula> RandomLayout(std::mt19937& rng, int nFormulas, int nMaxRefs) {
  std::vector<TModelFormula> formulas;
  std::vector<bool> used(2 * 30 * 8, false);
  while (static_cast<int>(formulas.size()) < nFormulas) {
    const int nSheet = static_cast<int>(rng() % 2), nRow = static_cast<int>(rng() % 30),
              nCol = static_cast<int>(rng() % 8);
    if (used[(nSheet * 30 + nRow) * 8 + nCol]) continue;
    used[(nSheet * 30 + nRow) * 8 + nCol] = true;
    TModelFormula f{nSheet, nRow, nCol, {}};
    const int nRefs = static_cast<int>(rng() % (nMaxRefs + 1));
    for (int i = 0; i < nRefs; i++) {
      TModelRef ref{static_cast<int>(rng() % 2), static_cast<int>(rng() % 30),
                    static_cast<int>(rng() % 8), 0, 0};
      const int nShape = static_cast<int>(rng() % 10);
      ref.nRow2 = std::min(29, ref.nRow1 + (nShape == 0 ? 29 : nShape < 3 ? 2 : 0));
      ref.nCol2 = std::min(7, ref.nCol1 + (nShape == 1 ? 3 : 0));
      f.refs.push_back(ref);
    }
    formulas.push_back(f);
  }
  // Ids are handed out sheet by sheet in position order.
  std::sort(formulas.begin(), formulas.end(), [](const TModelFormula& a, const TModelFormula& b) {
    return std::tie(a.nSheet, a.nRow, a.nCol) < std::tie(b.nSheet, b.nRow, b.nCol);
  });
  return formulas;
}

void Load(const std::vector<TModelFormula>& formulas, CDependencyGraph& graph) {
  graph.Reset(2);
  for (const TModelFormula& f : formulas) {
    graph.AddFormula(f.nSheet, f.nRow, f.nCol, 0);
    for (const TModelRef& r : f.refs) graph.AddRef(r.nSheet, r.nRow1, r.nCol1, r.nRow2, r.nCol2);
  }
  graph.EndCollect();
}

// reads[a][b]: formula a reads the cell of formula b.
std::vector<std::vector<bool>> Edges(const std::vector<TModelFormula>& formulas) {
  const size_t n = formulas.size();
  std::vector<std::vector<bool>> reads(n, std::vector<bool>(n, false));
  for (size_t a = 0; a < n; a++)
    for (size_t b = 0; b < n; b++)
      for (const TModelRef& r : formulas[a].refs)
        if (r.Holds(formulas[b].nSheet, formulas[b].nRow, formulas[b].nCol)) reads[a][b] = true;
  return reads;
}

// reach[a][b]: b can be reached from a in one step or more.
std::vector<std::vector<bool>> Closure(std::vector<std::vector<bool>> reach) {
  const size_t n = reach.size();
  for (size_t k = 0; k < n; k++)
    for (size_t a = 0; a < n; a++)
      if (reach[a][k])
        for (size_t b = 0; b < n; b++)
          if (reach[k][b]) reach[a][b] = true;
  return reach;
}

TEST(DependencyGraph, OrderAndCircularMarksMatchBruteForce) {
  std::mt19937 rng(2024);
  for (int nTrial = 0; nTrial < 200; nTrial++) {
    SCOPED_TRACE(nTrial);
    // Sparse layouts are mostly acyclic, dense ones mostly circular.
    const std::vector<TModelFormula> formulas = RandomLayout(rng, 5 + nTrial % 40, 1 + nTrial % 3);
    CDependencyGraph graph;
    Load(formulas, graph);
    const int nCircular = graph.BuildOrder();
    const size_t n = formulas.size();
    const std::vector<std::uint32_t>& order = graph.GetOrder();
    ASSERT_EQ(n, order.size());
    std::vector<size_t> pos(n, n);
    for (size_t i = 0; i < n; i++) {
      ASSERT_LT(order[i], n);
      ASSERT_EQ(n, pos[order[i]]) << "formula " << order[i] << " appears twice";
      pos[order[i]] = i;
    }
    const auto reads = Edges(formulas);
    const auto reach = Closure(reads);
    int nExpectedCircular = 0;
    for (size_t a = 0; a < n; a++) {
      bool bReachesCycle = false;
      for (size_t x = 0; x < n; x++)
        if ((x == a || reach[a][x]) && reach[x][x]) bReachesCycle = true;
      nExpectedCircular += bReachesCycle;
      EXPECT_EQ(bReachesCycle, graph.IsCircular(static_cast<std::uint32_t>(a))) << "formula " << a;
      if (bReachesCycle) continue;
      for (size_t b = 0; b < n; b++) {
        if (reads[a][b]) {
          EXPECT_LT(pos[b], pos[a]) << a << " reads " << b;
        }
      }
    }
    EXPECT_EQ(nExpectedCircular, nCircular);
  }
}

TEST(DependencyGraph, EditMarksExactlyTheReaders) {
  std::mt19937 rng(99);
  for (int nTrial = 0; nTrial < 200; nTrial++) {
    SCOPED_TRACE(nTrial);
    const std::vector<TModelFormula> formulas = RandomLayout(rng, 5 + nTrial % 30, 2);
    CDependencyGraph graph;
    Load(formulas, graph);
    graph.BuildOrder();
    graph.BuildDependants();
    if (nTrial % 2) graph.BuildDependants();  // built again: counted afresh
    const size_t n = formulas.size();
    const TModelRef edit{static_cast<int>(rng() % 2), static_cast<int>(rng() % 30),
                         static_cast<int>(rng() % 8), 0, 0};
    TModelRef changed = edit;
    changed.nRow2 = std::min(29, edit.nRow1 + static_cast<int>(rng() % 3));
    changed.nCol2 = std::min(7, edit.nCol1 + static_cast<int>(rng() % 2));
    // Brute force: formulas with a rectangle meeting the change, then every formula
    // reading a marked one, plus the circular ones (always recomputed).
    std::vector<bool> marked(n, false);
    for (size_t a = 0; a < n; a++) {
      if (graph.IsCircular(static_cast<std::uint32_t>(a))) marked[a] = true;
      for (const TModelRef& r : formulas[a].refs)
        if (r.nSheet == changed.nSheet && r.nRow1 <= changed.nRow2 && r.nRow2 >= changed.nRow1 &&
            r.nCol1 <= changed.nCol2 && r.nCol2 >= changed.nCol1)
          marked[a] = true;
    }
    const auto reads = Edges(formulas);
    for (bool bGrew = true; bGrew;) {
      bGrew = false;
      for (size_t a = 0; a < n; a++)
        for (size_t b = 0; b < n && !marked[a]; b++)
          if (marked[b] && reads[a][b]) marked[a] = bGrew = true;
    }
    graph.MarkReaders(changed.nSheet, changed.nRow1, changed.nCol1, changed.nRow2, changed.nCol2);
    graph.MarkAlways();
    std::vector<std::uint32_t> ids;
    graph.TakeDirty(ids);
    std::vector<bool> got(n, false);
    for (const std::uint32_t nId : ids) got[nId] = true;
    EXPECT_EQ(marked, got);
    // In chain order, and the marks are cleared for the next recalculation.
    std::vector<std::uint32_t> inOrder;
    for (const std::uint32_t nId : graph.GetOrder())
      if (got[nId]) inOrder.push_back(nId);
    EXPECT_EQ(inOrder, ids);
    for (size_t a = 0; a < n; a++)
      EXPECT_EQ(0, graph.GetFlags(static_cast<std::uint32_t>(a)) & CDependencyGraph::dfDirty);
  }
}

// Formulas found by position; positions without a formula give -1.
TEST(DependencyGraph, FindFormulaByPosition) {
  CDependencyGraph graph;
  graph.Reset(2);
  graph.AddFormula(0, 0, 3, 0);
  graph.AddFormula(0, 5, 0, 0);
  graph.AddFormula(0, 5, 255, 0);
  graph.AddFormula(1, 65535, 7, 0);
  graph.EndCollect();
  EXPECT_EQ(0, graph.FindFormula(0, 0, 3));
  EXPECT_EQ(2, graph.FindFormula(0, 5, 255));
  EXPECT_EQ(3, graph.FindFormula(1, 65535, 7));
  EXPECT_EQ(1, graph.GetSheet(3));
  EXPECT_EQ(-1, graph.FindFormula(0, 0, 2));
  EXPECT_EQ(-1, graph.FindFormula(0, 6, 0));
  EXPECT_EQ(-1, graph.FindFormula(1, 65534, 7));
  EXPECT_EQ(-1, graph.FindFormula(2, 0, 0));
}

// Rows longer than the short-row scan are searched: every position of a wide row, held
// or not, and one-cell references walked along it.
TEST(DependencyGraph, WideRowsFindAndOrderOneCellReferences) {
  for (const int nFormulas : {16, 17, 40}) {
    SCOPED_TRACE(nFormulas);
    CDependencyGraph graph;
    graph.Reset(1);
    // Formulas at even columns of row 3; each reads the next one to its right, so the
    // order runs from the right end of the row back to column 0.
    for (int i = 0; i < nFormulas; i++) {
      graph.AddFormula(0, 3, 2 * i, 0);
      if (i + 1 < nFormulas) graph.AddRef(0, 3, 2 * i + 2, 3, 2 * i + 2);
      graph.AddRef(0, 3, 2 * i + 1, 3, 2 * i + 1);  // an empty odd column
    }
    graph.EndCollect();
    for (int c = 0; c <= 2 * nFormulas; c++)
      EXPECT_EQ(c % 2 == 0 && c < 2 * nFormulas ? c / 2 : -1, graph.FindFormula(0, 3, c))
          << "column " << c;
    EXPECT_EQ(-1, graph.FindFormula(0, 2, 0));
    EXPECT_EQ(0, graph.BuildOrder());
    const std::vector<std::uint32_t>& order = graph.GetOrder();
    ASSERT_EQ(static_cast<size_t>(nFormulas), order.size());
    for (int i = 0; i < nFormulas; i++)
      EXPECT_EQ(static_cast<std::uint32_t>(nFormulas - 1 - i), order[static_cast<size_t>(i)]);
  }
}

}  // namespace
