// CZelMemFile: an append-only file in a movable global memory block, handed over as
// a block handle when complete (clipboard data, an embedded stream). The capacity
// doubles as writes need it, so a run of writes stays linear.
#pragma once

#include <cstddef>

#include "base/Export.h"
#include "platform/GlobalMemory.h"

class YARVBOOK_API CZelMemFile {
 public:
  static constexpr std::size_t kInitialSize = 16384;

  CZelMemFile() = default;
  // Frees the block unless Finish handed it over.
  ~CZelMemFile();
  CZelMemFile(const CZelMemFile&) = delete;
  CZelMemFile& operator=(const CZelMemFile&) = delete;

  // Allocates a zero-filled block of kInitialSize bytes and locks it; a block held
  // from before is freed. Throws CZelException (memory) on failure.
  void Init();
  // Appends nBytes from pData (Init first). When the block would overflow it grows
  // once, to twice the capacity or to exactly what this write needs when that is
  // more. Throws CZelException (memory) on failure; the bytes written so far stay.
  void Write(const void* pData, std::size_t nBytes);
  // Appends the nChars units of pwsz (no terminator).
  void _Write(const char16_t* pwsz, std::size_t nChars) { Write(pwsz, nChars * sizeof(char16_t)); }
  // Appends one zero byte, unlocks the block, shrinks it to exactly the bytes written
  // and hands it to the caller, who frees it with GlobalFree. Null when the shrink
  // fails (the block is then freed) or there is no block. Throws CZelException
  // (memory) when the zero byte cannot be appended. Afterwards the file holds nothing.
  [[nodiscard]] HGLOBAL Finish();

  std::size_t GetLength() const { return m_nLength; }
  std::size_t GetCapacity() const { return m_nCapacity; }
  // The locked contents, valid until the next Write or Finish.
  const unsigned char* GetData() const { return m_pData; }

 private:
  void Release();

  HGLOBAL m_hMem = nullptr;          // owned until Finish
  unsigned char* m_pData = nullptr;  // m_hMem locked
  std::size_t m_nCapacity = 0;
  std::size_t m_nLength = 0;
};
