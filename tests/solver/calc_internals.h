// A look inside the solver for its own tests and benchmarks: the matrices,
// vectors and masks that devices reach only through the checked writes.
#pragma once
#include <cstdint>
#include <memory>
#include <vector>

#include "solver/calc.h"

namespace tz4 {

struct CCalcInternals {
  explicit CCalcInternals(CCalc& calc)
      : storage(calc.storage), A(calc.A), B(calc.B), maskA(calc.maskA), maskB(calc.maskB), c(calc.c), s(calc.s),
        sB(calc.sB), sPrev(calc.sPrev), rowMark(calc.rowMark), rowFree(calc.rowFree) {}
  std::unique_ptr<double[]>& storage;
  std::vector<double*>& A;
  std::vector<double*>& B;
  std::vector<uint8_t*>& maskA;
  std::vector<uint8_t*>& maskB;
  std::vector<double>& c;
  std::vector<double>& s;
  std::vector<double>& sB;
  std::vector<double>& sPrev;
  std::vector<uint8_t>& rowMark;
  std::vector<uint8_t>& rowFree;
};

inline CCalcInternals Raw(CCalc& calc) { return CCalcInternals(calc); }

}  // namespace tz4
