// Shared helpers for the tests that drive real circuit files through the C
// interface: a circuit file around given components, component elements,
// and a fixture that opens such a file and reads back the samples of its
// traces.
#pragma once
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "../doc/temp_files.h"
#include "tz4.h"

namespace tz4_test {

constexpr double kPi = 3.14159265358;

inline std::string Error() { return TZ4_GetError(); }

inline std::string Number(double x) {
  char text[40];
  std::snprintf(text, sizeof text, "%.12g", x);
  return text;
}

// A circuit file around the given components with the given maximum step;
// `traces` holds the children of "Traces" and `doc` extra attributes of "Doc".
inline std::string CircuitFile(const std::string& components, double step = 1e-4,
                               const std::string& traces = "", const std::string& doc = "") {
  return "<?xml version=\"1.0\"?>\n<TZ4>\n  <Version ver=\"2\" />\n  <Doc" + doc +
         ">\n"
         "    <Calc zero=\"1e-11\" kmin=\"0.01\" nsr=\"false\" os=\"false\" low=\"0\" high=\"5\" "
         "thr=\"2.5\" timeout=\"0\" />\n"
         "    <Tran>\n      <Settings step=\"" +
         Number(step) + "\" />\n      <Traces>\n" + traces + "      </Traces>\n    </Tran>\n    <Cmps>\n" +
         components + "    </Cmps>\n  </Doc>\n</TZ4>\n";
}

// One "Cmp" element; `inner` is its content, if any.
inline std::string Element(const std::string& tag, const std::string& name, const std::string& model,
                           const std::vector<int>& nodes, const std::string& attributes,
                           const std::string& inner = "") {
  static int id = 0;
  std::string text = "<Cmp type=\"" + tag + "\" id=\"" + std::to_string(++id) + "\" name=\"" + name + "\"";
  for (size_t i = 0; i < nodes.size(); i++)
    text += " node" + std::to_string(i) + "=\"" + std::to_string(nodes[i]) + "\"";
  text += " model=\"" + model + "\" " + attributes;
  return text + (inner.empty() ? " />\n" : ">" + inner + "</Cmp>\n");
}

struct Sample {
  double t, v;
};

// Opens one circuit at a time and closes it at the end.
class CircuitRun : public testing::Test {
 protected:
  void TearDown() override {
    if (h >= 0) TZ4_Close(h);
  }

  void OpenText(const std::string& text, const std::string& file = "circuit.tz4") {
    if (h >= 0) TZ4_Close(h);
    path = dir.File(file);
    WriteFile(path, text);
    h = TZ4_Open(path.c_str());
    ASSERT_GE(h, 0) << Error();
  }
  void Open(const std::string& components, double step = 1e-4) { OpenText(CircuitFile(components, step)); }

  int Trace(const std::string& name, bool current = false) {
    const int trace = current ? TZ4_AddITrace(h, name.c_str()) : TZ4_AddVTrace(h, name.c_str());
    EXPECT_GE(trace, 0) << Error();
    return trace;
  }

  std::vector<Sample> Samples(int trace) {
    std::vector<Sample> out;
    const int count = TZ4_GetDataSize(h, trace);
    for (int i = 0; i < count; i++) {
      Sample s{0, 0};
      EXPECT_EQ(TZ4_GetDataAt(h, trace, i, &s.t, &s.v), 0) << Error();
      out.push_back(s);
    }
    return out;
  }

  // Every sample equals the closed form, but at the corners listed, where a
  // jump may show either side; returns the number of samples.
  int ExpectWave(int trace, const std::function<double(double)>& wave, double tol,
                 const std::vector<double>& jumps = {}) {
    const std::vector<Sample> samples = Samples(trace);
    for (const Sample& s : samples) {
      bool atJump = false;
      for (double j : jumps) atJump |= std::fabs(s.t - j) <= 1e-12 * std::fmax(j, 1e-300);
      if (!atJump) {
        EXPECT_NEAR(s.v, wave(s.t), tol) << "at t = " << s.t;
      }
    }
    return static_cast<int>(samples.size());
  }

  bool HasSampleAt(int trace, double at) {
    for (const Sample& s : Samples(trace))
      if (std::fabs(s.t - at) <= 1e-12 * at) return true;
    return false;
  }

  // The longest distance between two samples inside [from, to].
  double LongestGap(int trace, double from, double to) {
    double gap = 0, last = -1;
    for (const Sample& s : Samples(trace)) {
      if (s.t < from * (1 - 1e-12) || s.t > to * (1 + 1e-12)) continue;
      if (last >= 0) gap = std::fmax(gap, s.t - last);
      last = s.t;
    }
    return gap;
  }

  double Last(int trace, double* at = nullptr) {
    double t = 0, v = 0;
    EXPECT_EQ(TZ4_GetLastData(h, trace, &t, &v), 0) << Error();
    if (at != nullptr) *at = t;
    return v;
  }

  // The point stored at t = 0.
  double AtStart(int trace) {
    Sample s{-1.0, 0.0};
    EXPECT_EQ(TZ4_GetDataAt(h, trace, 0, &s.t, &s.v), 0) << Error();
    EXPECT_EQ(s.t, 0.0);
    return s.v;
  }

  // Saves the present point as the start of the next run and reads back the
  // text of the given parameter.
  std::string SavedIC(const std::string& param) {
    EXPECT_EQ(TZ4_SaveIC(h), 0) << Error();
    char text[64] = {};
    EXPECT_GT(TZ4_GetText(h, param.c_str(), text, sizeof text), 0) << Error();
    return text;
  }

  TempDir dir{"run"};
  std::string path;
  int h = -1;
};

// Opens the shared test circuit "values_circuit.tz4" for each test.
class ValuesCircuit : public testing::Test {
 protected:
  void SetUp() override {
    h = TZ4_Open(kCircuit.c_str());
    ASSERT_GE(h, 0) << Error();
  }
  void TearDown() override { TZ4_Close(h); }

  const std::string kCircuit = DataFile("values_circuit.tz4");
  int h = -1;
};

}  // namespace tz4_test
