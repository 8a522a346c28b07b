// The solver settings that a circuit file carries: the attributes of the
// "Calc" element and the stored time step on "Tran"/"Settings".
#pragma once
#include <cstdint>

namespace tz4 {

class CXmlNode;

struct CDocSettings {
  double step = 0.001;  // stored time step of the transient, seconds ("step")
  double zero = 1e-11;  // numerical zero of the solver ("zero")
  double kmin = 0.01;   // smallest step as a fraction of the largest ("kmin")
  bool nsr = false;     // ("nsr")
  bool os = false;      // ("os")
  double low = 0.0;     // logic low level ("low")
  double high = 5.0;    // logic high level ("high")
  double thr = 2.5;     // logic threshold ("thr")
  int32_t timeout = 0;  // time limit of one run ("timeout")

  // Both directions of the "Calc" attributes, in file order; on load each
  // missing attribute keeps the current value.
  void SerializeCalc(CXmlNode& calc);
  // Both directions of "step" on the "Settings" element.
  void SerializeStep(CXmlNode& settings);
};

}  // namespace tz4
