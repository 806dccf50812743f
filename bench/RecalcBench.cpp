// Recalculation benchmark over the standard workloads: a CSV grid per workload
// (a field starting with "=" is a formula) and a manifest of edit scenarios and
// check cells, written by gen_workloads.py. For each workload it prints the load
// (CSV to cells, formulas parsed), the order build, a full recalculation, each
// edit with minimal recalculation, memory growth and the check cells' values.
//
// Usage: yarvbook_bench_recalcbench DATA_DIR [WORKLOAD...]
// DATA_DIR holds W.csv and manifest.json. Workloads whose formulas call functions
// the engine does not compute yet are skipped with a note.
#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/Cell.h"
#include "book/BookBase.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"
#include "eval/Func.h"
#include "eval/Value.h"

namespace {

using TClock = std::chrono::steady_clock;

double MsSince(TClock::time_point t0) {
  return std::chrono::duration<double, std::milli>(TClock::now() - t0).count();
}

// CPU time of this thread: on a shared machine it moves far less than the wall clock,
// which also counts the time other processes hold the cores.
double CpuMs() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) / 1e6;
}

// ---- A small JSON reader for the manifest (our own file, a few levels deep) ----------
struct TJson {
  enum EKind { jNull, jNumber, jString, jArray, jObject, jBool } eKind = jNull;
  double r = 0;
  std::string s;
  std::vector<TJson> items;
  std::vector<std::pair<std::string, TJson>> members;
  const TJson* Get(const char* pszKey) const {
    for (const auto& m : members)
      if (m.first == pszKey) return &m.second;
    return nullptr;
  }
};

class CJsonReader {
 public:
  explicit CJsonReader(const std::string& text) : m_Text(text) {}
  bool Read(TJson& out) { return Value(out, 0); }

 private:
  void Skip() {
    while (m_nPos < m_Text.size() && std::isspace(static_cast<unsigned char>(m_Text[m_nPos])))
      m_nPos++;
  }
  bool Value(TJson& out, int nDepth) {
    if (nDepth > 16) return false;
    Skip();
    if (m_nPos >= m_Text.size()) return false;
    const char c = m_Text[m_nPos];
    if (c == '{') {
      out.eKind = TJson::jObject;
      m_nPos++;
      Skip();
      if (m_Text[m_nPos] == '}') return ++m_nPos, true;
      for (;;) {
        TJson key;
        Skip();
        if (!String(key)) return false;
        Skip();
        if (m_Text[m_nPos++] != ':') return false;
        out.members.emplace_back(key.s, TJson());
        if (!Value(out.members.back().second, nDepth + 1)) return false;
        Skip();
        const char d = m_Text[m_nPos++];
        if (d == '}') return true;
        if (d != ',') return false;
      }
    }
    if (c == '[') {
      out.eKind = TJson::jArray;
      m_nPos++;
      Skip();
      if (m_Text[m_nPos] == ']') return ++m_nPos, true;
      for (;;) {
        out.items.emplace_back();
        if (!Value(out.items.back(), nDepth + 1)) return false;
        Skip();
        const char d = m_Text[m_nPos++];
        if (d == ']') return true;
        if (d != ',') return false;
      }
    }
    if (c == '"') return String(out);
    if (m_Text.compare(m_nPos, 4, "true") == 0) {
      out.eKind = TJson::jBool;
      out.r = 1;
      m_nPos += 4;
      return true;
    }
    if (m_Text.compare(m_nPos, 5, "false") == 0) {
      out.eKind = TJson::jBool;
      m_nPos += 5;
      return true;
    }
    if (m_Text.compare(m_nPos, 4, "null") == 0) {
      m_nPos += 4;
      return true;
    }
    char* pEnd = nullptr;
    out.r = std::strtod(m_Text.c_str() + m_nPos, &pEnd);
    if (pEnd == m_Text.c_str() + m_nPos) return false;
    out.eKind = TJson::jNumber;
    m_nPos = static_cast<size_t>(pEnd - m_Text.c_str());
    return true;
  }
  bool String(TJson& out) {
    if (m_Text[m_nPos] != '"') return false;
    out.eKind = TJson::jString;
    for (m_nPos++; m_nPos < m_Text.size(); m_nPos++) {
      const char c = m_Text[m_nPos];
      if (c == '"') return ++m_nPos, true;
      if (c == '\\' && m_nPos + 1 < m_Text.size())
        out.s += m_Text[++m_nPos];  // the manifest escapes nothing beyond quotes
      else
        out.s += c;
    }
    return false;
  }

