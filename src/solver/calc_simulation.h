// The running solver as formulas see it: V(), I() and P() of a component read
// the present solution through this view.
#pragma once
#include <string>

#include "expr/context.h"

namespace tz4 {

class CCalc;
class CCmp;

class CCalcSimulation final : public CEvalSimulation {
 public:
  explicit CCalcSimulation(CCalc& calc) : calc_(calc) {}

  int TraceMask(CCmp* component) override;
  std::string ComponentName(CCmp* component) override;
  bool GetTraceInfo(CCmp* component, int kind, int& nodeA, int& nodeB, int& row,
                    double& resistance) override;
  double GetTraceValue(CCmp* component, int kind) override;
  double Solution(int index) override;

 private:
  CCalc& calc_;
};

}  // namespace tz4
