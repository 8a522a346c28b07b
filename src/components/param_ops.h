// Reading and writing a bound parameter as a number or a text.
//
// The forgiving entry SetFromExpression evaluates expressions and reports
// through an error text; GetNumber raises; the strict entries GetValue,
// SetValue, GetText and SetText return 0 or -1 and append their messages to
// the last-error text. Where a setter changes what a run computes, it sets
// the document's parameters-changed bit in *changeFlags (null: no flags).
#pragma once
#include <cstdint>
#include <string>

#include "components/param.h"

namespace tz4 {

class CEvalContext;
class CVarList;

// The bit of the document's change flags that a real parameter change sets.
inline constexpr uint32_t kParamsChangedFlag = 4;

// The short text for lists and reports: strings as they stand, "#VAL" for a
// failed formula else its value at 12 digits, enumerated names, "On"/"Off",
// "Yes"/"No", "High"/"Low", the table text, an abbreviated code text.
std::string GetDisplayText(const CParam& param);

// Applies a text as a user would enter it in a component list: trimmed,
// evaluated where the kind is numeric (names resolve through context,
// variables may be null). Never raises: a failure sets ok false, error to
// "Error : " and the message, and keeps the text stored.
void SetFromExpression(const CParam& param, std::string& error, const std::string& text,
                       CEvalContext* context, CVarList* variables, bool& ok);

// The parameter as a number; raises "Invalid value" for a failed formula and
// "Invalid type" for kinds without a number.
double GetNumber(const CParam& param);

// The strict entries: 0 (GetText: length + 1) or -1 with a message appended.
int GetValue(const CParam& param, double* out);
int SetValue(const CParam& param, double value, uint32_t* changeFlags);
// Copies as much of the full text as fits (always terminated when size > 0)
// and returns the full length + 1.
int GetText(const CParam& param, char* buffer, int size);
int SetText(const CParam& param, const char* text, CEvalContext* context, uint32_t* changeFlags);

// The full text that GetText delivers; false for kinds without one.
bool GetFullText(const CParam& param, std::string& out);

}  // namespace tz4
