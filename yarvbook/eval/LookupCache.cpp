// Every answer is checked with TValue::Compare, the comparison the scan uses, so the
// index only has to narrow the candidates down without losing one:
// - Numbers: v.Compare(e) is 0 when v - e lies within 1e-15 of |v|. The rounded
//   difference falls as e grows, so the matching values form one run of the sorted
//   values; a binary search with Compare itself finds its start. Within the
//   tolerance lie only a few doubles, so the run is short.
// - Texts: Compare calls texts equal exactly when their case-folded forms are, and
//   HashStringNoCase hashes the folded form, so every match shares v's hash.
// - Logicals: at most two values, each with its first position.
#include "eval/LookupCache.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>

#include "book/CellRecord.h"
#include "book/SheetBase.h"
#include "eval/Value.h"
#include "platform/TextServices.h"

// ---- TIndex ------------------------------------------------------------------------

bool CLookupCache::TIndex::IsIndexable(const TValue& v) {
  return v.IsReal() || v.IsText() || v.IsLogical();
}

void CLookupCache::TIndex::Build(const TSheetLine& line) {
  m_Line = line;
  m_Numbers.clear();
  m_Texts.clear();
  m_nFirstNaN = -1;
  m_anFirstLogical[0] = m_anFirstLogical[1] = -1;
  const CSheetBase& sheet = *line.pSheet;
  // Rows past the sheet's last one hold no cells.
  const int nLast = line.bHorizontal ? line.nLast : std::min(line.nLast, sheet.Rows() - 1);
  for (int i = line.nFirst; i <= nLast; ++i) {
    const CCell* pCell = line.bHorizontal ? sheet.Cell(line.nLine, i) : sheet.Cell(i, line.nLine);
    if (pCell == nullptr) continue;
    const int nPos = i - line.nFirst;
    switch (pCell->GetValType()) {
      case TValue::vtReal: {
        const double r = pCell->GetReal();
        if (!std::isnan(r)) {
          m_Numbers.push_back({r, nPos});
        } else if (m_nFirstNaN < 0) {
          m_nFirstNaN = nPos;
        }
        break;
      }
      case TValue::vtText:
        m_Texts.push_back({HashStringNoCase(pCell->TextPtr()), nPos});
        break;
      case TValue::vtLogical: {
        int& nFirst = m_anFirstLogical[pCell->GetLogical() != 0 ? 1 : 0];
        if (nFirst < 0) nFirst = nPos;
        break;
      }
      default:
        break;  // Empty and errors are never found
    }
  }
  // Equal values (0 and -0 among them) compare alike with every v: keep the first.
  // Lookup tables are often sorted already, and the check costs one pass.
  const auto byValue = [](const TNumber& a, const TNumber& b) {
    return a.r < b.r || (a.r == b.r && a.nPos < b.nPos);
  };
  if (!std::is_sorted(m_Numbers.begin(), m_Numbers.end(), byValue))
    std::sort(m_Numbers.begin(), m_Numbers.end(), byValue);
  m_Numbers.erase(std::unique(m_Numbers.begin(), m_Numbers.end(),
                              [](const TNumber& a, const TNumber& b) { return a.r == b.r; }),
                  m_Numbers.end());
  m_Numbers.shrink_to_fit();
  std::sort(m_Texts.begin(), m_Texts.end(), [](const TText& a, const TText& b) {
    return a.nHash < b.nHash || (a.nHash == b.nHash && a.nPos < b.nPos);
  });
}

int CLookupCache::TIndex::Find(const TValue& v) const {
  if (v.IsReal()) return FindNumber(v);
  if (v.IsText()) return FindText(v);
  int nBest = -1;
  TValue elem;
  for (int b = 0; b < 2; ++b) {
    const int nPos = m_anFirstLogical[b];
    if (nPos < 0 || (nBest >= 0 && nPos > nBest)) continue;
    elem.SetLogical(b);
    if (v.Compare(elem) == 0) nBest = nPos;
  }
  return nBest;
}

int CLookupCache::TIndex::FindNumber(const TValue& v) const {
  TValue elem;
  const auto itStart =
      std::partition_point(m_Numbers.begin(), m_Numbers.end(), [&v, &elem](const TNumber& e) {
        elem.SetValue(e.r);
        return v.Compare(elem) > 0;
      });
  int nBest = m_nFirstNaN;
  for (auto it = itStart; it != m_Numbers.end(); ++it) {
    elem.SetValue(it->r);
    if (v.Compare(elem) != 0) break;
    if (nBest < 0 || it->nPos < nBest) nBest = it->nPos;
  }
  return nBest;
}

