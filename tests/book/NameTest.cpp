// Defined names: validity rules, built-in names, and the book's name table with
// sheet-level names found before book-level ones.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "base/Cell.h"
#include "book/BookBase.h"
#include "book/Name.h"
#include "book/NameList.h"
#include "book/SheetBase.h"
#include "formula/Formula.h"

namespace {

struct TValidCase {
  const char16_t* pwszName;
  bool bValid;
};

constexpr TValidCase kValidCases[] = {
    {u"Tax.Rate", true},     {u"_Rate?", true},   {u"\\Path", true},     {u"Rate2", true},
    {u"A1", false},                                                     // an address
    {u"a1", false},          {u"$A$1", false},    {u"IV65536", false},  // the last cell
    {u"IV65537", true},  // past the last row: not an address
    {u"IW1", true},      // past the last column
    {u"A0", true},           {u"", false},        {u"1Rate", false},  // starts with a digit
    {u".Rate", false},       {u"?Rate", false},    // "?" only after the first character
    {u"Tax Rate", false},                          // space
    {u"Tax-Rate", false},    {u"\uFF21bc", true},  // full-width A folds to a letter
    {u"\uFF3F", true},                             // full-width low line folds to "_"
    {u"\uE0BC", true},                             // first of the private-use ranges
    {u"\uEFFF", true},       {u"\uF100", true},   {u"\uF66E", true},     {u"\uF66F", false},
    {u"\uE0BB", false},      {u"\uF0FF", false},  {u"\u00C4rger", true},  // letters of any script
    {u"\u7A0E\u7387", true},
};

TEST(NameTest, ValidNameRules) {
  for (const TValidCase& c : kValidCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&c - kValidCases));
    EXPECT_EQ(c.bValid, CName::ValidName(c.pwszName));
  }
  EXPECT_FALSE(CName::ValidName(nullptr));
}

TEST(NameTest, BuiltInNamesMatchCaseSensitively) {
  CName name;
  name.SetName(u"Print_Area");
  EXPECT_TRUE(name.IsBuiltIn());
  EXPECT_EQ(6, name.GetBuiltInCode());
  EXPECT_EQ(std::u16string(u"Print_Area"), name.GetName());
  EXPECT_EQ(CName::kFormulaTypeBuiltInName, name.GetFormulaType());
  EXPECT_TRUE(name == u"PRINT_AREA");

  name.SetName(u"print_area");
  EXPECT_FALSE(name.IsBuiltIn());
  EXPECT_EQ(-1, name.GetBuiltInCode());
  EXPECT_EQ(std::u16string(u"print_area"), name.GetName());
  EXPECT_EQ(CName::kFormulaTypeName, name.GetFormulaType());

  for (int i = 0; i < CName::kNumBuiltInNames; ++i) {
    name.SetName(CName::GetBuiltInName(i));
    EXPECT_EQ(i, name.GetBuiltInCode());
  }
  EXPECT_EQ(std::u16string(u"_FilterDatabase"), CName::GetBuiltInName(13));
  EXPECT_EQ(std::u16string(u"UnsupportedBuiltinName"), CName::GetBuiltInName(14));
  EXPECT_EQ(std::u16string(u"UnsupportedBuiltinName"), CName::GetBuiltInName(-1));
}

TEST(NameTest, GetNameCopiesWithinTheBuffer) {
  CName name(u"Revenue");
  char16_t buf[8];
  EXPECT_EQ(7, name.GetName(buf, 8));
  EXPECT_EQ(std::u16string(u"Revenue"), buf);
  EXPECT_EQ(3, name.GetName(buf, 4));
  EXPECT_EQ(std::u16string(u"Rev"), buf);
  EXPECT_EQ(0, name.GetName(buf, 0));
}

TEST(NameTest, CloneAndCompare) {
  CName name(u"Rate", 2);
  std::unique_ptr<CName> pClone(static_cast<CName*>(name.Clone()));
  EXPECT_EQ(0, name.Compare(pClone.get()));
  EXPECT_EQ(2, pClone->GetSheet());
  pClone->SetSheet(CName::kBookLevel);
  EXPECT_NE(0, name.Compare(pClone.get()));
  CName other(u"RATE", 2);
  EXPECT_EQ(0, name.Compare(&other));  // names compare ignoring case
}

