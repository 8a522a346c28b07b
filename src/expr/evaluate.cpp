// The formula evaluator. It walks the text once, character by character,
// and keeps one stack of entries, each a value with the operator that
// follows it. After every operator the stack is reduced by priority, so
// that no token list, tree or stored parse exists.
#include "expr/evaluate.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <vector>

#include "base/error_scratch.h"
#include "expr/functions.h"
#include "expr/numtext.h"
#include "expr/opcodes.h"
#include "expr/operators.h"
#include "base/raise.h"
#include "expr/text.h"

namespace tz4 {

namespace {

constexpr int kLevelStep = 100;  // each parenthesis or bracket
constexpr int kUnaryPriority = 14;
constexpr int kFunctionPriority = 50;
constexpr int kIndexPriority = 60;
constexpr int kMaxLevel = 1000000000;  // keeps priorities within int range

struct Entry {
  TValue value;               // the operand left of the operator
  int op = 0;
  int priority = 0;
  CCmp* component = nullptr;  // set by the argument of V, I, P
  TVariable* variable = nullptr;  // set by an array name
  // The run of "," and ":" entries that ends here (when op is one of them):
  // its lowest index and lowest priority, so that a reduction can pass a
  // long argument list in one step.
  int runStart = 0;
  int runMinPriority = 0;
};

struct BinaryOperator {
  const char* text;
  int op;
  int priority;
  bool allowsUnary;  // a unary operator may follow directly
};

// Two-character operators first, so that the longest text wins.
const BinaryOperator kOperators[] = {
    {"||", OP_OROR, 4, true}, {"&&", OP_ANDAND, 5, true}, {"==", OP_EQ, 9, true},
    {"!=", OP_NE, 9, true},   {"<=", OP_LE, 10, true},    {">=", OP_GE, 10, true},
    {"<<", OP_SHL, 11, true}, {">>", OP_SHR, 11, true},   {",", OP_COMMA, 1, true},
    {"?", OP_QUESTION, 2, true}, {":", OP_COLON, 3, true}, {"|", OP_OR, 6, true},
    {"^", OP_XOR, 7, true},   {"&", OP_AND, 8, true},     {"<", OP_LT, 10, true},
    {">", OP_GT, 10, true},   {"+", OP_ADD, 12, false},   {"-", OP_SUB, 12, false},
    {"*", OP_MUL, 13, false}, {"/", OP_DIV, 13, false},   {"%", OP_MOD, 13, false},
};

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

int CastCode(const std::string& name) {
  if (SameText(name, "int")) return OP_CAST_INT;
  if (SameText(name, "int64")) return OP_CAST_INT64;
  if (SameText(name, "double") || SameText(name, "float")) return OP_CAST_DOUBLE;
  if (SameText(name, "complex")) return OP_CAST_COMPLEX;
  if (SameText(name, "bool")) return OP_CAST_BOOL;
  return 0;
}

class Evaluator {
 public:
  Evaluator(const std::string& text, CEvalContext* context, CVarList* variables,
            CEvalSimulation* simulation, bool integerArithmetic)
      : text_(text),
        context_(context),
        variables_(variables),
        simulation_(simulation),
        integer_(integerArithmetic) {
    stack_.reserve(20);
  }

  TValue Run();

 private:
  enum class State { Operand, Name, Quote, Number, Operator };

  [[noreturn]] void SyntaxError() { Raise("Syntax error"); }
  [[noreturn]] void RaiseWithItem(const char* head, const std::string& item) {
    ErrorScratch() = head;
    ErrorScratch() += item;
    ErrorScratch() += "'";
    Raise(ErrorScratch());
  }
  [[noreturn]] void ExpressionError() { RaiseWithItem("Expression error in '", text_); }

  char At(size_t pos) const { return pos < text_.size() ? text_[pos] : ' '; }

  void Push(const TValue& value, int op, int priority, CCmp* component = nullptr,
            TVariable* variable = nullptr);
  void SetRun(size_t index);
  void Reduce();
  void AfterReduce();
  void Operate(Entry& left, const Entry& top, size_t firstArgument, int count);

