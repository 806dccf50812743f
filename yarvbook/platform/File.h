// CPelFile: the host file object that delimited text export appends bytes to. It
// writes either to a file on disk or to a byte vector (the clipboard, tests).
//
//   CPelFile file;
//   if (!file.Open("out.txt", CPelFile::modeCreate)) return false;
//   file.Write(pBytes, nBytes);
//   return file.Close();
#pragma once

#include <cstddef>
#include <cstdio>
#include <vector>

#include "base/Export.h"

class YARVBOOK_API CPelFile {
 public:
  enum EOpenMode { modeCreate = 0, modeAppend = 1 };  // truncate, or keep and append

  CPelFile() = default;
  // Appends to sink, which must outlive the file object. Already open.
  explicit CPelFile(std::vector<unsigned char>& sink) : m_pSink(&sink) {}
  CPelFile(const CPelFile&) = delete;
  CPelFile& operator=(const CPelFile&) = delete;
  // Closes a file still open.
  virtual ~CPelFile();

  // Opens the file at pszPath (UTF-8) for writing, closing any file open before.
  // False when it cannot be opened.
  bool Open(const char* pszPath, EOpenMode eMode);
  bool IsOpen() const { return m_pFile != nullptr || m_pSink != nullptr; }
  // Appends nBytes from pData. False when nothing is open or the write fails; a
  // failure is also remembered for Close.
  virtual bool Write(const void* pData, std::size_t nBytes);
  // Bytes written since Open (or construction over a sink).
  std::size_t GetLength() const { return m_nWritten; }
  // Flushes and closes; false when the close or any earlier write failed. The
  // object can then be opened again.
  bool Close();

 private:
  std::FILE* m_pFile = nullptr;                   // owned; closed by Close
  std::vector<unsigned char>* m_pSink = nullptr;  // memory target, not owned
  std::size_t m_nWritten = 0;
  bool m_bFailed = false;
};