TEST(NameListTest, IndexesAreOneBased) {
  CNameList names;
  EXPECT_EQ(0, names.GetNumNames());
  EXPECT_EQ(nullptr, names.GetName(0));
  EXPECT_EQ(nullptr, names.GetName(1));
  EXPECT_EQ(1, names.AddName(new CName(u"First")));
  EXPECT_EQ(2, names.AddName(new CName(u"Second")));
  EXPECT_EQ(3, names.AddName(new CName(u"Third")));
  EXPECT_EQ(nullptr, names.GetName(0));
  EXPECT_EQ(nullptr, names.GetName(4));
  EXPECT_FALSE(names.DeleteName(0));
  EXPECT_FALSE(names.DeleteName(4));
  EXPECT_TRUE(names.DeleteName(2));
  EXPECT_EQ(2, names.GetNumNames());
  EXPECT_EQ(std::u16string(u"Third"), names.GetName(2)->GetName());
  EXPECT_EQ(2, names.FindName(u"third", CName::kBookLevel));
  EXPECT_EQ(0, names.FindName(u"Second", CName::kBookLevel));
}

TEST(NameListTest, SheetLevelBeforeBookLevel) {
  CNameList names;
  const int nBook = names.AddName(new CName(u"Rate"));
  const int nSheet1 = names.AddName(new CName(u"RATE", 1));
  const int nOnly3 = names.AddName(new CName(u"Local", 3));
  EXPECT_EQ(nSheet1, names.FindName(u"rate", 1));
  EXPECT_EQ(nBook, names.FindName(u"rate", 0));  // no name of sheet 0
  EXPECT_EQ(nBook, names.FindName(u"Rate", CName::kBookLevel));
  EXPECT_EQ(nOnly3, names.FindName(u"Local", 3));
  EXPECT_EQ(0, names.FindName(u"Local", 1));            // another sheet's name
  EXPECT_EQ(nSheet1, names.FindName(u"Rate+1", 4, 1));  // counted
  EXPECT_EQ(0, names.FindName(u"Ra", 2, 1));
  EXPECT_EQ(0, names.FindName(nullptr, 1));

  names.GetName(nBook)->SetChanged();
  names.GetName(nSheet1)->SetChanged();
  names.ResetChanged();
  EXPECT_FALSE(names.GetName(nBook)->IsChanged());
  EXPECT_FALSE(names.GetName(nSheet1)->IsChanged());
}

TEST(NameTest, SetFormulaFromText) {
  CBookBase book;
  CSheetBase* pSheet = book.NewSheet();
  ASSERT_NE(nullptr, pSheet);
  CName name(u"Rate");
  EXPECT_FALSE(name.IsChanged());
  EXPECT_EQ(0, name.SetFormula(&book, pSheet, TCell(), u"1+2", 1));
  ASSERT_NE(nullptr, name.GetFormula());
  EXPECT_LT(0, name.GetFormula()->GetPostfixLen());
  EXPECT_TRUE(name.IsChanged());
  const CFormula before(*name.GetFormula());

  name.ResetChanged();
  EXPECT_FALSE(name.IsChanged());
  EXPECT_TRUE(name.IsChangedSinceSave());                           // only saving clears this one
  EXPECT_NE(0, name.SetFormula(&book, pSheet, TCell(), u"1+", 1));  // a failed parse
  EXPECT_TRUE(name.IsChanged());
  ASSERT_NE(nullptr, name.GetFormula());
  EXPECT_TRUE(before == *name.GetFormula());  // keeps the old definition

  EXPECT_EQ(0, name.SetFormula(&book, pSheet, TCell(), u"", 1));  // removes it
  EXPECT_EQ(nullptr, name.GetFormula());

  name.SetFormula(&book, &before);
  ASSERT_NE(nullptr, name.GetFormula());
  EXPECT_TRUE(before == *name.GetFormula());
  std::unique_ptr<CName> pClone(static_cast<CName*>(name.Clone()));
  EXPECT_EQ(0, name.Compare(pClone.get()));
  pClone->SetFormula(&book, nullptr);
  EXPECT_NE(0, name.Compare(pClone.get()));
}

}  // namespace
