#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "Csv.h"
#include "Utf8.h"

namespace {

using TRecords = std::vector<std::vector<std::u16string>>;

// Reads all of text; on malformed input the records read so far come back and
// pnErrorLine (when given) receives the line.
TRecords ReadAll(CCsvReader& reader, const char** ppszError = nullptr,
                 long* pnErrorLine = nullptr) {
  TRecords records;
  std::vector<std::u16string> fields;
  int n;
  while ((n = reader.ReadRecord(fields)) > 0)
    records.emplace_back(fields.begin(), fields.begin() + n);
  if (ppszError) *ppszError = n < 0 ? reader.GetError() : nullptr;
  if (pnErrorLine) *pnErrorLine = n < 0 ? reader.GetErrorLine() : 0;
  return records;
}

std::string Dump(const TRecords& records) {
  std::string str;
  for (const auto& record : records) {
    str += '[';
    for (const auto& field : record) {
      str += '<';
      AppendUtf8(str, field.data(), field.size());
      str += '>';
    }
    str += ']';
  }
  return str;
}

struct TGoodCase {
  const char* pszText;
  const char* pszRecords;  // Dump of what must be read
  bool bCrLf;
};

constexpr TGoodCase kGoodCases[] = {
    {"", "", false},
    {"a", "[<a>]", false},
    {"a,b\nc,d\n", "[<a><b>][<c><d>]", false},
    {"a,b\r\nc,d", "[<a><b>][<c><d>]", true},
    {"a\rb\r", "[<a>][<b>]", false},                  // lone CR ends a line
    {"\n\n", "[<>][<>]", false},                      // empty lines are one empty field each
    {"a,\n,b", "[<a><>][<><b>]", false},              // empty first and last fields
    {"\"a,b\",c", "[<a,b><c>]", false},               // comma in quotes
    {"\"say \"\"hi\"\"\"", "[<say \"hi\">]", false},  // doubled quotes
    {"\"\"", "[<>]", false},                          // quoted empty field
    {"\"l1\r\nl2\",x\r\n", "[<l1\r\nl2><x>]", true},  // line end kept inside quotes
    {"a\"b", "[<a\"b>]", false},                      // quote inside an unquoted field
    {"\xEF\xBB\xBF"
     "a,b",
     "[<a><b>]", false},                 // byte-order mark dropped
    {" a , b ", "[< a >< b >]", false},  // spaces kept
    {"\xC3\xA9,\xE2\x82\xAC,\xF0\x9F\x98\x80", "[<\xC3\xA9><\xE2\x82\xAC><\xF0\x9F\x98\x80>]",
     false},
    {"a\nb\r\n", "[<a>][<b>]", false},  // the first line end decides
};

TEST(CsvReader, ReadsWellFormedText) {
  for (const TGoodCase& c : kGoodCases) {
    SCOPED_TRACE(c.pszText);
    CCsvReader reader{std::string_view(c.pszText)};
    const char* pszError = nullptr;
    const TRecords records = ReadAll(reader, &pszError);
    EXPECT_EQ(nullptr, pszError);
    EXPECT_EQ(c.pszRecords, Dump(records));
    EXPECT_EQ(c.bCrLf, reader.HasCrLf());
    EXPECT_EQ(static_cast<int>(records.size()), reader.Records());
  }
}

struct TBadCase {
  const char* pszText;
  const char* pszError;
  long nLine;
  int nRecordsBefore;
};

constexpr TBadCase kBadCases[] = {
    {"\"abc", "quoted field not closed", 1, 0},
    {"a\n\"x\ny\nz", "quoted field not closed", 2, 1},  // the line where the quote opened
    {"\"a\"b", "text after a closing quote", 1, 0},
    {"a\xFF", "invalid UTF-8", 1, 0},
    {"a\n\x80", "invalid UTF-8", 2, 1},           // lone continuation byte
    {"\xC0\xAF", "invalid UTF-8", 1, 0},          // overlong "/"
    {"\xED\xA0\x80", "invalid UTF-8", 1, 0},      // encoded surrogate
    {"\xF4\x90\x80\x80", "invalid UTF-8", 1, 0},  // past U+10FFFF
    {"\xE2\x82", "invalid UTF-8", 1, 0},          // cut short by the end
    {"\"\n\n\xFF\"", "invalid UTF-8", 3, 0},      // inside quotes, lines counted
    {"\xEF\xBB", "invalid UTF-8", 1, 0},          // half a byte-order mark
};

TEST(CsvReader, RejectsMalformedText) {
  for (const TBadCase& c : kBadCases) {
    SCOPED_TRACE(c.pszText);
    CCsvReader reader{std::string_view(c.pszText)};
    const char* pszError = nullptr;
    long nLine = 0;
    const TRecords records = ReadAll(reader, &pszError, &nLine);
    ASSERT_NE(nullptr, pszError);
    EXPECT_STREQ(c.pszError, pszError);
    EXPECT_EQ(c.nLine, nLine);
    EXPECT_EQ(c.nRecordsBefore, static_cast<int>(records.size()));
    std::vector<std::u16string> fields;
    EXPECT_EQ(-1, reader.ReadRecord(fields));  // the failure sticks
  }
}

// The grid's bounds, one step each side: 256 fields and 65,536 records pass.
TEST(CsvReader, GridBounds) {
  const std::string strCols(255, ',');
  const std::string strRows(CCsvReader::kMaxRecords, '\n');
  const struct {
    std::string strText;
    size_t nRecords;
    size_t nFirstFields;
    const char* pszError;
    long nLine;
  } kCases[] = {
      {strCols, 1, 256, nullptr, 0},
      {"\n" + strCols + ",", 1, 1, "more than 256 columns", 2},
      {strRows, 65536, 1, nullptr, 0},
      {strRows + "x", 65536, 1, "more than 65536 rows", 65537},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.nLine);
    CCsvReader reader{std::string_view(c.strText)};
    const char* pszError = nullptr;
    long nLine = 0;
    const TRecords records = ReadAll(reader, &pszError, &nLine);
    ASSERT_EQ(c.nRecords, records.size());
    EXPECT_EQ(c.nFirstFields, records[0].size());
    EXPECT_STREQ(c.pszError, pszError);
    EXPECT_EQ(c.nLine, nLine);
  }
}

