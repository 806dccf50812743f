#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/File.h"

namespace {

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(File, CreateAppendAndFailures) {
  const std::string path = testing::TempDir() + "yarvbook_file_test.txt";
  CPelFile file;
  EXPECT_FALSE(file.Write("x", 1));  // nothing open
  ASSERT_TRUE(file.Open(path.c_str(), CPelFile::modeCreate));
  EXPECT_TRUE(file.Write("a\tb\r\n", 5));
  EXPECT_EQ(5u, file.GetLength());
  EXPECT_TRUE(file.Close());
  EXPECT_FALSE(file.IsOpen());
  ASSERT_TRUE(file.Open(path.c_str(), CPelFile::modeAppend));
  EXPECT_TRUE(file.Write("c", 1));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ("a\tb\r\nc", ReadAll(path));
  ASSERT_TRUE(file.Open(path.c_str(), CPelFile::modeCreate));  // truncates
  EXPECT_TRUE(file.Close());
  EXPECT_EQ("", ReadAll(path));
  std::remove(path.c_str());
  EXPECT_FALSE(file.Open((path + ".none/x").c_str(), CPelFile::modeCreate));
}

TEST(File, MemorySink) {
  std::vector<unsigned char> sink = {'>'};
  CPelFile file(sink);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_TRUE(file.Write("ab", 2));
  EXPECT_TRUE(file.Close());
  EXPECT_FALSE(file.Write("c", 1));
  EXPECT_EQ((std::vector<unsigned char>{'>', 'a', 'b'}), sink);
}

}  // namespace
