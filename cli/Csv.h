// CCsvReader: comma-separated text (RFC 4180, UTF-8) read record by record, and the
// helpers that write it back. The engine reads no files itself; the CLI host turns
// files into cells through this reader.
//
// Accepted input: fields separated by ",", records ended by CRLF, LF or a lone CR;
// fields optionally in double quotes, where "" stands for one quote and commas and
// line ends are kept; an optional UTF-8 byte-order mark. Rejected: a quote left
// open at the end of input, anything but a separator or line end after a closing
// quote, bytes that are not well-formed UTF-8, more records or fields than the grid
// holds. A quote inside an unquoted field is kept as an ordinary character.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

class CCsvReader {
 public:
  // The grid's bounds: a record per row, a field per column.
  static constexpr int kMaxRecords = 65536;
  static constexpr int kMaxFields = 256;

  // Reads pFile (not owned; it must stay open while the reader is used).
  explicit CCsvReader(std::FILE* pFile);
  // Reads text held in memory; it must outlive the reader.
  explicit CCsvReader(std::string_view text);
  CCsvReader(const CCsvReader&) = delete;
  CCsvReader& operator=(const CCsvReader&) = delete;

  // Reads the next record into the first entries of fields and returns how many it
  // has (at least 1: an empty line is one empty field). The vector only grows and its
  // strings keep their storage, so reusing it allocates nothing once warm. Returns 0
  // at the end of input and -1 on malformed input (GetError, GetErrorLine).
  int ReadRecord(std::vector<std::u16string>& fields);

  // The reason for the last -1, in English, without the file or line.
  const char* GetError() const { return m_pszError; }
  // The 1-based line where the fault lies (for a quote left open, the line where the
  // quoted field began).
  long GetErrorLine() const { return m_nErrorLine; }
  // True when the first line ended with CRLF (a writer keeps the input's line ends).
  bool HasCrLf() const { return m_bCrLf; }
  // The number of records read so far.
  int Records() const { return m_nRecords; }

 private:
  static constexpr std::size_t kBufferSize = 1 << 16;
  static constexpr int kEnd = -1;

  int Peek() {
    if (m_pNext == m_pEnd && !Refill()) return kEnd;
    return static_cast<unsigned char>(*m_pNext);
  }
  int Get() {
    const int c = Peek();
    if (c != kEnd) ++m_pNext;
    return c;
  }
  bool Refill();
  // Appends the UTF-8 sequence led by byte c to str; false when it is malformed.
  bool ReadUtf8(int c, std::u16string& str);
  // Consumes a line end whose first byte c was read; counts the line.
  void EndLine(int c);
  int Fail(const char* pszError, long nLine);

  std::FILE* m_pFile = nullptr;
  std::vector<char> m_Buffer;
  const char* m_pNext = nullptr;
  const char* m_pEnd = nullptr;
  long m_nLine = 1;
  int m_nRecords = 0;
  bool m_bStarted = false;
  bool m_bLineEndSeen = false;
  bool m_bCrLf = false;
  bool m_bFailed = false;
  const char* m_pszError = nullptr;
  long m_nErrorLine = 0;
};

// Decodes well-formed UTF-8 into out (replacing its contents); false, with out
// undefined, for malformed input.
bool DecodeUtf8(std::string_view text, std::u16string& out);

// True when a field must be quoted to read back as the same text: it holds a comma,
// a quote, CR or LF, or begins or ends with a space or tab.
bool CsvNeedsQuotes(std::u16string_view field);
// Appends the field as CSV: quoted (inner quotes doubled) when CsvNeedsQuotes says so.
void AppendCsvField(std::string& out, std::u16string_view field);
