// CPelArchive: the host archive through which the engine stores and loads its own
// records (SerializeCB). An archive has one direction, fixed at construction: it
// stores (appends to a byte vector or writes a file) or loads (reads a byte span or
// a file). All values are little-endian.
//
//   std::vector<unsigned char> bytes;
//   CPelArchive out(bytes);
//   out << std::int32_t{7} << 2.5;
//   CPelArchive in(bytes.data(), bytes.size());
//   std::int32_t n; double r;
//   in >> n >> r;
//   if (in.IsFailed()) ...
//
// A failure (a read past the end, a file error, an operation against the direction)
// sets the failed mark, which stays: every later read yields zeros and every later
// write is dropped, so a record can be read field by field and checked once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "base/Export.h"

class YARVBOOK_API CPelArchive {
 public:
  enum EMode { modeStore = 0, modeLoad = 1 };

  // Stores by appending to buffer, which must outlive the archive.
  explicit CPelArchive(std::vector<unsigned char>& buffer);
  // Loads from nSize bytes at pData, which must stay valid for the archive's life.
  CPelArchive(const void* pData, std::size_t nSize);
  // Opens the file at pszPath (UTF-8): modeStore creates or truncates it, modeLoad
  // reads it. A file that cannot be opened leaves the archive failed.
  CPelArchive(const char* pszPath, EMode eMode);
  CPelArchive(const CPelArchive&) = delete;
  CPelArchive& operator=(const CPelArchive&) = delete;
  // Closes a file archive (see Close).
  virtual ~CPelArchive();

  bool IsStoring() const { return m_eMode == modeStore; }
  bool IsLoading() const { return m_eMode == modeLoad; }
  bool IsFailed() const { return m_bFailed; }
  // Bytes still to be read when loading; 0 when storing or failed.
  std::size_t Remaining() const;

  // Writes nBytes from pData. False (and failed) when not storing or on a write error.
  bool Write(const void* pData, std::size_t nBytes);
  // Reads nBytes into pData. When fewer remain, nothing is consumed, pData is zeroed,
  // the archive becomes failed and the result is false.
  bool Read(void* pData, std::size_t nBytes);

  CPelArchive& operator<<(std::uint8_t n) { return Put(n, 1); }
  CPelArchive& operator<<(std::int16_t n) { return Put(static_cast<std::uint16_t>(n), 2); }
  CPelArchive& operator<<(std::uint16_t n) { return Put(n, 2); }
  CPelArchive& operator<<(char16_t c) { return Put(c, 2); }
  CPelArchive& operator<<(std::int32_t n) { return Put(static_cast<std::uint32_t>(n), 4); }
  CPelArchive& operator<<(std::uint32_t n) { return Put(n, 4); }
  CPelArchive& operator<<(double r);

  CPelArchive& operator>>(std::uint8_t& n);
  CPelArchive& operator>>(std::int16_t& n);
  CPelArchive& operator>>(std::uint16_t& n);
  CPelArchive& operator>>(char16_t& c);
  CPelArchive& operator>>(std::int32_t& n);
  CPelArchive& operator>>(std::uint32_t& n);
  CPelArchive& operator>>(double& r);

  // Writes value when storing and reads into it when loading, so that one
  // SerializeCB body serves both directions: ar.Exchange(m_nRow).Exchange(m_nCol).
  template <class T>
  CPelArchive& Exchange(T& value) {
    return IsStoring() ? (*this << value) : (*this >> value);
  }
  // Raw bytes in either direction.
  bool ExchangeBytes(void* pData, std::size_t nBytes) {
    return IsStoring() ? Write(pData, nBytes) : Read(pData, nBytes);
  }

  // Text as a 32-bit unit count followed by the UTF-16 units.
  bool WriteText(const std::u16string& text);
  // Reads text written by WriteText. A count larger than what remains fails without
  // allocating it; text is then empty.
  bool ReadText(std::u16string& text);

  // Flushes and closes a file archive; false when any operation failed. Memory
  // archives just report their state.
  bool Close();

 private:
  CPelArchive& Put(std::uint32_t nValue, int nBytes);
  std::uint32_t Get(int nBytes);  // 0 once failed

  EMode m_eMode;
  bool m_bFailed = false;
  std::vector<unsigned char>* m_pOut = nullptr;  // memory store target, not owned
  const unsigned char* m_pIn = nullptr;          // memory load source, not owned
  std::size_t m_nInSize = 0;                     // bytes at m_pIn, or the file's size
  std::size_t m_nInPos = 0;                      // bytes consumed so far
  std::FILE* m_pFile = nullptr;                  // owned; closed by Close
};
