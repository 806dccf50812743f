// CFormulaBase and CFormula: the postfix token stream every formula is held in.
//
// The stream uses the BIFF8 token codes and operand layouts, with three departures
// that every reader and writer keeps: tStr is a one-byte count and UTF-16 units with
// no flags byte; string items of array constants are a 16-bit count and UTF-16
// units; the legacy codes 0x1A and 0x1B have fixed operand sizes of 10 and 4 bytes.
// Multi-byte operands are little-endian and unaligned.
//
// Layout of one CFormula block:
//   [postfix tokens: postfix length bytes][added data: added-data length bytes]
// The added data holds the out-of-line parts of tArray (values), tMemArea (range
// lists) and some tExtended subtypes (entry lists), in the order of their tokens.
#pragma once

#include "base/Export.h"

class YARVBOOK_API CFormulaBase {
 public:
  // The kind of formula. Stored and compared as numbers. The kind decides how
  // relative references are stored (offsets for 3, 5, 6, 7, 8), whether every
  // reference is 3-D (1, 5, 6, 9), whether 3-D references are refused (3, 7, 8) and
  // which operand classes the parser writes (4, 7, 8 value; 5, 6, 9, 10 array).
  enum EFormulaType : unsigned char {
    ftCell = 0,
    ftChart = 1,
    ftArray = 2,
    ftShared = 3,
    ftCellValue = 4,
    ftName = 5,
    ftBuiltInName = 6,
    ftCondFormat = 7,
    ftDataValid = 8,
    ftExternName = 9,
    ftLinked = 10,
    ftLast = ftLinked,
  };

  // Base token codes (class bits folded). Stored in formulas: the numbers are part of
  // the format.
  enum TToken : unsigned char {
    tNone = 0x00,
    tExp = 0x01,
    tTbl = 0x02,
    tAdd = 0x03,
    tSub = 0x04,
    tMul = 0x05,
    tDiv = 0x06,
    tPower = 0x07,
    tConcat = 0x08,
    tLT = 0x09,
    tLE = 0x0A,
    tEQ = 0x0B,
    tGE = 0x0C,
    tGT = 0x0D,
    tNE = 0x0E,
    tIsect = 0x0F,
    tList = 0x10,
    tRange = 0x11,
    tUplus = 0x12,
    tUminus = 0x13,
    tPercent = 0x14,
    tParen = 0x15,
    tMissArg = 0x16,
    tStr = 0x17,
    tExtended = 0x18,
    tAttr = 0x19,
    tLegacy1A = 0x1A,
    tLegacy1B = 0x1B,
    tErr = 0x1C,
    tBool = 0x1D,
    tInt = 0x1E,
    tNum = 0x1F,
    tArray = 0x20,
    tFunc = 0x21,
    tFuncVar = 0x22,
    tName = 0x23,
    tRef = 0x24,
    tArea = 0x25,
    tMemArea = 0x26,
    tMemErr = 0x27,
    tMemNoMem = 0x28,
    tMemFunc = 0x29,
    tRefErr = 0x2A,
    tAreaErr = 0x2B,
    tRefN = 0x2C,
    tAreaN = 0x2D,
    tMemAreaN = 0x2E,
    tMemNoMemN = 0x2F,
    tNameX = 0x39,
    tRef3d = 0x3A,
    tArea3d = 0x3B,
    tRefErr3d = 0x3C,
    tAreaErr3d = 0x3D,
    tInvalid = 0xFF,
  };

  // Operand classes, added to a base code 0x20..0x3F.
  static constexpr unsigned char kClassRef = 0x20;
  static constexpr unsigned char kClassValue = 0x40;
  static constexpr unsigned char kClassArray = 0x60;

  // tAttr flags.
  static constexpr unsigned char kAttrVolatile = 0x01;
  static constexpr unsigned char kAttrIf = 0x02;
  static constexpr unsigned char kAttrChoose = 0x04;
  static constexpr unsigned char kAttrSkip = 0x08;
  static constexpr unsigned char kAttrSum = 0x10;

