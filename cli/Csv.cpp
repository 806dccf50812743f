// The reader works one byte at a time over a refilled buffer, so records and UTF-8
// sequences may straddle buffer boundaries, and decodes straight into the caller's
// field strings: a large file costs one buffer plus the widest record.
#include "Csv.h"

#include "Utf8.h"

namespace {

// Appends the character whose UTF-8 sequence starts with byte c, reading the
// continuation bytes through next() (-1 at the end). Shortest forms only: overlong
// encodings, surrogates and code points past U+10FFFF are malformed, as are lone
// continuation bytes and sequences cut short.
template <class TNext>
bool DecodeSequence(int c, TNext next, std::u16string& str) {
  if (c < 0x80) {
    str += static_cast<char16_t>(c);
    return true;
  }
  int nMore;
  char32_t cp;
  char32_t cpMin;
  if (c >= 0xC2 && c <= 0xDF) {
    nMore = 1;
    cp = c & 0x1F;
    cpMin = 0x80;
  } else if (c >= 0xE0 && c <= 0xEF) {
    nMore = 2;
    cp = c & 0x0F;
    cpMin = 0x800;
  } else if (c >= 0xF0 && c <= 0xF4) {
    nMore = 3;
    cp = c & 0x07;
    cpMin = 0x10000;
  } else {
    return false;
  }
  for (; nMore > 0; --nMore) {
    const int cNext = next();
    if (cNext < 0 || (cNext & 0xC0) != 0x80) return false;
    cp = (cp << 6) | static_cast<char32_t>(cNext & 0x3F);
  }
  if (cp < cpMin || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
  AppendUtf16(str, cp);
  return true;
}

}  // namespace

CCsvReader::CCsvReader(std::FILE* pFile) : m_pFile(pFile), m_Buffer(kBufferSize) {}

CCsvReader::CCsvReader(std::string_view text)
    : m_pNext(text.data()), m_pEnd(text.data() + text.size()) {}

bool CCsvReader::Refill() {
  if (!m_pFile) return false;
  const std::size_t nRead = std::fread(m_Buffer.data(), 1, m_Buffer.size(), m_pFile);
  m_pNext = m_Buffer.data();
  m_pEnd = m_pNext + nRead;
  return nRead > 0;
}

int CCsvReader::Fail(const char* pszError, long nLine) {
  m_bFailed = true;
  m_pszError = pszError;
  m_nErrorLine = nLine;
  return -1;
}

void CCsvReader::EndLine(int c) {
  if (c == '\r' && Peek() == '\n') {
    Get();
    if (!m_bLineEndSeen) m_bCrLf = true;
  }
  m_bLineEndSeen = true;
  ++m_nLine;
}

bool CCsvReader::ReadUtf8(int c, std::u16string& str) {
  return DecodeSequence(
      c, [this] { return Get(); }, str);
}

int CCsvReader::ReadRecord(std::vector<std::u16string>& fields) {
  if (m_bFailed) return -1;
  if (!m_bStarted) {
    m_bStarted = true;
    // A byte-order mark is dropped only when complete; a partial one is malformed
    // UTF-8 and reported as such below.
    if (Peek() == 0xEF && m_pEnd - m_pNext >= 3 && static_cast<unsigned char>(m_pNext[1]) == 0xBB &&
        static_cast<unsigned char>(m_pNext[2]) == 0xBF)
      m_pNext += 3;
  }
  if (Peek() == kEnd) return 0;
  if (m_nRecords >= kMaxRecords) return Fail("more than 65536 rows", m_nLine);

  int nFields = 0;
  for (;;) {
    if (nFields >= kMaxFields) return Fail("more than 256 columns", m_nLine);
    if (static_cast<int>(fields.size()) <= nFields) fields.emplace_back();
    std::u16string& field = fields[nFields++];
    field.clear();

    int c = Get();
    if (c == '"') {
      const long nStartLine = m_nLine;
      for (;;) {
        c = Get();
        if (c == kEnd) return Fail("quoted field not closed", nStartLine);
        if (c == '"') {
          if (Peek() != '"') break;
          Get();
          field += u'"';
        } else if (c == '\r' || c == '\n') {
          // The line end is kept as written; only the count of lines moves on.
          field += static_cast<char16_t>(c);
          if (c == '\r' && Peek() == '\n') field += static_cast<char16_t>(Get());
          ++m_nLine;
        } else if (!ReadUtf8(c, field)) {
          return Fail("invalid UTF-8", m_nLine);
        }
      }
      c = Get();
      if (c != ',' && c != '\r' && c != '\n' && c != kEnd)
        return Fail("text after a closing quote", m_nLine);
    } else {
      while (c != ',' && c != '\r' && c != '\n' && c != kEnd) {
        if (!ReadUtf8(c, field)) return Fail("invalid UTF-8", m_nLine);
        c = Get();
      }
    }
    if (c == ',') continue;
    if (c != kEnd) EndLine(c);
    ++m_nRecords;
    return nFields;
  }
}

bool DecodeUtf8(std::string_view text, std::u16string& out) {
  out.clear();
  out.reserve(text.size());
  std::size_t i = 0;
  const auto next = [&text, &i]() -> int {
    return i < text.size() ? static_cast<unsigned char>(text[i++]) : -1;
  };
  while (i < text.size()) {
    if (!DecodeSequence(next(), next, out)) return false;
  }
  return true;
}

bool CsvNeedsQuotes(std::u16string_view field) {
  if (field.empty()) return false;
  if (field.front() == u' ' || field.front() == u'\t' || field.back() == u' ' ||
      field.back() == u'\t')
    return true;
  return field.find_first_of(u",\"\r\n") != std::u16string_view::npos;
}

void AppendCsvField(std::string& out, std::u16string_view field) {
  if (!CsvNeedsQuotes(field)) {
    AppendUtf8(out, field.data(), field.size());
    return;
  }
  out += '"';
  std::size_t nStart = 0;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] != u'"') continue;
    AppendUtf8(out, field.data() + nStart, i + 1 - nStart);
    out += '"';
    nStart = i + 1;
  }
  AppendUtf8(out, field.data() + nStart, field.size() - nStart);
  out += '"';
}
