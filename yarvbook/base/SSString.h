// Owning holders of UTF-16 text: CSSString (a growable buffer), CLiteString (text
// kept in a fixed buffer the caller provides) and CResourceString (a text of the
// host's string resources, loaded by number).
#pragma once

#include "base/Export.h"
#include "base/WideString.h"

class YARVBOOK_API CSSString {
 public:
  // Empty: points at g_wszEmpty and allocates nothing.
  CSSString() = default;
  // A copy of the first nLength units of pwsz (-1: all of it; null: empty).
  explicit CSSString(const char16_t* pwsz, int nLength = -1);
  CSSString(const CSSString& other);
  CSSString(CSSString&& other) noexcept;
  CSSString& operator=(const CSSString& other);
  CSSString& operator=(CSSString&& other) noexcept;
  ~CSSString();

  // Valid until the next change; never null.
  const char16_t* GetString() const { return m_pwsz; }
  operator const char16_t*() const { return m_pwsz; }  // NOLINT: reads like the text
  int GetLength() const { return m_nLength; }
  bool IsEmpty() const { return m_nLength == 0; }

  // All of these may throw CZelException (memory), leaving the text as it was.
  void Set(const char16_t* pwsz, int nLength = -1);
  // Appending grows the storage geometrically, so a run of appends stays linear.
  void Append(const char16_t* pwsz, int nLength = -1);
  void Append(char16_t c) { Append(&c, 1); }
  void Empty();
  // Room for nMinLength units and a terminator, the text kept; write, then call
  // ReleaseBuffer with the length written (-1: up to the first zero).
  char16_t* GetBuffer(int nMinLength);
  void ReleaseBuffer(int nNewLength = -1);
  // Hands the text over as a StringNewW buffer (free with StringDeleteW) or
  // g_wszEmpty, and leaves this holder empty.
  char16_t* Detach();

  // By code unit, and ignoring case (strcmpiW).
  int Compare(const char16_t* pwsz) const;
  int CompareNoCase(const char16_t* pwsz) const;

 protected:
  void Reserve(int nLength, bool bKeep);

  char16_t* m_pwsz = g_wszEmpty;  // owned, or g_wszEmpty when nothing is allocated
  int m_nLength = 0;
  int m_nCapacity = 0;  // units allocated, terminator included; 0 for g_wszEmpty
};

// Text in a fixed buffer owned by the caller, which must outlive the holder.
// Longer text is cut to the buffer, and the call that cut reports it.
class YARVBOOK_API CLiteString {
 public:
  // nBufChars counts the terminator's place too and must be at least 1. Empties the
  // buffer.
  CLiteString(char16_t* pBuf, int nBufChars);
  CLiteString(const CLiteString&) = delete;
  CLiteString& operator=(const CLiteString&) = delete;

  const char16_t* GetString() const { return m_pBuf; }
  operator const char16_t*() const { return m_pBuf; }  // NOLINT: reads like the text
  int GetLength() const { return m_nLength; }
  int GetCapacity() const { return m_nBufChars - 1; }
  bool IsEmpty() const { return m_nLength == 0; }

  // False when the text had to be cut.
  bool Set(const char16_t* pwsz, int nLength = -1);
  bool Append(const char16_t* pwsz, int nLength = -1);
  void Empty();

 private:
  char16_t* m_pBuf;  // not owned
  int m_nBufChars;
  int m_nLength = 0;
};

// A copy of resource text nId (the host's table first, then the English one); empty
// when neither has it. The copy outlives a later change of the resource table.
class YARVBOOK_API CResourceString : public CSSString {
 public:
  CResourceString() = default;
  explicit CResourceString(unsigned nId) { Load(nId); }

  // Replaces the text; false (and empty) when there is no such resource.
  bool Load(unsigned nId);
};
