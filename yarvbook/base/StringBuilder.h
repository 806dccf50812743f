// CStringBuilder: four scratch buffers ("slots") reused across calls, and the
// conversions between UTF-16 and the host's multi-byte code pages that write into
// them. One builder per task: a slot's buffer is overwritten by the next request.
#pragma once

#include "base/Export.h"

class YARVBOOK_API CStringBuilder {
 public:
  static constexpr int kSlotCount = 4;

  CStringBuilder() = default;
  ~CStringBuilder();
  CStringBuilder(const CStringBuilder&) = delete;
  CStringBuilder& operator=(const CStringBuilder&) = delete;

  // The slot's buffer with room for nLength units and a terminator. When the slot is
  // too small its contents are dropped (never copied) and the capacity grows in steps
  // of 4096 units while below 4096 and of 512 after that, until it holds nLength + 1:
  // big buffers grow by the small step to limit waste. The pointer stays valid until
  // the next request on the same slot. Throws CZelException (memory) on failure,
  // leaving the slot empty.
  char16_t* GetBufW(int nLength, int nSlot = 0);
  // The same slot seen as bytes, with room for nLength bytes and a terminator.
  char* GetBufA(int nLength, int nSlot = 0);
  int GetCapacity(int nSlot) const { return m_anCapacity[nSlot]; }

  // Multi-byte text (nLength bytes, -1 through the terminator) in nCodePage to UTF-16
  // in slot nSlot. Returns the slot's text, or null when the code page is not
  // supported or the bytes do not convert; *pnOutLength (when given) gets its length.
  const char16_t* _Convert(const char* psz, int nLength, unsigned nCodePage, int nSlot = 0,
                           int* pnOutLength = nullptr);
  // UTF-16 (nLength units, -1 through the terminator) to nCodePage in slot nSlot.
  // Characters the code page lacks become its default character.
  const char* _Convert(const char16_t* pwsz, int nLength, unsigned nCodePage, int nSlot = 0,
                       int* pnOutLength = nullptr);
  // Text of a symbol font: each byte b becomes U+F000 + b, where symbol fonts keep
  // their glyphs in Unicode.
  const char16_t* ConvertSymbolChar(const char* psz, int nLength, int nSlot = 0,
                                    int* pnOutLength = nullptr);
  // Text stored with a font's character set (ANSI_CHARSET, HANGUL_CHARSET, ...):
  // symbol text as ConvertSymbolChar, otherwise through the set's code page. A set
  // whose code page the host lacks, or bytes that do not convert there, are read as
  // Latin-1 (one character per byte), so no text is lost outright.
  const char16_t* ConvertUnknowCode(const char* psz, int nLength, unsigned nCharSet, int nSlot = 0,
                                    int* pnOutLength = nullptr);

 private:
  char16_t* m_apBuf[kSlotCount] = {};  // owned
  int m_anCapacity[kSlotCount] = {};   // in units
};