  void ReadOperandStart(size_t& pos);
  void EndName(size_t& pos);
  void ResolveName(const std::string& name);
  void ReadOperator(size_t& pos);
  void StartOperand(State state, size_t pos);

  const std::string& text_;
  CEvalContext* context_;
  CVarList* variables_;
  CEvalSimulation* simulation_;
  bool integer_;

  std::vector<Entry> stack_;
  State state_ = State::Operand;
  bool unaryAllowed_ = true;
  bool componentArgument_ = false;
  bool active_ = true;
  int level_ = 0;
  int incDec_ = INCDEC_NONE;
  size_t operandStart_ = 0;
  TValue operand_;
  CCmp* operandComponent_ = nullptr;
  TVariable* operandVariable_ = nullptr;
  TVariable* lastArray_ = nullptr;  // the array named last in the text
};

void Evaluator::SetRun(size_t index) {
  Entry& e = stack_[index];
  if (e.op != OP_COMMA && e.op != OP_COLON) return;
  if (index > 0 && (stack_[index - 1].op == OP_COMMA || stack_[index - 1].op == OP_COLON)) {
    e.runStart = stack_[index - 1].runStart;
    e.runMinPriority = std::min(stack_[index - 1].runMinPriority, e.priority);
  } else {
    e.runStart = static_cast<int>(index);
    e.runMinPriority = e.priority;
  }
}

void Evaluator::Push(const TValue& value, int op, int priority, CCmp* component,
                     TVariable* variable) {
  Entry e;
  e.value = value;
  e.op = op;
  e.priority = priority;
  e.component = component;
  e.variable = variable;
  stack_.push_back(e);
  SetRun(stack_.size() - 1);
}

// Reduces the stack while the entry under the top binds at least as tightly
// as the top. Comma and colon entries are passed over, counting the
// arguments of the function or the branches of the conditional below them.
void Evaluator::Reduce() {
  int k = 1;
  while (stack_.size() > 1) {
    const int n = static_cast<int>(stack_.size());
    if (n - k - 1 < 0) ExpressionError();
    const size_t leftIndex = static_cast<size_t>(n - 1 - k);
    Entry& top = stack_[static_cast<size_t>(n - 1)];
    Entry& left = stack_[leftIndex];
    if (left.priority < top.priority) break;
    if (left.op == OP_COMMA || left.op == OP_COLON) {
      // The whole run passes when none of it binds more loosely than the top.
      int skip = 1;
      if (left.runMinPriority >= top.priority) skip = static_cast<int>(leftIndex) - left.runStart + 1;
      const int bottomOp = stack_[leftIndex + 1 - static_cast<size_t>(skip)].op;
      k += skip;
      if (k > n - 1) {
        if (bottomOp == OP_COMMA) SyntaxError();
        ExpressionError();
      }
      continue;
    }
    if (left.op == OP_QUESTION) {
      TValue condition = left.value;
      ConvertValue(condition, VT_BOOL);
      const bool taken = condition.Type == VT_BOOL && condition.B;
      left.value = taken ? stack_[leftIndex + 1].value : top.value;
      active_ = true;
    } else {
      if (!active_) left.op = OP_NOP;
      Operate(left, top, leftIndex + 1, k);
    }
    left.op = top.op;
    left.priority = top.priority;
    stack_.resize(static_cast<size_t>(n - k));
    SetRun(leftIndex);
    k = 1;
  }
}

// A conditional just pushed decides whether the branches that follow are
// computed; a colon switches to the other branch.
void Evaluator::AfterReduce() {
  if (stack_.empty()) return;
  Entry& top = stack_.back();
  if (top.op == OP_QUESTION) {
    if (active_) {
      ConvertValue(top.value, VT_BOOL);
      active_ = top.value.Type == VT_BOOL && top.value.B;
    } else {
      top.op = OP_SKIPPED_QUESTION;
    }
  } else if (top.op == OP_COLON) {
    if (stack_.size() < 2) ExpressionError();
    if (stack_[stack_.size() - 2].op == OP_QUESTION) active_ = !active_;
  }
}

void Evaluator::Operate(Entry& left, const Entry& top, size_t firstArgument, int count) {
  const int op = left.op;
  if (op >= OP_OROR && op <= OP_MOD) {
    ApplyBinaryOperator(op, left.value, top.value, integer_);
  } else if (op >= OP_NOT && op <= OP_NEG) {
    ApplyUnaryOperator(op, left.value, top.value);
  } else if (op >= OP_FIRST_FUNCTION && op <= OP_LAST_FUNCTION) {
    std::vector<TValue> args;
    args.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; i++) args.push_back(stack_[firstArgument + static_cast<size_t>(i)].value);
    ApplyFunction(op, left.value, args.data(), count, stack_[firstArgument].component, context_,
                  simulation_);
  } else if (op == OP_INDEX) {
    TValue index = top.value;
    if (index.Type == VT_COMPLEX) Raise("Complex array index not allowed");
    ConvertValue(index, VT_INT);
    const int i = index.Type == VT_INT ? index.I32 : 0;
    if (i < 0) Raise("Negative array index");
    // The bound checked is that of the array named last in the text; the
    // element must also exist in the array that is read.
    const int size = lastArray_ != nullptr ? lastArray_->Size : 0;
    TVariable* array = left.variable;
    if (i >= size || array == nullptr || static_cast<size_t>(i) >= array->Values.size())
      Raise("Array index too high");
    ApplyIncDec(incDec_, &left.value, array->Values[static_cast<size_t>(i)]);
    incDec_ = INCDEC_NONE;
  }
  // OP_NOP and a skipped "?" compute nothing.
}

void Evaluator::StartOperand(State state, size_t pos) {
  state_ = state;
  operandStart_ = pos;
  unaryAllowed_ = false;
  operand_ = TValue::MakeInt(0);
  operandComponent_ = nullptr;
  operandVariable_ = nullptr;
}

void Evaluator::ReadOperandStart(size_t& pos) {
  const char c = At(pos);
  const char next = At(pos + 1);
  if (IsBlank(c) || c == '=' || c == '{') {
    pos++;
  } else if (c == '(' || c == '[') {
    if (level_ > kMaxLevel) SyntaxError();
    level_ += kLevelStep;
    unaryAllowed_ = true;
    pos++;
  } else if (c == '!' || c == '~') {
    if (!unaryAllowed_) SyntaxError();
    Push(TValue::MakeInt(0), c == '!' ? OP_NOT : OP_INV, kUnaryPriority + level_);
    unaryAllowed_ = false;
    pos++;
  } else if (c == '+' || c == '-') {
    if (next == c) {
      incDec_ = c == '+' ? INCDEC_PRE_INC : INCDEC_PRE_DEC;
      pos += 2;
    } else {
      if (!unaryAllowed_) SyntaxError();
      if (c == '-') Push(TValue::MakeInt(0), OP_NEG, kUnaryPriority + level_);
      unaryAllowed_ = false;
      pos++;
    }
  } else if (IsDigit(c) || c == '.') {
    StartOperand(componentArgument_ ? State::Name : State::Number, pos);
    pos++;
  } else if (IsLetter(c) || c == '_') {
    StartOperand(State::Name, pos);
    pos++;
  } else if (c == '"') {
    StartOperand(State::Quote, pos);
    pos++;
  } else if (c == ')') {
    // An empty pair of parentheses stands for one argument of value 0.
    StartOperand(State::Operator, pos);
    componentArgument_ = false;
    level_ -= kLevelStep;
    if (level_ < 0) SyntaxError();
    pos++;
  } else {
    SyntaxError();
  }
}

void Evaluator::EndName(size_t& pos) {
  const char c = At(pos);
  std::string name = TrimSpaces(text_.substr(operandStart_, std::min(pos, text_.size()) - operandStart_));
  if (c == '(') {
    const int code = FindFunction(name);
    if (code == 0) RaiseWithItem("Unknown function '", name);
    if (code >= 69 && code <= 71) {
      if (simulation_ == nullptr) {
        ErrorScratch() = "Function '";
        ErrorScratch() += code == 69 ? "V" : code == 70 ? "I" : "P";
        ErrorScratch() += "' not allowed";
        Raise(ErrorScratch());
      }
      componentArgument_ = true;
    }
    Push(TValue::MakeInt(0), code, kFunctionPriority + level_);
    state_ = State::Operand;  // the "(" is read again
    return;
  }
  if (c == '[') {
    TVariable* array = variables_ != nullptr ? variables_->Find(name) : nullptr;
    if ((array == nullptr || array->Size < 1) && context_ != nullptr) array = context_->FindArray(name);
    if (array == nullptr || array->Size < 1) RaiseWithItem("Unknown array '", name);
    lastArray_ = array;
    Push(TValue::MakeArray(array), OP_INDEX, kIndexPriority + level_, nullptr, array);
    state_ = State::Operand;  // the "[" is read again
    return;
  }
  if (c == ')') {
    const int cast = CastCode(name);
    if (cast != 0) {
      level_ -= kLevelStep;
      if (level_ < 0) SyntaxError();
      TValue zero;
      zero.Type = cast == OP_CAST_INT ? VT_INT : cast == OP_CAST_INT64 ? VT_INT64
                  : cast == OP_CAST_DOUBLE ? VT_DOUBLE : cast == OP_CAST_COMPLEX ? VT_COMPLEX
                  : VT_BOOL;
      Push(zero, cast, kUnaryPriority + level_);
      state_ = State::Operand;
      pos++;
      return;
    }
  }
  if ((c == '+' || c == '-') && At(pos + 1) == c && pos + 1 < text_.size()) {
    incDec_ = c == '+' ? INCDEC_POST_INC : INCDEC_POST_DEC;
    pos += 2;
  }
  ResolveName(name);
  state_ = State::Operator;
}

void Evaluator::ResolveName(const std::string& name) {
  // The argument of V, I or P is this name alone.
  const bool componentArgument = componentArgument_;
  componentArgument_ = false;
  // 1. Constants; nothing may shadow them.
  if (SameText(name, "false")) {
    operand_ = TValue::MakeBool(false);
    return;
  }
  if (SameText(name, "true")) {
    operand_ = TValue::MakeBool(true);
    return;
  }
  if (SameText(name, "high") || SameText(name, "low")) {
    const bool high = SameText(name, "high");
    if (context_ != nullptr)
      operand_ = TValue::MakeDouble(high ? context_->LogicHigh() : context_->LogicLow());
    else
      operand_ = TValue::MakeDouble(high ? CEvalContext().LogicHigh() : CEvalContext().LogicLow());
    return;
  }
  if (SameText(name, "pi")) {
    operand_ = TValue::MakeDouble(kFormulaPi);
    return;
  }
  if (SameText(name, "rad")) {
    operand_ = TValue::MakeDouble(57.295779513260925);
    return;
  }
  // 2. Variables of a code block.
  if (variables_ != nullptr) {
    if (TVariable* var = variables_->Find(name)) {
      if (var->Size >= 1) {
        operand_ = TValue::MakeArray(var);
        operandVariable_ = var;
      } else {
        ApplyIncDec(incDec_, &operand_, var->Values[0]);
        incDec_ = INCDEC_NONE;
      }
      return;
    }
  }
  // 3. The component named by the argument of V, I or P.
  if (componentArgument) {
    CCmp* component = context_ != nullptr ? context_->FindComponent(name) : nullptr;
    if (component == nullptr) RaiseWithItem("Unknown name '", name);
    operandComponent_ = component;
    return;
  }
  // 4. A component parameter or code-block variable by dotted name.
  if (context_ != nullptr) {
    std::string left, right;
    SplitName(name, left, right);
    if (!left.empty() && !right.empty()) {
      TValue found;
      if (context_->FindValue(name, found)) {
        if (incDec_ == INCDEC_PRE_INC || incDec_ == INCDEC_POST_INC)
          Raise("Operator '++' not allowed for component parameter");
        if (incDec_ == INCDEC_PRE_DEC || incDec_ == INCDEC_POST_DEC)
          Raise("Operator '--' not allowed for component parameter");
        operand_ = found;
        return;
      }
    }
  }
  // 5. Anything else must be a number.
  ParseNumber(name, operand_, true);
}

void Evaluator::ReadOperator(size_t& pos) {
  const char c = At(pos);
  if (pos >= text_.size()) {
    // The virtual blank behind the text ends the expression.
    Push(operand_, OP_END, -1, operandComponent_, operandVariable_);
    state_ = State::Operand;
    Reduce();
    AfterReduce();
    pos++;
    return;
  }
  if (IsBlank(c) || c == ';') {
    pos++;
    return;
  }
  if (c == ')' || c == ']') {
    level_ -= kLevelStep;
    if (level_ < 0) SyntaxError();
    pos++;
    if (c == ']' && (At(pos) == '+' || At(pos) == '-') && At(pos + 1) == At(pos) &&
        pos + 1 < text_.size()) {
      incDec_ = At(pos) == '+' ? INCDEC_POST_INC : INCDEC_POST_DEC;
      pos += 2;
    }
    return;
  }
  for (const BinaryOperator& o : kOperators) {
    const size_t length = o.text[1] == '\0' ? 1 : 2;
    if (text_.compare(pos, length, o.text) != 0) continue;
    Push(operand_, o.op, o.priority + level_, operandComponent_, operandVariable_);
    state_ = State::Operand;
    unaryAllowed_ = o.allowsUnary;
    pos += length;
    Reduce();
    AfterReduce();
    return;
  }
  if (c == '=') Raise("Operator '=' not allowed");
  if (c == '!') Raise("Unknown operator '!'");
  RaiseWithItem("Unknown operator '", std::string(1, c));
}

TValue Evaluator::Run() {
  const size_t end = text_.size();  // the virtual blank
  size_t pos = 0;
  while (pos <= end) {
    switch (state_) {
      case State::Operand: ReadOperandStart(pos); break;
      case State::Quote:
        if (pos >= end) {
          // An unclosed quote ends with the text.
          state_ = State::Name;
          EndName(pos);
          break;
        }
        if (At(pos) == '"') state_ = State::Name;
        pos++;
        break;
      case State::Name: {
        const char c = At(pos);
        if (pos < end && (IsLetter(c) || IsDigit(c) || c == '_' || c == ' ' || c == '.')) {
          pos++;
        } else if (pos < end && c == '"') {
          state_ = State::Quote;
          pos++;
        } else {
          EndName(pos);
        }
        break;
      }
      case State::Number: {
        const char c = At(pos);
        if (pos < end && (IsLetter(c) || IsDigit(c) || c == '.')) {
          pos++;
          if ((c == 'e' || c == 'E') && (At(pos) == '+' || At(pos) == '-') && pos < end) {
            const char second = At(operandStart_ + 1);
            const bool prefixed = At(operandStart_) == '0' &&
                                  (second == 'x' || second == 'X' || second == 'b' || second == 'B');
            if (!prefixed) pos++;
          }
        } else {
          ParseNumber(TrimSpaces(text_.substr(operandStart_, pos - operandStart_)), operand_, true);
          state_ = State::Operator;
        }
        break;
      }
      case State::Operator: ReadOperator(pos); break;
    }
  }
  if (stack_.empty()) return TValue::MakeDouble(0.0);
  return stack_.front().value;
}

}  // namespace

double EvaluateExpression(const std::string& text, CEvalContext* context, CVarList* variables,
                          CEvalSimulation* simulation, TValue* result, bool integerArithmetic) {
  if (SameText(text, "inf") || SameText(text, "-inf")) {
    const double inf = std::numeric_limits<double>::infinity();
    const double x = text[0] == '-' ? -inf : inf;
    if (result != nullptr) *result = TValue::MakeDouble(x);
    return x;
  }
  Evaluator evaluator(text, context, variables, simulation, integerArithmetic);
  TValue value = evaluator.Run();
  if (result != nullptr) *result = value;
  return ValueToDouble(value);
}

double EvaluateInteger(const std::string& text, CEvalContext* context, CVarList* variables,
                       CEvalSimulation* simulation, TValue* result) {
  return EvaluateExpression(text, context, variables, simulation, result, true);
}

}  // namespace tz4
