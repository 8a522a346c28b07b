// Independent sources: the file element with its "Signal" child, the IC text.
#include <gtest/gtest.h>

#include "components/param_ops.h"
#include "device_b_support.h"
#include "devices/source.h"

namespace tz4 {
namespace {

using devtest::ExpectRoundTrip;
using devtest::Load;
using devtest::Store;

TEST(SourceArchive, SignalChildStoresBackUnchanged) {
  ExpectRoundTrip<CElemV>(
      "V_V",
      "<Cmp type=\"V_V\" id=\"2\" name=\"VP\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
      "model=\"Pulse\" v=\"10\"><Signal u0=\"-1\" u1=\"1\" p=\"1e-3\" w=\"500e-6\" s=\"1\" r=\"1e-6\" "
      "f=\"2e-6\" d_str=\"%3dt0\" d=\"0\" ph=\"0\" function=\"sin(t)+1\" file=\"\" pwl=\"0%2c0\" "
      "trace=\"\" c=\"0\" /></Cmp>");
  // A constant source keeps a signal that the file gave it.
  ExpectRoundTrip<CElemV>(
      "I_I",
      "<Cmp type=\"I_I\" id=\"3\" name=\"I1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"1\" "
      "model=\"I\" v=\"1e-3\"><Signal u0=\"0\" u1=\"10\" p=\"1\" w=\"500e-3\" s=\"0\" r=\"0\" f=\"0\" "
      "d=\"0\" ph=\"0\" function=\"10\" file=\"my+data.txt\" pwl=\"0%2c0%2c1%2c5\" trace=\"\" c=\"1\" "
      "/></Cmp>");
}

TEST(SourceArchive, SignalModelWritesItsSignalEvenWhenTheFileHadNone) {
  auto v = Load<CElemV>("V_V",
                        "<Cmp type=\"V_V\" id=\"1\" name=\"VS\" node0=\"1\" node1=\"0\" model=\"Sin\" />");
  ASSERT_NE(v, nullptr);
  const std::string stored = Store(*v);
  EXPECT_NE(stored.find("<Signal u0=\"0\" u1=\"10\" p=\"1\" w=\"500e-3\""), std::string::npos) << stored;
  EXPECT_NE(stored.find("pwl=\"0%2c0\""), std::string::npos) << stored;
}

TEST(SourceIC, DelayOfTheTimedModels) {
  auto v = devtest::CreateAs<CElemV>("V_V");
  v->name = "V9";
  std::string text;
  devtest::SelectModel(*v, "V");
  EXPECT_EQ(v->GetICText(text), "");
  devtest::SelectModel(*v, "Pulse");
  v->Signal.Delay.Value = 1.5e-3;
  EXPECT_EQ(v->GetICText(text), "V9.Delay=1.5e-3");
  devtest::SelectModel(*v, "Function");
  EXPECT_EQ(v->GetICText(text), "");
  devtest::SelectModel(*v, "Trace");
  EXPECT_EQ(v->GetICText(text), "V9.Delay=1.5e-3");
}

}  // namespace
}  // namespace tz4