  const std::string& m_Text;
  size_t m_nPos = 0;
};

// ---- A minimal CSV reader: quoted fields with doubled quotes, LF or CRLF rows --------
// Calls fn(nRow, nCol, field) for every non-empty field. The field points into text,
// or, for a quoted field that needs unescaping, into a buffer valid during the call.
template <class F>
void ReadCsv(std::string_view text, F&& fn) {
  std::string scratch;
  const size_t n = text.size();
  auto IsEnd = [&](size_t i) {
    return i >= n || text[i] == ',' || text[i] == '\n' || text[i] == '\r';
  };
  int nRow = 0, nCol = 0;
  size_t i = 0;
  while (i < n) {
    std::string_view field;
    if (text[i] == '"') {
      const size_t nClose = text.find('"', i + 1);
      if (nClose != std::string_view::npos && IsEnd(nClose + 1)) {
        field = text.substr(i + 1, nClose - i - 1);  // nothing to unescape
        i = nClose + 1;
      } else {
        scratch.clear();
        size_t j = i + 1;
        for (;;) {
          const size_t q = text.find('"', j);
          if (q == std::string_view::npos) {
            scratch.append(text.substr(j));
            i = n;
            break;
          }
          scratch.append(text.substr(j, q - j));
          if (q + 1 < n && text[q + 1] == '"') {
            scratch += '"';
            j = q + 2;
            continue;
          }
          i = q + 1;
          break;
        }
        const size_t nFrom = i;
        while (!IsEnd(i)) i++;
        scratch.append(text.substr(nFrom, i - nFrom));  // text after the closing quote
        field = scratch;
      }
    } else {
      const size_t nFrom = i;
      while (!IsEnd(i)) i++;
      field = text.substr(nFrom, i - nFrom);
    }
    if (!field.empty()) fn(nRow, nCol, field);
    if (i >= n) break;
    if (text[i] == ',') {
      nCol++;
    } else {
      if (text[i] == '\r' && i + 1 < n && text[i + 1] == '\n') i++;
      nRow++;
      nCol = 0;
    }
    i++;
  }
}

std::u16string Widen(const std::string& s) { return std::u16string(s.begin(), s.end()); }

bool ReadFile(const std::string& path, std::string& text) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::ostringstream ss;
  ss << in.rdbuf();
  text = ss.str();
  return true;
}

long ReadStatusKb(const char* pszKey) {
  std::ifstream in("/proc/self/status");
  std::string line;
  const size_t nKey = std::strlen(pszKey);
  while (std::getline(in, line))
    if (line.compare(0, nKey, pszKey) == 0) return std::atol(line.c_str() + nKey + 1);
  return 0;
}

double HeapMb() { return static_cast<double>(mallinfo2().uordblks) / (1024.0 * 1024.0); }

// Function names the formulas of a grid call that the engine cannot compute.
std::set<std::string> MissingFunctions(const std::string& csv) {
  std::set<std::string> seen, missing;
  ReadCsv(csv, [&](int, int, std::string_view f) {
    if (f[0] != '=') return;
    for (size_t i = 1; i < f.size(); i++) {
      if (!std::isalpha(static_cast<unsigned char>(f[i]))) continue;
      size_t j = i;
      while (j < f.size() && (std::isalnum(static_cast<unsigned char>(f[j])) || f[j] == '.')) j++;
      if (j < f.size() && f[j] == '(') {
        const std::string name(f.substr(i, j - i));
        if (seen.insert(name).second) {
          const std::u16string w = Widen(name);
          const TFunc* pFunc = TFunc::FindFunc(w.c_str(), static_cast<int>(w.size()), 1);
          if (!pFunc || pFunc->IsPending()) missing.insert(name);
        }
      }
      i = j;
    }
  });
  return missing;
}