  // Column word flags of reference tokens; bits 0-7 are the column.
  static constexpr unsigned short kColRelative = 0x4000;
  static constexpr unsigned short kRowRelative = 0x8000;

  // Array-constant item types in the added data.
  static constexpr unsigned char kItemEmpty = 0x00;
  static constexpr unsigned char kItemNumber = 0x01;
  static constexpr unsigned char kItemString = 0x02;
  static constexpr unsigned char kItemBool = 0x04;
  static constexpr unsigned char kItemError = 0x10;

  // Folds the class bits: 0x00-0x3F stay, 0x40-0x5F and 0x60-0x7F map onto
  // 0x20-0x3F, 0x80-0xFF give 255 (invalid).
  static unsigned char TokenBase(unsigned char cCode) {
    return cCode < 0x80 ? m_Bases[cCode] : static_cast<unsigned char>(tInvalid);
  }

  // The formula types that store relative references as offsets from the base cell.
  static bool IsOffsetType(int nType) {
    return nType == ftShared || nType == ftName || nType == ftBuiltInName ||
           nType == ftCondFormat || nType == ftDataValid;
  }

  // BIFF8 error code of a value error (1 #NULL! .. 7 #N/A); any other error gives
  // 0x2A (#N/A).
  static unsigned char ErrorToBiff(int nError);
  // Value error (1..7) of a stored BIFF8 code; an unknown code reads as #N/A (7).
  static int BiffToError(unsigned char cCode);

  // A plain cursor into a token stream or its added data. Every read advances by the
  // size read, every write stores and advances. Nothing is bounds-checked: the
  // caller walks streams it wrote or validated.
  class YARVBOOK_API TPostfixPtr {
   public:
    TPostfixPtr() = default;
    explicit TPostfixPtr(unsigned char* p) : m_p(p) {}
    TPostfixPtr& operator=(unsigned char* p) {
      m_p = p;
      return *this;
    }
    unsigned char* Get() const { return m_p; }
    // Byte distance from other to this.
    int operator-(const TPostfixPtr& other) const { return static_cast<int>(m_p - other.m_p); }
    bool operator<(const TPostfixPtr& other) const { return m_p < other.m_p; }

    TToken GetToken() { return static_cast<TToken>(*m_p++); }
    unsigned char GetByte() { return *m_p++; }
    unsigned short GetWord() {
      const unsigned short w = static_cast<unsigned short>(m_p[0] | (m_p[1] << 8));
      m_p += 2;
      return w;
    }
    unsigned GetDWord();
    double GetReal();
    void GetReal(double& r) { r = GetReal(); }
    unsigned short GetRowNr() { return GetWord(); }
    unsigned short GetColNr() { return GetWord(); }
    void GetBytes(void* pDest, int nCount);
    // Copies nCount units to pDest, writing each double quote twice so the result can
    // stand between quotes in formula text. Returns the position behind the last unit
    // written; pDest needs room for 2 * nCount units.
    char16_t* GetStr(char16_t* pDest, int nCount);

    void Put(TToken t) { *m_p++ = static_cast<unsigned char>(t); }
    void Put(unsigned char c) { *m_p++ = c; }
    void Put(unsigned short w) {
      m_p[0] = static_cast<unsigned char>(w);
      m_p[1] = static_cast<unsigned char>(w >> 8);
      m_p += 2;
    }
    void Put(unsigned int n);
    void Put(double r);
    void PutRowNr(int nRow) { Put(static_cast<unsigned short>(nRow)); }
    void PutColNr(int nCol) { Put(static_cast<unsigned short>(nCol)); }
    void Put(const void* pSrc, int nCount);
    // Stores nCount units of source text, a doubled double quote as one. Returns the
    // number of units stored (the count a tStr carries).
    int PutStr(const char16_t* pSrc, int nCount);
    void Zero(int nCount);
    void Skip(int nCount) { m_p += nCount; }

