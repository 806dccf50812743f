#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "base/Range.h"
#include "platform/Archive.h"

namespace {

// Writes one of each type, extremes included, and reads them back.
void WriteSample(CPelArchive& ar) {
  ar << std::uint8_t{0xAB} << std::int16_t{-32768} << std::uint16_t{65535} << char16_t{0x20AC}
     << std::int32_t{-2} << std::uint32_t{0xDEADBEEF} << -0.1
     << std::numeric_limits<double>::infinity();
  ar.WriteText(u"Sheet\u00e9");
  ar.Write("xyz", 3);
}

void CheckSample(CPelArchive& ar) {
  std::uint8_t b;
  std::int16_t s;
  std::uint16_t w;
  char16_t c;
  std::int32_t n;
  std::uint32_t u;
  double r1, r2;
  std::u16string text;
  char raw[3];
  ar >> b >> s >> w >> c >> n >> u >> r1 >> r2;
  EXPECT_TRUE(ar.ReadText(text));
  EXPECT_TRUE(ar.Read(raw, 3));
  EXPECT_FALSE(ar.IsFailed());
  EXPECT_EQ(0xAB, b);
  EXPECT_EQ(-32768, s);
  EXPECT_EQ(65535, w);
  EXPECT_EQ(0x20AC, c);
  EXPECT_EQ(-2, n);
  EXPECT_EQ(0xDEADBEEFu, u);
  EXPECT_EQ(-0.1, r1);
  EXPECT_TRUE(std::isinf(r2));
  EXPECT_EQ(u"Sheet\u00e9", text);
  EXPECT_EQ(std::string("xyz"), std::string(raw, 3));
  EXPECT_EQ(0u, ar.Remaining());
}

TEST(Archive, MemoryRoundTripIsLittleEndian) {
  std::vector<unsigned char> bytes;
  CPelArchive out(bytes);
  EXPECT_TRUE(out.IsStoring());
  out << std::int32_t{0x01020304} << std::int16_t{0x0506} << 1.0;
  const std::vector<unsigned char> kExpected = {4, 3, 2, 1, 6, 5, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
  EXPECT_EQ(kExpected, bytes);

  bytes.clear();
  WriteSample(out);
  CPelArchive in(bytes.data(), bytes.size());
  EXPECT_TRUE(in.IsLoading());
  CheckSample(in);
}

TEST(Archive, ReadPastEndZeroesAndStaysFailed) {
  const unsigned char kBytes[] = {1, 2, 3, 4, 5, 6};
  CPelArchive in(kBytes, sizeof kBytes);
  std::int32_t n = -1;
  in >> n;
  EXPECT_EQ(0x04030201, n);
  in >> n;  // two bytes left
  EXPECT_EQ(0, n);
  EXPECT_TRUE(in.IsFailed());
  std::int16_t s = -1;
  in >> s;  // would fit, but the archive has failed
  EXPECT_EQ(0, s);
  double r = 1;
  in >> r;
  EXPECT_EQ(0.0, r);
  EXPECT_FALSE(in.Close());
}

TEST(Archive, BadInputFailsWithoutAllocatingOrReading) {
  const unsigned char kHugeText[] = {0xFF, 0xFF, 0xFF, 0x7F, 'a', 0};
  CPelArchive in(kHugeText, sizeof kHugeText);
  std::u16string text = u"old";
  EXPECT_FALSE(in.ReadText(text));
  EXPECT_TRUE(text.empty());

  std::vector<unsigned char> bytes;
  CPelArchive out(bytes);
  std::int32_t n = 0;
  out >> n;  // against the direction
  EXPECT_TRUE(out.IsFailed());
  CPelArchive empty(nullptr, 0);
  EXPECT_TRUE(empty.Read(&n, 0));
  EXPECT_FALSE(empty.Read(&n, 1));
}

TEST(Archive, FileRoundTripAndFailures) {
  const std::string path = testing::TempDir() + "yarvbook_archive_test.bin";
  {
    CPelArchive out(path.c_str(), CPelArchive::modeStore);
    ASSERT_FALSE(out.IsFailed());
    WriteSample(out);
    EXPECT_TRUE(out.Close());
  }
  {
    CPelArchive in(path.c_str(), CPelArchive::modeLoad);
    CheckSample(in);
    std::uint8_t b = 9;
    in >> b;
    EXPECT_EQ(0, b);
    EXPECT_TRUE(in.IsFailed());
  }
  std::remove(path.c_str());
  CPelArchive missing((path + ".none/x").c_str(), CPelArchive::modeLoad);
  EXPECT_TRUE(missing.IsFailed());
  CPelArchive unwritable((path + ".none/x").c_str(), CPelArchive::modeStore);
  EXPECT_TRUE(unwritable.IsFailed());
  EXPECT_FALSE(unwritable.Write("a", 1));
}

TEST(Archive, AddressRecords) {
  std::vector<unsigned char> bytes;
  CPelArchive out(bytes);
  TRange range(1, 2, 65535, 255);
  EXPECT_TRUE(range.SerializeCB(out));
  ASSERT_EQ(16u, bytes.size());  // row1, col1, row2, col2: four 32-bit integers
  EXPECT_EQ(2, bytes[4]);
  EXPECT_EQ(0xFF, bytes[8]);
  EXPECT_EQ(0xFF, bytes[9]);

  CPelArchive in(bytes.data(), bytes.size());
  TRange loaded;
  EXPECT_TRUE(loaded.SerializeCB(in));
  EXPECT_EQ(range, loaded);
  TCell cell(7, 7);
  EXPECT_FALSE(cell.SerializeCB(in));  // nothing left
  EXPECT_EQ(TCell(0, 0), cell);
}

}  // namespace