std::string ValueText(CSheetBase* pSheet, int nRow, int nCol) {
  TValue value;
  pSheet->GetValue(nRow, nCol, &value);
  char sz[64];
  switch (value.GetValType()) {
    case TValue::vtReal: {
      double r = 0;
      value.GetValue(r);
      std::snprintf(sz, sizeof sz, "%.15g", r);
      return sz;
    }
    case TValue::vtEmpty:
      return "(empty)";
    case TValue::vtError:
      std::snprintf(sz, sizeof sz, "error %d", static_cast<int>(value.GetError()));
      return sz;
    default:
      std::snprintf(sz, sizeof sz, "(kind %d)", static_cast<int>(value.GetValType()));
      return sz;
  }
}

void RunWorkload(const std::string& dir, const TJson& workload) {
  const std::string name = workload.Get("name")->s;
  const double rFormulas = workload.Get("formulas")->r;
  std::printf("== %s: %s\n", name.c_str(), workload.Get("description")->s.c_str());
  std::string text;
  if (!ReadFile(dir + "/" + name + ".csv", text)) {
    std::printf("   skipped: %s/%s.csv not found\n", dir.c_str(), name.c_str());
    return;
  }
  const std::set<std::string> missing = MissingFunctions(text);
  if (!missing.empty()) {
    std::string list;
    for (const auto& m : missing) list += (list.empty() ? "" : ", ") + m;
    std::printf("   skipped: functions not computed yet: %s\n", list.c_str());
    return;
  }
  std::string().swap(text);

  const long nRssBefore = ReadStatusKb("VmRSS:");
  const double rHeapBefore = HeapMb();
  const auto t0 = TClock::now();
  const double rCpu0 = CpuMs();
  std::string csv;
  ReadFile(dir + "/" + name + ".csv", csv);
  auto pBook = std::make_unique<CBookBase>();
  pBook->AddToList();
  pBook->SetAutomaticRecalc(0);
  CSheetBase* pSheet = pBook->NewSheet(u"Sheet1");
  int nParseErrors = 0;
  std::u16string wide;
  ReadCsv(csv, [&](int nRow, int nCol, std::string_view f) {
    const TCell cell(nRow, nCol);
    if (f[0] == '=') {
      wide.assign(f.begin(), f.end());
      if (pSheet->SetFormula(cell, wide.c_str()) != 0) nParseErrors++;
      return;
    }
    // Plain numbers directly; anything else (signs, percentages, dates, text) as the
    // engine reads typed text.
    double v = 0;
    const auto [pEnd, ec] = std::from_chars(f.data(), f.data() + f.size(), v);
    if (ec == std::errc() && pEnd == f.data() + f.size()) {
      pSheet->SetNumber(cell, v);
      return;
    }
    wide.assign(f.begin(), f.end());
    pSheet->SetValueFromText(cell, wide.c_str(), ptEnglish);
  });
  std::string().swap(csv);
  const double rLoad = MsSince(t0);
  const double rLoadCpu = CpuMs() - rCpu0;

  auto t1 = TClock::now();
  double rCpu1 = CpuMs();
  pBook->InvalidateFormulasOrder(1);
  pBook->CheckFormulasOrder();
  const double rOrder = MsSince(t1);
  const double rOrderCpu = CpuMs() - rCpu1;
  t1 = TClock::now();
  rCpu1 = CpuMs();
  pBook->SetNeedsRecalcAllFormulas();
  pBook->Recalc();
  const double rCalc = MsSince(t1);
  const double rCalcCpu = CpuMs() - rCpu1;
  const double rTotal = MsSince(t0);
  const double rTotalCpu = CpuMs() - rCpu0;
  const double rRssMb = static_cast<double>(ReadStatusKb("VmRSS:") - nRssBefore) / 1024.0;
  const double rHeapMb = HeapMb() - rHeapBefore;

  std::printf("   formulas %.0f, parse errors %d\n", rFormulas, nParseErrors);
  std::printf("   load (CSV to cells, formulas parsed) %9.1f ms  (cpu %.1f ms)\n", rLoad, rLoadCpu);
  std::printf(
      "   order build                           %9.1f ms  (cpu %.1f ms, %.0f ns per formula)\n",
      rOrder, rOrderCpu, rOrderCpu * 1e6 / rFormulas);
  std::printf(
      "   full recalculation                    %9.1f ms  (cpu %.1f ms, %.0f ns per formula)\n",
      rCalc, rCalcCpu, rCalcCpu * 1e6 / rFormulas);
  std::printf("   load + order + calc                   %9.1f ms  (cpu %.1f ms)\n", rTotal,
              rTotalCpu);
  std::printf("   memory growth: resident %.1f MB, heap %.1f MB (%.0f heap bytes per formula)\n",
              rRssMb, rHeapMb, rHeapMb * 1024 * 1024 / rFormulas);

  // YARVBOOK_BENCH_REPEAT=N repeats the full recalculation N more times, untimed, so a
  // profiler run over the program sees mostly the calculation.
  if (const char* pszRepeat = std::getenv("YARVBOOK_BENCH_REPEAT")) {
    for (int i = std::atoi(pszRepeat); i > 0; i--) {
      pBook->SetNeedsRecalcAllFormulas();
      pBook->Recalc();
    }
  }
  // YARVBOOK_BENCH_ORDER_REPEAT=N rebuilds the order N more times, untimed, likewise.
  if (const char* pszRepeat = std::getenv("YARVBOOK_BENCH_ORDER_REPEAT")) {
    for (int i = std::atoi(pszRepeat); i > 0; i--) {
      pBook->InvalidateFormulasOrder(0);
      pBook->CheckFormulasOrder();
    }
  }

  // Minimal mode: switching it on asks for one recalculation of everything.
  pBook->SetMinimalRecalc(1);
  pBook->Recalc();
  // YARVBOOK_BENCH_NO_EDITS skips the edit scenarios (for instruction counts of the
  // full calculation under a simulator).
  const bool bEdits = std::getenv("YARVBOOK_BENCH_NO_EDITS") == nullptr;
  for (const TJson& edit : workload.Get("edits")->items) {
    if (!bEdits) break;
    const int nRow = static_cast<int>(edit.Get("row")->r);
    const int nCol = static_cast<int>(edit.Get("col")->r);
    double rSum = 0, rMax = 0;
    int n = 0;
    for (const TJson& v : edit.Get("values")->items) {
      const auto t = TClock::now();
      pSheet->SetNumber(TCell(nRow, nCol), v.r);
      pBook->Recalc();
      const double rMs = MsSince(t);
      rSum += rMs;
      rMax = std::max(rMax, rMs);
      n++;
    }
    std::printf("   edit %-18s %s (%4.0f dependants): mean %8.3f ms, max %8.3f ms\n",
                edit.Get("name")->s.c_str(), edit.Get("cell")->s.c_str(), edit.Get("dependents")->r,
                n ? rSum / n : 0.0, rMax);
  }
  for (const TJson& check : workload.Get("checks")->items)
    std::printf("   check %-8s = %s\n", check.Get("cell")->s.c_str(),
                ValueText(pSheet, static_cast<int>(check.Get("row")->r),
                          static_cast<int>(check.Get("col")->r))
                    .c_str());
  pBook.reset();
  CSharedCellTable::Get().RemoveAllSCT();
  std::printf("   peak resident set of the process so far: %.1f MB\n",
              static_cast<double>(ReadStatusKb("VmHWM:")) / 1024.0);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s DATA_DIR [WORKLOAD...]\n", argv[0]);
    return 2;
  }
  const std::string dir = argv[1];
  std::string manifestText;
  if (!ReadFile(dir + "/manifest.json", manifestText)) {
    std::fprintf(stderr, "%s/manifest.json not found (run gen_workloads.py --out %s)\n",
                 dir.c_str(), dir.c_str());
    return 2;
  }
  TJson manifest;
  CJsonReader reader(manifestText);
  if (!reader.Read(manifest) || !manifest.Get("workloads")) {
    std::fprintf(stderr, "manifest.json: not readable\n");
    return 2;
  }
  std::set<std::string> only(argv + 2, argv + argc);
  for (const TJson& workload : manifest.Get("workloads")->items)
    if (only.empty() || only.count(workload.Get("name")->s)) RunWorkload(dir, workload);
  return 0;
}