int CLookupCache::TIndex::FindText(const TValue& v) const {
  const std::uint64_t nHash = HashStringNoCase(v.TextPtr());
  auto it = std::lower_bound(m_Texts.begin(), m_Texts.end(), nHash,
                             [](const TText& e, std::uint64_t n) { return e.nHash < n; });
  // Texts read from cells share their string-table entry instead of being copied.
  TValue elem;
  elem.SetSST(true);
  for (; it != m_Texts.end() && it->nHash == nHash; ++it) {
    const int nAt = m_Line.nFirst + it->nPos;
    const CCell* pCell = m_Line.bHorizontal ? m_Line.pSheet->Cell(m_Line.nLine, nAt)
                                            : m_Line.pSheet->Cell(nAt, m_Line.nLine);
    if (pCell == nullptr) continue;
    pCell->GetValue(elem);
    if (v.Compare(elem) == 0) return it->nPos;
  }
  return -1;
}

// ---- The cache ---------------------------------------------------------------------

namespace {

// A line searched in the open scope. It gets an index once it has been scanned
// kScansBeforeIndex times: a line searched once (the moving windows of a
// filled-down formula) costs one scan, not a build.
struct TSlot {
  TSheetLine line;  // a null sheet marks a free slot
  unsigned nLastUse = 0;
  int nScans = 0;  // searches answered by scanning
  std::unique_ptr<CLookupCache::TIndex> pIndex;
};

// Lines remembered: the indexed ones and those still scanned, together.
constexpr int kSlots = 2 * CLookupCache::kMaxIndexes;

struct TCacheState {
  int nScopes = 0;
  unsigned nClock = 0;  // counts searches, for least-recently-used replacement
  std::array<TSlot, kSlots> slots;
};

constinit TCacheState g_Cache;

void ForgetAll() {
  for (TSlot& slot : g_Cache.slots) slot = TSlot();
}

}  // namespace

constinit int CLookupCache::m_nIndexes = 0;

CLookupCache::TScope::TScope() {
  ForgetAll();
  m_nIndexes = 0;
  ++g_Cache.nScopes;
}

CLookupCache::TScope::~TScope() {
  ForgetAll();
  m_nIndexes = 0;
  --g_Cache.nScopes;
}

bool CLookupCache::Find(const TSheetLine& line, const TValue& v, int* pnPos) {
  if (g_Cache.nScopes == 0 || line.pSheet == nullptr || line.Size() < kMinLineSize ||
      !TIndex::IsIndexable(v))
    return false;
  const unsigned nNow = ++g_Cache.nClock;
  TSlot* pSlot = nullptr;
  for (TSlot& slot : g_Cache.slots)
    if (slot.line.pSheet != nullptr && slot.line == line) {
      pSlot = &slot;
      break;
    }
  if (pSlot == nullptr) {
    // Free slots carry use 0, so they go first.
    pSlot =
        &*std::min_element(g_Cache.slots.begin(), g_Cache.slots.end(),
                           [](const TSlot& a, const TSlot& b) { return a.nLastUse < b.nLastUse; });
    if (pSlot->pIndex) --m_nIndexes;
    pSlot->pIndex.reset();
    pSlot->line = line;
    pSlot->nLastUse = nNow;
    pSlot->nScans = 1;
    return false;
  }
  pSlot->nLastUse = nNow;
  if (!pSlot->pIndex) {
    if (pSlot->nScans < kScansBeforeIndex) {
      ++pSlot->nScans;
      return false;
    }
    if (m_nIndexes >= kMaxIndexes) {
      TSlot* pOldest = nullptr;
      for (TSlot& slot : g_Cache.slots)
        if (slot.pIndex && (pOldest == nullptr || slot.nLastUse < pOldest->nLastUse))
          pOldest = &slot;
      pOldest->pIndex.reset();
      --m_nIndexes;
    }
    try {
      auto pIndex = std::make_unique<TIndex>();
      pIndex->Build(line);
      pSlot->pIndex = std::move(pIndex);
    } catch (const std::bad_alloc&) {
      return false;  // the scan needs no memory
    }
    ++m_nIndexes;
  }
  *pnPos = pSlot->pIndex->Find(v);
  return true;
}

void CLookupCache::DropIndexesHolding(const CSheetBase* pSheet, int nRow, int nCol) {
  for (TSlot& slot : g_Cache.slots) {
    if (!slot.pIndex || !slot.line.Holds(pSheet, nRow, nCol)) continue;
    // The line starts over, scans first, so that stores between searches cannot
    // make every search a build.
    slot.pIndex.reset();
    slot.nScans = 0;
    --m_nIndexes;
  }
}