// Through a file, fields and UTF-8 sequences straddle the reader's buffer: the same
// records come back whichever byte falls on the boundary.
TEST(CsvReader, FileBufferBoundaries) {
  constexpr int kBuffer = 1 << 16;
  for (int nShift = 0; nShift < 6; ++nShift) {
    SCOPED_TRACE(nShift);
    std::string strText(kBuffer - 3 - nShift, 'x');
    strText += ",\"q\"\"\xF0\x9F\x98\x80\r\n\xE2\x82\xAC\",end\r\n";
    std::FILE* pFile = std::tmpfile();
    ASSERT_NE(nullptr, pFile);
    std::fwrite(strText.data(), 1, strText.size(), pFile);
    std::rewind(pFile);
    CCsvReader fileReader(pFile);
    CCsvReader memReader{std::string_view(strText)};
    const TRecords fromFile = ReadAll(fileReader);
    std::fclose(pFile);
    const TRecords fromMemory = ReadAll(memReader);
    ASSERT_EQ(1u, fromFile.size());
    EXPECT_EQ(fromMemory, fromFile);
    EXPECT_EQ(u"q\"\U0001F600\r\n\u20AC", fromFile[0][1]);
  }
}

struct TFieldCase {
  std::u16string_view field;
  const char* pszCsv;
};

const TFieldCase kFieldCases[] = {
    {u"", ""},
    {u"plain", "plain"},
    {u"a,b", "\"a,b\""},
    {u"say \"hi\"", "\"say \"\"hi\"\"\""},
    {u"l1\nl2", "\"l1\nl2\""},
    {u" lead", "\" lead\""},
    {u"trail ", "\"trail \""},
    {u"in side", "in side"},  // an inner space needs no quotes
    {u"=1+2", "=1+2"},
    {u"\u00E9\u20AC\U0001F600", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
    {std::u16string_view(u"a\xD800"
                         "b",
                         3),
     "a\xEF\xBF\xBD"
     "b"},  // unpaired surrogate
};

TEST(CsvWriter, QuotesWhatWouldNotReadBack) {
  for (const TFieldCase& c : kFieldCases) {
    SCOPED_TRACE(c.pszCsv);
    std::string str;
    AppendCsvField(str, c.field);
    EXPECT_EQ(c.pszCsv, str);
  }
}

}  // namespace
