// Supporting books: stored-title encoding and its inverse, sheet and name lookup,
// identity of supporting books, and the book's tables.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "book/BookBase.h"
#include "extern/ExternName.h"
#include "extern/ExternSheet.h"
#include "extern/ExternTables.h"
#include "extern/SupBook.h"
#include "extern/SupSheet.h"

namespace {

// Writes control characters as <n> so that a failure shows them.
std::string Show(const std::u16string& text) {
  std::string out;
  for (char16_t c : text) {
    if (c < 0x20 || c > 0x7E) {
      out += "<" + std::to_string(static_cast<int>(c)) + ">";
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

// Each title with its stored form; decoding the stored form against the same
// referring path gives the title back (pwszDecoded where it differs).
struct TEncodeCase {
  const char16_t* pwszTitle;
  const char16_t* pwszReferring;
  std::u16string encoded;
  const char16_t* pwszDecoded = nullptr;
};

const TEncodeCase kEncodeCases[] = {
    {u"C:\\data\\book", nullptr, u"\1\1Cdata\3book"},
    {u"\\\\server\\share\\book", nullptr, u"\1\1@server\3share\3book"},
    {u"\\\\server\\share\\dir\\b", u"C:\\docs\\main.xls", u"\1\1@server\3share\3dir\3b"},
    {u"C:\\docs\\book.xls", u"C:\\docs\\main.xls", u"\1book.xls"},  // same directory
    {u"c:\\DOCS\\book.xls", u"C:\\docs\\main.xls", u"\1book.xls",   // ignoring case
     u"C:\\docs\\book.xls"},
    {u"C:\\docs\\sub\\b.xls", u"C:\\docs\\main.xls", u"\1sub\3b.xls"},
    {u"C:\\other\\b.xls", u"C:\\docs\\main.xls", u"\1\2other\3b.xls"},  // same drive
    {u"D:\\docs\\b.xls", u"C:\\docs\\main.xls", u"\1\1Ddocs\3b.xls"},
    {u"..\\up\\b.xls", nullptr, u"\1\4up\3b.xls"},
    {u"..\\..\\b.xls", nullptr, u"\1\4\4b.xls"},
    {u"C:\\a\\..\\b.xls", nullptr, u"\1\1Ca\3\4b.xls"},
    {u"\\root\\b.xls", nullptr, u"\1\2root\3b.xls"},
    {u"book.xls", nullptr, u"book.xls"},  // nothing to encode: stored as it is
    {u"http://host/b.xls", nullptr, std::u16string(u"\1\5\21http://host/b.xls")},
    {u"ftp://host/b.xls", u"C:\\docs\\main.xls", std::u16string(u"\1\5\20ftp://host/b.xls")},
    {u"", nullptr, u""},
};

TEST(SupBookTest, EncodedTitlesDecodeBack) {
  for (const TEncodeCase& c : kEncodeCases) {
    SCOPED_TRACE(Show(c.pwszTitle));
    const std::u16string encoded = CSupBook::EncodeTitle(c.pwszTitle, c.pwszReferring);
    EXPECT_EQ(Show(c.encoded), Show(encoded));
    char16_t buf[64];
    EXPECT_EQ(static_cast<int>(c.encoded.size()),
              CSupBook::GetEncodedTitle(c.pwszTitle, buf, 64, c.pwszReferring));
    EXPECT_EQ(Show(c.encoded), Show(buf));
    const std::u16string title = c.pwszDecoded != nullptr ? c.pwszDecoded : c.pwszTitle;
    EXPECT_EQ(Show(title), Show(CSupBook::DecodeTitle(
                               encoded.data(), static_cast<int>(encoded.size()), c.pwszReferring)));
    CSupBook book;
    book.SetEncodedTitle(encoded.data(), static_cast<int>(encoded.size()), c.pwszReferring);
    EXPECT_EQ(Show(title), Show(book.GetFullTitle()));
  }
}

TEST(SupBookTest, DecodingOddInput) {
  // Not starting with 1: taken as it is.
  EXPECT_EQ(u"plain", CSupBook::DecodeTitle(u"plain", 5, nullptr));
  // A relative title without a referring path stays relative.
  EXPECT_EQ(u"b.xls", CSupBook::DecodeTitle(u"\1b.xls", 6, nullptr));
  EXPECT_EQ(u"C:\\d\\b.xls", CSupBook::DecodeTitle(u"\1b.xls", 6, u"C:\\d\\main.xls"));
  // A URL length past the end is cut to the text present.
  EXPECT_EQ(u"ab", CSupBook::DecodeTitle(u"\1\5\11ab", 5, nullptr));
  // A volume mark at the very end adds nothing.
  EXPECT_EQ(u"", CSupBook::DecodeTitle(u"\1\1", 2, nullptr));
  EXPECT_EQ(u"", CSupBook::DecodeTitle(nullptr, 3, nullptr));
  EXPECT_EQ(u"", CSupBook::DecodeTitle(u"\1", 0, nullptr));
}

TEST(SupBookTest, OutputBufferLimits) {
  char16_t buf[13];
  // "\1\1Cdata\3book" is 12 units: 13 with the terminator.
  EXPECT_EQ(-1, CSupBook::GetEncodedTitle(u"C:\\data\\book", buf, 12, nullptr));
  EXPECT_EQ(u'\0', buf[0]);
  EXPECT_EQ(12, CSupBook::GetEncodedTitle(u"C:\\data\\book", buf, 13, nullptr));
  EXPECT_EQ(-1, CSupBook::GetEncodedTitle(u"C:\\data\\book", nullptr, 13, nullptr));
  EXPECT_EQ(-1, CSupBook::GetDecodedTitle(buf, 4, u"\1\1Cdata", 7, nullptr));
  EXPECT_EQ(7, CSupBook::GetDecodedTitle(buf, 8, u"\1\1Cdata", 7, nullptr));
  EXPECT_EQ(std::u16string(u"C:\\data"), buf);
}

TEST(SupBookTest, TitlesAndIdentity) {
  const CSupBook a(u"C:\\Data\\Book.xls");
  const CSupBook b(u"c:\\data\\book.XLS");
  const CSupBook c(u"C:\\data\\other.xls");
  const CSupBook self(nullptr, CSupBook::kKindSelf);
  const CSupBook self2(u"whatever", CSupBook::kKindSelf);
  EXPECT_EQ(0, a.Compare(&b));
  EXPECT_NE(0, a.Compare(&c));
  EXPECT_NE(0, a.Compare(&self));
  EXPECT_NE(0, self2.Compare(&self));  // titles still count without a referenced book
  EXPECT_FALSE(a.IsOpened());
  EXPECT_TRUE(self.IsOpened());
  EXPECT_TRUE(self.IsSelf());
  CSupBook book(u"C:\\data\\Book.xls");
  EXPECT_EQ(std::u16string(u"Book.xls"), book.GetBookTitle());
  book.SetLongTitle(u"Book (old copy)");
  EXPECT_EQ(std::u16string(u"Book (old copy)"), book.GetTitle());
  EXPECT_EQ(std::u16string(u"Bare.xls"), CSupBook(u"Bare.xls").GetBookTitle());
}

TEST(SupBookTest, SheetsAndNames) {
  CSupBook book(u"C:\\data\\Book.xls");
  int nIndex = -2;
  EXPECT_EQ(nullptr, book.FindSheet(u"Sheet1", &nIndex));
  EXPECT_EQ(-1, nIndex);
  book.AddSheet(u"Sheet1", &nIndex);
  EXPECT_EQ(0, nIndex);
  book.AddSheet(nullptr, &nIndex);
  EXPECT_EQ(1, nIndex);
  book.AddSheet(u"Data", &nIndex);
  EXPECT_EQ(2, nIndex);
  EXPECT_NE(nullptr, book.FindSheet(u"DATA", &nIndex));
  EXPECT_EQ(2, nIndex);
  EXPECT_NE(nullptr, book.FindSheet(nullptr, &nIndex));  // the nameless entry
  EXPECT_EQ(1, nIndex);
  EXPECT_EQ(nullptr, book.GetSheet(3));
  EXPECT_EQ(nullptr, book.GetSheet(-1));
  // Neither opened nor loaded: indexes pass through unchanged.
  EXPECT_EQ(7, book.CheckSheetIndex(7));

  book.AddExternName(u"Rate", 4, &nIndex);
  book.AddExternName(u"Tax+", 3, &nIndex);
  EXPECT_EQ(1, nIndex);
  EXPECT_NE(nullptr, book.FindExternName(u"TAX", 3, &nIndex));
  EXPECT_EQ(1, nIndex);
  EXPECT_EQ(nullptr, book.FindExternName(u"Ta", 2, &nIndex));
  EXPECT_EQ(-1, nIndex);
  EXPECT_EQ(std::u16string(u"Tax"), book.GetExternName(1)->GetName());

  std::unique_ptr<CSupBook> pClone(static_cast<CSupBook*>(book.Clone()));
  EXPECT_EQ(3, pClone->GetNumSheets());
  EXPECT_EQ(2, pClone->GetNumExternNames());
  CSupBook moved;
  moved.CopyAndClearSource(pClone.get());
  EXPECT_EQ(3, moved.GetNumSheets());
  EXPECT_EQ(0, pClone->GetNumSheets());
  EXPECT_EQ(0, pClone->GetNumExternNames());
  EXPECT_EQ(std::u16string(u"Data"), moved.GetSheet(2)->GetSheetName());
}

TEST(ExternTablesTest, EntriesAreSharedNotDuplicated) {
  CExternTables tables;
  const int nSelf = tables.MakeSelfSupBook();
  const int nBook = tables.MakeSupBook(u"C:\\a\\Book.xls", nullptr);
  EXPECT_EQ(nSelf, tables.MakeSelfSupBook());
  EXPECT_EQ(nBook, tables.MakeSupBook(u"c:\\A\\book.xls", nullptr));
  EXPECT_NE(nSelf, nBook);
  EXPECT_EQ(2, tables.GetNumSupBooks());
  EXPECT_TRUE(tables.GetSupBook(nSelf)->IsSelf());
  EXPECT_EQ(nullptr, tables.GetSupBook(2));

  EXPECT_EQ(-1, tables.FindExternSheet(nBook, 0, 0));
  const int nSpan = tables.MakeExternSheet(nBook, 0, 2);
  const int nNames =
      tables.MakeExternSheet(nBook, CExternSheet::kSheetForNames, CExternSheet::kSheetForNames);
  EXPECT_EQ(nSpan, tables.MakeExternSheet(nBook, 0, 2));
  EXPECT_EQ(nSpan, tables.FindExternSheet(nBook, 0, 2));
  EXPECT_EQ(-1, tables.FindExternSheet(nBook, 0, 1));
  EXPECT_EQ(-1, tables.FindExternSheet(nSelf, 0, 2));
  EXPECT_EQ(2, tables.GetNumExternSheets());
  EXPECT_TRUE(tables.GetExternSheet(nNames)->IsForNames());
  EXPECT_EQ(2, tables.GetExternSheet(nSpan)->GetLastSheet());
  EXPECT_EQ(nullptr, tables.GetExternSheet(-1));
  tables.Clear();
  EXPECT_EQ(0, tables.GetNumSupBooks());
  EXPECT_EQ(0, tables.GetNumExternSheets());
}

TEST(SupBookTest, CheckSheetIndexMapsThroughTheDataBook) {
  CBookBase data;
  ASSERT_NE(nullptr, data.NewSheet(u"One"));
  ASSERT_NE(nullptr, data.NewSheet(u"Two"));
  CSupBook book(u"C:\\data\\Book.xls");
  int nIndex = 0;
  book.AddSheet(u"two", &nIndex);
  book.AddSheet(u"Missing", &nIndex);
  book.AddSheet(nullptr, &nIndex);
  book.SetDataBook(&data);
  EXPECT_EQ(&data, book.GetSupDataBook());
  EXPECT_EQ(1, book.CheckSheetIndex(0));   // "two" is the data book's second sheet
  EXPECT_EQ(-1, book.CheckSheetIndex(1));  // no such sheet there
  EXPECT_EQ(-1, book.CheckSheetIndex(2));  // no name
  EXPECT_EQ(-1, book.CheckSheetIndex(3));  // past the list
  EXPECT_EQ(-1, book.CheckSheetIndex(-1));

  CSupBook self(nullptr, CSupBook::kKindSelf);  // opened: indexes pass through
  self.SetDataBook(&data);
  EXPECT_EQ(5, self.CheckSheetIndex(5));
}

}  // namespace