    // Operand bytes of the token whose code was just read (the cursor stands behind
    // the token byte): the table size, or for tStr, tExtended and tAttr the size that
    // the leading operand bytes give. Other codes outside the table give 0.
    int SizeToken(unsigned char cBase) const {
      if (cBase >= sizeof m_bSizes) return 0;
      const unsigned char nSize = m_bSizes[cBase];
      return nSize != 255 ? nSize : SizeVariableToken(cBase);
    }
    // Steps over the operands of the token just read.
    void NextToken(unsigned char cBase) { m_p += SizeToken(cBase); }
    // Advances pAdded past the added-data item of the token just read (class bits may
    // still be set); nothing for tokens without one. The cursor must stand behind the
    // token byte (tExtended needs its subtype).
    void SkipAddedData(unsigned char cToken, TPostfixPtr* pAdded) const;
    // Steps over nCount whole tokens, keeping pAdded (may be null) in step.
    void SkipTokens(unsigned short nCount, TPostfixPtr* pAdded);

    // Fixed operand sizes by base code 0x00..0x3D; 255 where the size depends on the
    // operands.
    static constexpr unsigned char m_bSizes[62] = {
      0,   4,   4,  0,  0, 0,  0, 0,    // 0x00 -, tExp, tTbl, tAdd .. tPower
      0,   0,   0,  0,  0, 0,  0, 0,    // 0x08 tConcat .. tIsect
      0,   0,   0,  0,  0, 0,  0, 255,  // 0x10 tList .. tMissArg, tStr
      255, 255, 10, 4,  1, 1,  2, 8,    // 0x18 tExtended, tAttr, legacy, tErr, tBool, tInt, tNum
      7,   2,   3,  4,  4, 8,  6, 6,    // 0x20 tArray, tFunc, tFuncVar, tName, tRef, tArea, tMem*
      6,   2,   4,  8,  4, 8,  2, 2,    // 0x28 tMemNoMem, tMemFunc, tRefErr, tAreaErr, tRefN ..
      0,   0,   0,  0,  0, 0,  0, 0,    // 0x30 unused
      0,   6,   6,  10, 6, 10,          // 0x38 unused, tNameX, tRef3d, tArea3d, tRefErr3d, ..
    };

   private:
    int SizeVariableToken(unsigned char cBase) const;

    unsigned char* m_p = nullptr;
  };

 protected:
  static const unsigned char m_Bases[128];
};

// CFormula owns one token stream: postfix length, added-data length and one block of
// both parts (null when both are empty). Each part holds at most 65,535 bytes.
class YARVBOOK_API CFormula : public CFormulaBase {
 public:
  CFormula() = default;
  // Lengths above 65,535 are cut to 65,535.
  CFormula(const unsigned char* pPostfix, int nPostfixLen, const unsigned char* pAdded,
           int nAddedLen);
  CFormula(const CFormula& other);
  CFormula& operator=(const CFormula& other);
  ~CFormula();

  // A new heap copy owned by the caller.
  CFormula* Copy() const { return new CFormula(*this); }

  // Keeps the block when the total size is unchanged, else reallocates; copies both
  // parts. A total of 0 leaves no block. Lengths are cut to 65,535.
  void Set(const unsigned char* pPostfix, int nPostfixLen, const unsigned char* pAdded,
           int nAddedLen);
  // New tokens, the added data kept.
  void Replace(const unsigned char* pPostfix, int nPostfixLen);
  void Clear();
  // Exchanges the token streams of two formulas; nothing is copied.
  void Swap(CFormula& other) noexcept;

  // Equal when both lengths and every byte of the block are equal.
  bool operator==(const CFormula& other) const;
  bool operator!=(const CFormula& other) const { return !(*this == other); }

  unsigned char* GetPostfix() const { return m_pBuffer; }
  int GetPostfixLen() const { return m_nPostfixLen; }
  unsigned char* GetAddedData() const { return m_pBuffer ? m_pBuffer + m_nPostfixLen : nullptr; }
  int GetAddedDataLen() const { return m_nAddedLen; }

 private:
  unsigned short m_nPostfixLen = 0;
  unsigned short m_nAddedLen = 0;
  unsigned char* m_pBuffer = nullptr;  // owned; postfix then added data
};
