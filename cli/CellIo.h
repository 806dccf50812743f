// Cells of the CLI host's books to and from text: a field entered the way a user
// types it, and a cell's value written back as its display text or in raw form.
#pragma once

#include <string>

class CSheetBase;
class TCell;
class TValue;

// Why a formula was not entered: the parser's error code (1 to 10) and the index of
// the failing character in the text as entered, its "=" being index 0.
struct TFormulaFault {
  int nError = 0;
  int nPos = 0;
};

// Enters strText at cell: a text that begins with "=" as an A1 formula with English
// function names and "," between arguments; anything else through the English
// text-to-number reading (numbers, dates with a date format, TRUE/FALSE, error
// texts), else as text. An empty text enters nothing. Returns false when the formula
// does not parse: the cell then holds strText as text and *pFault says why. Throws
// CZelException when memory runs out.
bool EnterCellText(CSheetBase& sheet, const TCell& cell, const std::u16string& strText,
                   TFormulaFault* pFault);

// Parses a formula (with its leading "=") for cell of sheet without entering it.
// Returns true when it parses, else false with *pFault set.
bool CheckFormula(CSheetBase& sheet, const TCell& cell, const std::u16string& strText,
                  TFormulaFault* pFault);

// The cell's value as output text, replacing str. Raw: numbers in their shortest form
// that reads back to the same double ("0.1", "1e+20", "-3"), logicals TRUE or FALSE,
// errors their text, text as it is. Display: the sheet's formatted text, through the
// cell's number format. An empty position gives "".
void GetCellOutputText(const CSheetBase& sheet, int nRow, int nCol, bool bRaw, std::u16string& str);
// The raw form of one value, replacing str.
void GetRawValueText(const TValue& value, std::u16string& str);
