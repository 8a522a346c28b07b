// Parameter values and texts by kind: display, forgiving entry, number, and
// the strict entries behind the library's value and parameter functions.
#include "components/param_ops.h"

#include <cstring>
#include <exception>

#include "base/last_error.h"
#include "components/pwl.h"
#include "expr/evaluate.h"
#include "expr/formula.h"
#include "expr/numtext.h"
#include "base/raise.h"
#include "expr/text.h"
#include "expr/value.h"

namespace tz4 {

namespace {

bool IsStringKind(uint32_t kind) { return kind >= PK_NAME && kind <= PK_CODE_FILE; }

// The member behind a parameter, or null when the binding does not hold the
// type that the kind needs.
std::string* StringOf(const CParam& p) {
  auto* const* v = std::get_if<std::string*>(&p.Value);
  return v != nullptr ? *v : nullptr;
}
CFormula* FormulaOf(const CParam& p) {
  auto* const* v = std::get_if<CFormula*>(&p.Value);
  return v != nullptr ? *v : nullptr;
}
int32_t* IntOf(const CParam& p) {
  auto* const* v = std::get_if<int32_t*>(&p.Value);
  return v != nullptr ? *v : nullptr;
}
CEnumValue* EnumOf(const CParam& p) {
  auto* const* v = std::get_if<CEnumValue*>(&p.Value);
  return v != nullptr ? *v : nullptr;
}
CPWL* TableOf(const CParam& p) {
  auto* const* v = std::get_if<CPWL*>(&p.Value);
  return v != nullptr ? *v : nullptr;
}

int EnumCount(const CEnumValue& e) {
  int n = 0;
  if (e.Names != nullptr)
    while (e.Names[n] != nullptr) n++;
  return n;
}

std::string EnumName(const CEnumValue& e) {
  if (e.Index < 0 || e.Index >= EnumCount(e)) return std::string();
  return e.Names[e.Index];
}

const char* SwitchWord(uint32_t kind, bool on) {
  switch (kind) {
    case PK_ON_OFF:
      return on ? "On" : "Off";
    case PK_YES_NO:
      return on ? "Yes" : "No";
    default:
      return on ? "High" : "Low";
  }
}

// A code text cut for a one-line display: control characters become blanks
// and a long text ends in "...".
std::string CodeDisplay(const std::string& code) {
  if (code.empty()) return "<no code>";
  std::string text = code;
  if (text.size() == 1) return text;
  // The last character is left alone; after 33 characters the text is cut.
  size_t walked = 0;
  for (size_t i = 0; i + 1 < text.size(); i++) {
    if (static_cast<signed char>(text[i]) < 30) text[i] = ' ';
    if (++walked == 33) return text.substr(0, 30) + "...";
  }
  return text;
}

// A number kept at the 12 significant digits of its text form (a NaN, which
// has no text, stays as it is).
double RoundThroughText(double x) {
  const std::string text = FormatNumber(x, 12);
  return text.empty() ? x : TextToDouble(text);
}

// Evaluates a formula text ("=...") into its formula, refusing a formula that
// depends on itself through other parameters.
void UpdateFormula(CFormula& formula, CEvalContext* context) {
  ResolveCircularity(&formula, formula.Text, context);
  formula.Update(context);
}

double Evaluate(const std::string& text, CEvalContext* context, CVarList* variables) {
  return EvaluateExpression(text, context, variables, nullptr, nullptr, false);
}

// A switch value from an evaluated number: truncated, then clamped to 0..1.
int32_t ClampedSwitch(double x) {
  const int32_t n = TruncateToInt32(x);
  return n < 0 ? 0 : (n > 1 ? 1 : n);
}

void MarkChanged(uint32_t* changeFlags) {
  if (changeFlags != nullptr) *changeFlags |= kParamsChangedFlag;
}

int Fail(const std::string& message) {
  AppendError(message);
  return -1;
}

}  // namespace

std::string GetDisplayText(const CParam& param) {
  const uint32_t kind = param.Kind;
  if (IsStringKind(kind) || kind == PK_IC) {
    const std::string* s = StringOf(param);
    return s != nullptr ? *s : std::string();
  }
  switch (kind) {
    case PK_VALUE: {
      const CFormula* f = FormulaOf(param);
      if (f == nullptr) return std::string();
      return f->Invalid ? "#VAL" : FormatNumber(f->Value, 12);
    }
    case PK_ENUM: {
      const CEnumValue* e = EnumOf(param);
      return e != nullptr ? EnumName(*e) : std::string();
    }
    case PK_ON_OFF:
    case PK_YES_NO:
    case PK_HIGH_LOW: {
      const int32_t* n = IntOf(param);
      return n != nullptr ? SwitchWord(kind, *n != 0) : std::string();
    }
    case PK_PWL: {
      const CPWL* t = TableOf(param);
      return t != nullptr ? t->Text : std::string();
    }
    case PK_CODE: {
      const std::string* s = StringOf(param);
      return CodeDisplay(s != nullptr ? *s : std::string());
    }
    default:
      return std::string();
  }
}

void SetFromExpression(const CParam& param, std::string& error, const std::string& input,
                       CEvalContext* context, CVarList* variables, bool& ok) {
  ok = true;
  error.clear();
  const std::string text = TrimSpaces(input);
  const uint32_t kind = param.Kind;
  CFormula* formula = kind == PK_VALUE ? FormulaOf(param) : nullptr;
  try {
    if (IsStringKind(kind)) {
      if (std::string* s = StringOf(param)) *s = text;
      return;
    }
    switch (kind) {
      case PK_VALUE: {
        if (formula == nullptr) return;
        formula->Text = text;
        formula->Invalid = false;
        if (!text.empty() && text[0] == '=') {
          UpdateFormula(*formula, context);
          formula->Invalid = false;
          return;
        }
        // A plain expression is evaluated once and kept as a number of 12
        // significant digits; the text stays only while it fails.
        formula->Invalid = true;
        const double value = RoundThroughText(Evaluate(text, context, variables));
        formula->Text.clear();
        formula->Value = value;
        formula->Invalid = false;
        return;
      }
      case PK_IC: {
        std::string* s = StringOf(param);
        if (s == nullptr) return;
        if (text.empty()) {
          s->clear();
          return;
        }
        *s = text;
        *s = FormatNumber(Evaluate(text, context, variables), 12);
        return;
      }
      case PK_ENUM: {
        CEnumValue* e = EnumOf(param);
        if (e == nullptr) return;
        e->Index = 0;
        const int count = EnumCount(*e);
        for (int i = 0; i < count; i++) {
          if (SameText(e->Names[i], text)) {
            e->Index = i;
            return;
          }
        }
        const int32_t index = TruncateToInt32(Evaluate(text, context, variables));
        if (index >= 0 && index < count) e->Index = index;
        return;
      }
      case PK_ON_OFF:
      case PK_YES_NO: {
        int32_t* n = IntOf(param);
        if (n == nullptr) return;
        if (SameText(text, "On") || SameText(text, "Yes"))
          *n = 1;
        else if (SameText(text, "Off") || SameText(text, "No"))
          *n = 0;
        else
          *n = ClampedSwitch(Evaluate(text, context, variables));
        return;
      }
      case PK_HIGH_LOW: {
        // Here "Low" gives 1 and "High" 0, the reverse of every other entry;
        // files and lists depend on it.
        int32_t* n = IntOf(param);
        if (n == nullptr) return;
        if (SameText(text, "Low"))
          *n = 1;
        else if (SameText(text, "High"))
          *n = 0;
        else
          *n = ClampedSwitch(Evaluate(text, context, variables));
        return;
      }
      case PK_PWL:
        if (CPWL* t = TableOf(param)) t->Text = text;
        return;
      default:
        return;  // code and unknown kinds take no text here
    }
  } catch (const std::exception& e) {
    if (formula != nullptr) formula->Invalid = true;
    error = std::string("Error : ") + e.what();
    ok = false;
  }
}

double GetNumber(const CParam& param) {
  switch (param.Kind) {
    case PK_VALUE: {
      const CFormula* f = FormulaOf(param);
      if (f == nullptr) Raise("Invalid type");
      if (f->Invalid) Raise("Invalid value");
      return f->Value;
    }
    case PK_IC: {
      const std::string* s = StringOf(param);
      if (s == nullptr) Raise("Invalid type");
      return s->empty() ? 0.0 : TextToDouble(*s);
    }
    case PK_ENUM: {
      const CEnumValue* e = EnumOf(param);
      if (e == nullptr) Raise("Invalid type");
      return static_cast<double>(e->Index);
    }
    case PK_ON_OFF:
    case PK_YES_NO:
    case PK_HIGH_LOW: {
      const int32_t* n = IntOf(param);
      if (n == nullptr) Raise("Invalid type");
      return *n != 0 ? 1.0 : 0.0;
    }
    default:
      Raise("Invalid type");
  }
}

int GetValue(const CParam& param, double* out) {
  if (out == nullptr) return Fail("null pointer to value");
  switch (param.Kind) {
    case PK_VALUE: {
      const CFormula* f = FormulaOf(param);
      if (f == nullptr) break;
      if (f->Invalid) return Fail("formula error");
      *out = f->Value;
      return 0;
    }
    case PK_IC: {
      const std::string* s = StringOf(param);
      if (s == nullptr) break;
      if (s->empty()) return Fail("no IC");
      try {
        *out = TextToDouble(*s);
      } catch (const std::exception& e) {
        return Fail(e.what());
      }
      return 0;
    }
    case PK_ENUM:
    case PK_ON_OFF:
    case PK_YES_NO:
    case PK_HIGH_LOW:
      if (EnumOf(param) == nullptr && IntOf(param) == nullptr) break;
      *out = GetNumber(param);
      return 0;
    default:
      break;
  }
  return Fail("parameter type not supported");
}

int SetValue(const CParam& param, double value, uint32_t* changeFlags) {
  switch (param.Kind) {
    case PK_VALUE: {
      CFormula* f = FormulaOf(param);
      if (f == nullptr) break;
      const bool changed = f->Value != value;
      f->Value = value;
      f->Text.clear();
      f->Invalid = false;
      if (changed) MarkChanged(changeFlags);
      return 0;
    }
    case PK_IC: {
      std::string* s = StringOf(param);
      if (s == nullptr) break;
      *s = FormatNumber(value, 12);
      return 0;
    }
    case PK_ENUM:
    case PK_ON_OFF:
    case PK_YES_NO:
    case PK_HIGH_LOW: {
      int32_t* target = nullptr;
      if (CEnumValue* e = EnumOf(param))
        target = &e->Index;
      else
        target = IntOf(param);
      if (target == nullptr) break;
      // No range check: an index past the end of the names can be stored.
      const int32_t n = TruncateToInt32(value + 0.1);
      if (n != *target) MarkChanged(changeFlags);
      *target = n;
      return 0;
    }
    default:
      break;
  }
  return Fail("parameter type not supported");
}

bool GetFullText(const CParam& param, std::string& out) {
  const uint32_t kind = param.Kind;
  if (IsStringKind(kind) || kind == PK_IC) {
    const std::string* s = StringOf(param);
    if (s == nullptr) return false;
    out = *s;
    return true;
  }
  switch (kind) {
    case PK_VALUE: {
      const CFormula* f = FormulaOf(param);
      if (f == nullptr) return false;
      out = f->Text.empty() ? FormatNumber(f->Value, 12) : f->Text;
      return true;
    }
    case PK_ENUM:
      if (EnumOf(param) == nullptr) return false;
      out = GetDisplayText(param);
      return true;
    case PK_ON_OFF:
    case PK_YES_NO:
    case PK_HIGH_LOW:
      if (IntOf(param) == nullptr) return false;
      out = GetDisplayText(param);
      return true;
    case PK_PWL:
      if (TableOf(param) == nullptr) return false;
      out = GetDisplayText(param);
      return true;
    default:
      return false;
  }
}

int GetText(const CParam& param, char* buffer, int size) {
  std::string text;
  if (!GetFullText(param, text)) return Fail("parameter type not supported");
  const int length = static_cast<int>(text.size());
  if (buffer != nullptr && size > 0) {
    const int copy = length < size ? length : size - 1;
    std::memcpy(buffer, text.data(), static_cast<size_t>(copy));
    buffer[copy] = '\0';
  }
  return length + 1;
}

int SetText(const CParam& param, const char* input, CEvalContext* context, uint32_t* changeFlags) {
  if (input == nullptr) return Fail("NULL pointer");
  const std::string text = input;
  const uint32_t kind = param.Kind;
  if (IsStringKind(kind)) {
    std::string* s = StringOf(param);
    if (s == nullptr) return Fail("parameter type not supported");
    *s = text;
    MarkChanged(changeFlags);
    return 0;
  }
  switch (kind) {
    case PK_VALUE: {
      CFormula* f = FormulaOf(param);
      if (f == nullptr) break;
      if (text.empty()) return Fail("no text");
      if (text[0] == '=') {
        f->Text = text;
        try {
          UpdateFormula(*f, context);
        } catch (const std::exception& e) {
          f->Invalid = true;
          return Fail(e.what());
        }
        f->Invalid = false;
        MarkChanged(changeFlags);
        return 0;
      }
      double value = 0.0;
      try {
        value = TextToDouble(text);
      } catch (const std::exception& e) {
        return Fail(e.what());
      }
      f->Text.clear();
      f->Invalid = false;
      if (value != f->Value) MarkChanged(changeFlags);
      f->Value = value;
      return 0;
    }
    case PK_IC: {
      std::string* s = StringOf(param);
      if (s == nullptr) break;
      *s = text;
      return 0;
    }
    case PK_ENUM: {
      CEnumValue* e = EnumOf(param);
      if (e == nullptr) break;
      const int count = EnumCount(*e);
      for (int i = 0; i < count; i++) {
        if (text == e->Names[i]) {
          e->Index = i;
          MarkChanged(changeFlags);
          return 0;
        }
      }
      return Fail("text " + text + " not found");
    }
    case PK_ON_OFF:
    case PK_YES_NO:
    case PK_HIGH_LOW: {
      int32_t* n = IntOf(param);
      if (n == nullptr) break;
      const char* on = SwitchWord(kind, true);
      const char* off = SwitchWord(kind, false);
      if (text == on || text == off) {
        *n = text == on ? 1 : 0;
        MarkChanged(changeFlags);
        return 0;
      }
      return Fail("text " + text + " is not " + on + "/" + off);
    }
    case PK_PWL: {
      CPWL* t = TableOf(param);
      if (t == nullptr) break;
      t->Text = text;
      MarkChanged(changeFlags);
      return 0;
    }
    default:
      break;
  }
  return Fail("parameter type not supported");
}

}  // namespace tz4
