// Text helpers on which formulas, C-code and the file readers rest.
// All positions are 1-based, as the callers count them.
#pragma once
#include <string>

namespace tz4 {

class TStringList;

// Characters from the 1-based start, at most length of them (a negative
// length means to the end). Raises "invalid string position" when start lies
// before the first character or beyond the end of the text.
std::string SubString(const std::string& text, int start, int length = -1);

// Removes leading and trailing blanks (character 32 only).
std::string TrimSpaces(const std::string& text);

// If a double quote stands at position, the position behind its closing
// quote (limit + 1 when there is none), else position. limit is the last
// position looked at.
int SkipQuoted(const std::string& text, int position, int limit);

// The first position from position on, up to limit, that holds no blank;
// limit + 1 when there is none.
int SkipBlanks(const std::string& text, int position, int limit);

// Splits "comp.param" at the first point; a leading name in double quotes may
// hold points ("\"A.B\".C" gives "A.B" and "C"). Both results are trimmed.
void SplitName(const std::string& text, std::string& left, std::string& right);

// Splits a parameter line into words: blanks and commas between words are
// skipped, quoted words lose their quotes, other words end at a tab, at a
// comma outside parentheses, or at an "=" that is not part of "<=", ">=",
// "==" or "!=". An "=" between words is skipped.
void SplitWords(const std::string& text, TStringList& list);

// The first word of the trimmed text up to a blank, "=" or ","; or the
// content of the quotes when the text begins with a double quote.
std::string FirstQuotedOrPlainWord(const std::string& text);

// The next name of an expression from position on: numbers and function
// names are skipped. start receives where the name begins, position moves
// behind it. Empty when the text is exhausted.
std::string NextIdentifier(const std::string& text, int& position, int& start);

// The text from position up to the next ";" outside double quotes; position
// moves behind the ";". A ";" right at the start is stepped over.
std::string NextStatement(const std::string& text, int& position);

// Recognises an assignment and returns its operator code (0 none, 20 "=",
// 17 "|=", 18 "^=", 19 "&=", 26 ">>=", 27 "<<=", 28 "+=", 29 "-=", 30 "*=",
// 31 "/=", 32 "%="). name gets the target (the whole text when there is no
// assignment), value the right side, index the text in a trailing "[...]"
// of the name ("-100" for "[]").
int SplitAssignment(const std::string& text, std::string& name, std::string& value,
                    std::string& index);

// The directory part including the last "/", "\\" or ":"; empty if none.
std::string PathOfFile(const std::string& text);

// From the last "." on when it stands behind the last "/", "\\", ":".
std::string ExtensionOfFile(const std::string& text);

// The system's message for its last error code.
std::string LastSystemErrorText();

// Compares two names without regard to case.
bool SameText(const std::string& a, const std::string& b);

}  // namespace tz4
